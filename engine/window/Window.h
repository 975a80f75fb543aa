#pragma once

#include "engine/Export.h"

#include <boost/shared_ptr.hpp>

#include <Eigen/Core>

#include <memory>
#include <string>

namespace halvern::core::event {
class EventManager;
}
namespace halvern::scene {
class SceneManager;
}
namespace halvern::engine::fx {
class FXManager;
class FXPipeline;
class FXRenderTarget;
} // namespace halvern::engine::fx
namespace halvern::engine::logic {
class CameraInputHandler;
class LogicManager;
} // namespace halvern::engine::logic
namespace halvern::engine::scenegraph {
class IRenderScene;
}

namespace halvern::engine::window {

class ILayout;

/// Renders the attached scene off screen into its colour target.
///
/// GUI thread. init, update and render want the window's OpenGL context current, a compatibility profile;
/// update, render, init, attach and resize leave every OpenGL state of the caller as they found it.
/// The destructor issues no OpenGL call unless the context it was initialised in is current; otherwise
/// its names are abandoned to that context.
class HALVERN_ENGINE_API Window
{
public:
    /// Cheap; no OpenGL. The event manager may be empty.
    Window(boost::shared_ptr<core::event::EventManager> eventManager, std::string name);
    virtual ~Window();

    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;

    /// Makes the OpenGL objects. Once; later calls do nothing.
    virtual void init();

    /// Takes over what changed in the scene, answers picks, moves the camera.
    virtual void update();

    /// Draws the scene into the colour target; initialises on first use. With no scene the target is
    /// cleared to the background colour.
    virtual void render();

    /// Records the size in logical pixels (width, height); the next render follows. Legal at any time.
    virtual void resize(Eigen::Vector2i size);

    /// Shows the scene from the next update on and sends "SceneAttached". An empty pointer detaches.
    /// Legal at any time.
    virtual void attach(boost::shared_ptr<scene::SceneManager> sceneManager);

    /// Moves the window's event registrations to another manager; empty only removes them, and when this
    /// returns no delivery runs.
    virtual void setEventManager(boost::shared_ptr<core::event::EventManager> eventManager);

    virtual boost::shared_ptr<ILayout> getLayout();

    /// False, and nothing changes, for an empty pointer.
    virtual bool setLayout(boost::shared_ptr<ILayout> layout);

    virtual boost::shared_ptr<logic::LogicManager> getLogicManager();
    virtual boost::shared_ptr<logic::CameraInputHandler> getCameraInputHandler();
    virtual boost::shared_ptr<scene::SceneManager> getSceneManager();

    /// Non-empty after init.
    virtual boost::shared_ptr<fx::FXManager> getFXManager();
    virtual boost::shared_ptr<fx::FXPipeline> getFXPipeline();
    virtual boost::shared_ptr<scenegraph::IRenderScene> getRenderScene();

    /// The target that render draws into.
    virtual boost::shared_ptr<fx::FXRenderTarget> getColorRenderTarget();

    virtual std::string getName() const;
    virtual Eigen::Vector2i getSize() const;

private:
    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace halvern::engine::window
