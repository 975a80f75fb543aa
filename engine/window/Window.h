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

    /// Makes the FX manager and, where a context is current, the OpenGL objects. What exists is kept.
    virtual void init();

    /// Takes over what changed in the scene, answers picks, moves the camera.
    virtual void update();

    /// Draws the scene into the colour target; initialises on first use. With no scene the target is
    /// cleared to the background colour.
    virtual void render();

    /// Records the size in logical pixels (width, height), each at least 1; the next render follows. Legal at
    /// any time.
    virtual void resize(Eigen::Vector2i size);

    /// Shows the scene from the next update on and sends "SceneAttached". An empty pointer detaches and sends
    /// nothing. There is a new FX manager afterwards. Legal at any time.
    virtual void attach(boost::shared_ptr<scene::SceneManager> sceneManager);

    /// Moves the window's event registrations to another manager; empty only removes them, and when this
    /// returns no delivery runs. There is a new FX manager afterwards.
    virtual void setEventManager(boost::shared_ptr<core::event::EventManager> eventManager);

    /// One viewport that fills the window, unless another one was set. An engine without picking may have
    /// none.
    virtual boost::shared_ptr<ILayout> getLayout();

    /// False, and nothing changes, for an empty pointer.
    virtual bool setLayout(boost::shared_ptr<ILayout> layout);

    /// Takes the input of whoever shows the window:
    /// - a left click selects the node under the mouse;
    /// - left drag turns round the point under the mouse, or round the middle of the scene;
    /// - middle drag, or left with Shift, shifts the view so that the point stays under the mouse;
    /// - the wheel moves towards or away from the point under the mouse;
    /// - W, A, S, D, Q and E fly while they are held, faster with Shift; the arrow keys turn a little;
    /// - F brings the selection, or everything, into view; Home goes back to the scene's camera.
    virtual boost::shared_ptr<logic::LogicManager> getLogicManager();

    /// An engine's own; no widget calls it.
    virtual boost::shared_ptr<logic::CameraInputHandler> getCameraInputHandler();

    /// The scene that is attached, or empty.
    virtual boost::shared_ptr<scene::SceneManager> getSceneManager();

    /// Non-empty after init; attach and setEventManager replace it.
    virtual boost::shared_ptr<fx::FXManager> getFXManager();

    /// The full-screen effects; they stay when another scene is attached.
    virtual boost::shared_ptr<fx::FXPipeline> getFXPipeline();

    /// A scenegraph::RenderSceneGraph for an engine that has lights to show.
    virtual boost::shared_ptr<scenegraph::IRenderScene> getRenderScene();

    /// The target that render draws into: the finished picture, the first row at the bottom.
    virtual boost::shared_ptr<fx::FXRenderTarget> getColorRenderTarget();

    /// As given to the constructor.
    virtual std::string getName() const;

    /// The size last recorded, in logical pixels; 1 x 1 before.
    virtual Eigen::Vector2i getSize() const;

private:
    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace halvern::engine::window
