#include "engine/window/Window.h"

#include "engine/core/event/EventBase.h"
#include "engine/fx/FXManager.h"
#include "engine/fx/FXPipeline.h"
#include "engine/fx/FXRenderTarget.h"
#include "engine/logic/CameraInputHandler.h"
#include "engine/logic/LogicManager.h"
#include "engine/scene/SceneManager.h"
#include "engine/scenegraph/RenderSceneGraph.h"
#include "engine/window/ILayout.h"
#include "reference/engine/GL.h"
#include "reference/engine/GLStateGuard.h"
#include "reference/engine/Motion.h"
#include "reference/engine/NativeContext.h"
#include "reference/engine/RenderTarget.h"

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
    boost::shared_ptr<fx::FXRenderTarget> colorRenderTarget = boost::make_shared<fx::FXRenderTarget>(0u);
    void* context = nullptr;
    RenderTarget target;
};

Window::Window(boost::shared_ptr<core::event::EventManager> eventManager, std::string name) :
    d(new Private(eventManager))
{
    d->name = name;
}

Window::~Window()
{
    setEventManager({});
    if (d->context && currentNativeContext() == d->context)
        d->target.release();
}

void Window::init()
{
    d->context = currentNativeContext();
}

void Window::update() {}

void Window::render()
{
    if (!d->context)
        init();
    if (!d->context)
        return;
    GLStateGuard guard;
    d->target.resize(d->size);
    if (d->colorRenderTarget->getTextureID() != d->target.colorTexture())
        d->colorRenderTarget = boost::make_shared<fx::FXRenderTarget>(d->target.colorTexture());
    glBindFramebuffer(GL_FRAMEBUFFER, d->target.framebuffer());
    glDisable(GL_SCISSOR_TEST);
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    glClearColor(0.16f, 0.17f, 0.19f, 1);
    glClear(GL_COLOR_BUFFER_BIT);
}

void Window::resize(Eigen::Vector2i size)
{
    d->size = size.cwiseMax(1);
}

void Window::attach(boost::shared_ptr<scene::SceneManager> sceneManager)
{
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
