#include "engine/fx/FXManager.h"

#include "engine/core/event/EventManager.h"
#include "engine/fx/FXEffect.h"
#include "engine/fx/FXMaterial.h"
#include "engine/fx/FXSceneEffect.h"
#include "engine/scene/Effect.h"
#include "engine/scene/Material.h"
#include "engine/scene/SceneManager.h"
#include "reference/scene/StandardMaterial.h"

namespace halvern::engine::fx {

// Effect files are not read yet: the one effect that is known is the standard material, which the
// renderer shades by itself and which has no parameters to edit.
struct FXManager::Private
{
    boost::shared_ptr<scene::SceneManager> sceneManager;
    boost::shared_ptr<core::event::EventManager> eventManager;
};

FXManager::FXManager(boost::shared_ptr<scene::SceneManager> sceneManager,
                     boost::shared_ptr<core::event::EventManager> eventManager) :
    d(new Private{sceneManager, eventManager})
{}

FXManager::~FXManager() = default;

bool FXManager::addEffect(boost::shared_ptr<scene::Effect>)
{
    return false;
}

bool FXManager::addMaterial(boost::shared_ptr<scene::Material> material)
{
    return material && material->getEffectID() == scene::StandardEffectID;
}

boost::shared_ptr<FXSceneEffect> FXManager::addSceneEffectInstance(boost::shared_ptr<scene::Material>)
{
    return {};
}

boost::shared_ptr<FXEffect> FXManager::getFXEffect(std::string)
{
    return {};
}

boost::shared_ptr<FXMaterial> FXManager::getFXMaterial(std::string)
{
    return {};
}

bool FXManager::reloadEffect(boost::shared_ptr<FXEffect>)
{
    return false;
}

} // namespace halvern::engine::fx
