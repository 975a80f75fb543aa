#include "engine/window/Window.h"

#include "engine/core/event/EventBase.h"
#include "engine/fx/FXManager.h"
#include "engine/fx/FXPipeline.h"
#include "engine/fx/FXRenderTarget.h"
#include "engine/logic/CameraInputHandler.h"
#include "engine/logic/LogicManager.h"
#include "engine/scene/Camera.h"
#include "engine/scene/CameraInstance.h"
#include "engine/scene/SceneManager.h"
#include "engine/scenegraph/RenderSceneGraph.h"
#include "engine/window/ILayout.h"
#include "reference/engine/LightSet.h"
#include "reference/engine/LiveRenderTarget.h"
#include "reference/engine/Motion.h"
#include "reference/engine/NativeContext.h"
#include "reference/engine/Renderer.h"
#include "reference/engine/SceneMirror.h"
#include "reference/engine/ViewCamera.h"
#include "reference/scene/CameraPose.h"

#include <boost/make_shared.hpp>

namespace halvern::engine::window {

struct Window::Private
{
    explicit Private(boost::shared_ptr<core::event::EventManager> eventManager) : events(eventManager) {}

    core::event::EventBase events;
    std::string name;
    Eigen::Vector2i size{1, 1};
    boost::shared_ptr<ILayout> layout;
    boost::shared_ptr<scene::SceneManager> sceneManager;
    boost::shared_ptr<LiveRenderTarget> colorRenderTarget = boost::make_shared<LiveRenderTarget>();
    ViewCamera camera;
    boost::shared_ptr<scene::CameraInstance> activeCamera;

    void followCamera();

    // First of the three: what it drew must be gone before it goes.
    std::unique_ptr<Renderer> renderer;
    std::unique_ptr<LightSet> lights;
    std::unique_ptr<SceneMirror> mirror;
};

void Window::Private::followCamera()
{
    if (!activeCamera)
        activeCamera = sceneManager->getCameraInstanceAt(0);
    if (!activeCamera || !activeCamera->getNode() || !activeCamera->getCamera()) {
        if (camera.isFollowing())
            camera.frame(mirror->getBounds());
        return;
    }
    const scene::Camera& lens = *activeCamera->getCamera();
    const Eigen::Affine3d pose(getCameraPose(lens).matrix().cast<double>());
    camera.follow(mirror->getWorld(*activeCamera->getNode()) * pose,
                  {lens.getZNear(), lens.getZFar(), lens.getYFov()});
}

Window::Window(boost::shared_ptr<core::event::EventManager> eventManager, std::string name) :
    d(new Private(eventManager))
{
    d->name = name;
}

Window::~Window()
{
    setEventManager({});
}

void Window::init()
{
    if (!d->renderer && currentNativeContext())
        d->renderer = std::make_unique<Renderer>();
}

void Window::update()
{
    if (!d->sceneManager)
        return;
    if (!d->mirror) {
        d->mirror = std::make_unique<SceneMirror>(d->sceneManager);
        d->lights = std::make_unique<LightSet>();
    } else {
        d->mirror->update();
    }
    d->lights->update(*d->mirror);
    d->camera.resize(d->size);
    d->followCamera();
}

void Window::render()
{
    init();
    if (!d->renderer)
        return;
    const Eigen::AlignedBox3d bounds = d->mirror ? d->mirror->getBounds() : Eigen::AlignedBox3d();
    d->renderer->draw(d->camera.getView(bounds), d->mirror.get(), d->lights.get());
    d->colorRenderTarget->setTextureID(d->renderer->getColorTexture());
}

void Window::resize(Eigen::Vector2i size)
{
    d->size = size.cwiseMax(1);
}

void Window::attach(boost::shared_ptr<scene::SceneManager> sceneManager)
{
    d->lights.reset();
    d->mirror.reset();
    d->activeCamera.reset();
    d->camera.reset();
    d->sceneManager = sceneManager;
    if (sceneManager)
        d->events.triggerEvent("SceneAttached", "");
}

void Window::setEventManager(boost::shared_ptr<core::event::EventManager> eventManager)
{
    d->events.setEventManager(eventManager);
}

boost::shared_ptr<ILayout> Window::getLayout()
{
    return d->layout;
}

bool Window::setLayout(boost::shared_ptr<ILayout> layout)
{
    if (!layout)
        return false;
    d->layout = layout;
    return true;
}

boost::shared_ptr<logic::LogicManager> Window::getLogicManager()
{
    return {};
}

boost::shared_ptr<logic::CameraInputHandler> Window::getCameraInputHandler()
{
    return {};
}

boost::shared_ptr<scene::SceneManager> Window::getSceneManager()
{
    return d->sceneManager;
}

boost::shared_ptr<fx::FXManager> Window::getFXManager()
{
    return {};
}

boost::shared_ptr<fx::FXPipeline> Window::getFXPipeline()
{
    return {};
}

boost::shared_ptr<scenegraph::IRenderScene> Window::getRenderScene()
{
    return {};
}

boost::shared_ptr<fx::FXRenderTarget> Window::getColorRenderTarget()
{
    return d->colorRenderTarget;
}

std::string Window::getName() const
{
    return d->name;
}

Eigen::Vector2i Window::getSize() const
{
    return d->size;
}

bool isMoving(Window&)
{
    return false;
}

} // namespace halvern::engine::window
