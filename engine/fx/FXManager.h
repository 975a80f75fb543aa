#pragma once

#include "engine/Export.h"

#include <boost/shared_ptr.hpp>

#include <memory>
#include <string>

namespace halvern::core::event {
class EventManager;
}
namespace halvern::scene {
class Effect;
class Material;
class SceneManager;
} // namespace halvern::scene

namespace halvern::engine::fx {

class FXEffect;
class FXMaterial;
class FXSceneEffect;

/// The renderer's counterparts of a scene's effects and materials. GUI thread.
class HALVERN_ENGINE_API FXManager
{
public:
    /// Either may be empty: no scene has no materials, and without an event manager nothing is sent or heard.
    FXManager(boost::shared_ptr<scene::SceneManager> sceneManager,
              boost::shared_ptr<core::event::EventManager> eventManager);
    virtual ~FXManager();

    FXManager(const FXManager&) = delete;
    FXManager& operator=(const FXManager&) = delete;

    /// Reads the effect's file. False for an empty pointer and for an effect that cannot be read or does not
    /// compile; then the views show what is wrong ("DisplayMessageAt").
    virtual bool addEffect(boost::shared_ptr<scene::Effect> effect);

    /// False for an empty pointer and for a material whose effect is unknown.
    virtual bool addMaterial(boost::shared_ptr<scene::Material> material);

    /// Empty when the material's effect is not one of a scene.
    virtual boost::shared_ptr<FXSceneEffect>
    addSceneEffectInstance(boost::shared_ptr<scene::Material> material);

    /** @{ */
    /// The same object each time; empty for an unknown ID.
    virtual boost::shared_ptr<FXEffect> getFXEffect(std::string id);
    virtual boost::shared_ptr<FXMaterial> getFXMaterial(std::string id);
    /** @} */

    /// Reads the effect's file again, keeping the values of its materials, and sends "EffectReloaded". False,
    /// and the effect stays what it was, for a mistake in the file.
    virtual bool reloadEffect(boost::shared_ptr<FXEffect> effect);

private:
    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace halvern::engine::fx
