#include "engine/fx/FXManager.h"

#include "engine/core/event/EventManager.h"
#include "engine/fx/FXSceneEffect.h"
#include "engine/scene/Effect.h"
#include "engine/scene/Material.h"
#include "engine/scene/SceneManager.h"
#include "reference/engine/fx/EffectLibrary.h"
#include "reference/engine/fx/EffectMessages.h"
#include "reference/engine/fx/SceneEffect.h"

#include <boost/make_shared.hpp>

namespace halvern::engine::fx {

using core::event::Event;
using core::event::EventManager;

struct FXManager::Private : core::event::EventBase
{
    Private(boost::shared_ptr<scene::SceneManager> sceneManager,
            boost::shared_ptr<EventManager> eventManager);
    ~Private() override;

    void changeParameter(const Event& event);

    /// Loads an effect and shows the user what is wrong with it. False if it cannot be used.
    template <class Load>
    bool tryTo(Load load);

    const boost::shared_ptr<EffectLibrary> library;
};

FXManager::Private::Private(boost::shared_ptr<scene::SceneManager> sceneManager,
                            boost::shared_ptr<EventManager> eventManager) :
    EventBase(eventManager), library(EffectLibrary::of(sceneManager))
{
    registerHandler(std::string("ChangeMaterialParameter"),
                    [this](const Event& event) { changeParameter(event); });
}

FXManager::Private::~Private()
{
    EventBase::setEventManager({});
}

void FXManager::Private::changeParameter(const Event& event)
{
    const std::string id = event.getEventData().getArg(1);
    const std::string name = event.getEventData().getArg(2);
    const auto material = library->getMaterial(id);
    const auto parameter = material ? material->findParameter(name) : nullptr;
    if (!parameter)
        return;
    // What is left after the second comma; file names may have commas.
    const std::string& data = event.getEventData().getData();
    const size_t first = data.find(',');
    const size_t second = first == data.npos ? data.npos : data.find(',', first + 1);
    std::string value = second == data.npos ? "" : data.substr(second + 1);
    if (!value.empty() && value.front() == ' ')
        value.erase(0, 1);
    if (!parameter->setFromText(value))
        return;
    if (parameter->getType() == ParameterType::Texture && !value.empty() && !parameter->getValue().picture)
        showEffectError(*this, value + ": expected a picture that can be read");
    triggerEvent("MaterialParameterUpdated", id + ", " + name);
}

template <class Load>
bool FXManager::Private::tryTo(Load load)
{
    try {
        for (const std::string& message : load())
            showEffectError(*this, message);
        return true;
    } catch (const EffectError& error) {
        showEffectError(*this, error.what());
        return false;
    }
}

FXManager::FXManager(boost::shared_ptr<scene::SceneManager> sceneManager,
                     boost::shared_ptr<core::event::EventManager> eventManager) :
    d(new Private(sceneManager, eventManager))
{}

FXManager::~FXManager() = default;

bool FXManager::addEffect(boost::shared_ptr<scene::Effect> effect)
{
    return effect && d->tryTo([&] { return d->library->addEffect(*effect); });
}

bool FXManager::addMaterial(boost::shared_ptr<scene::Material> material)
{
    return material && d->library->addMaterial(material);
}

boost::shared_ptr<FXSceneEffect>
FXManager::addSceneEffectInstance(boost::shared_ptr<scene::Material> material)
{
    const auto known = d->library->getMaterial(material);
    return known && known->getValues().effect->isScene() ? boost::make_shared<SceneEffect>(known) : nullptr;
}

boost::shared_ptr<FXEffect> FXManager::getFXEffect(std::string id)
{
    return d->library->getEffect(id);
}

boost::shared_ptr<FXMaterial> FXManager::getFXMaterial(std::string id)
{
    return d->library->getMaterial(id);
}

bool FXManager::reloadEffect(boost::shared_ptr<FXEffect> effect)
{
    if (!effect || !d->tryTo([&] { return d->library->reload(effect->getID()); }))
        return false;
    d->triggerEvent("EffectReloaded", effect->getID());
    return true;
}

} // namespace halvern::engine::fx
