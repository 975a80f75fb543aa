#include "studio/Session.h"

#include "engine/core/event/EventManager.h"
#include "engine/scene/Animation.h"
#include "engine/scene/AnimationManager.h"
#include "engine/scene/SceneManager.h"
#include "engine/window/Window.h"
#include "qt/QtView.h"
#include "reference/engine/Motion.h"

#include <boost/make_shared.hpp>

namespace halvern::studio {

Session::Session(qt::QtView* newView) :
    view(newView), eventManager(boost::make_shared<core::event::EventManager>(true))
{
    view->setEventManager(eventManager);
}

Session::~Session()
{
    close();
}

void Session::open(boost::shared_ptr<scene::SceneManager> newSceneManager)
{
    newSceneManager->setEventManager(eventManager);
    view->attach(newSceneManager);
    newSceneManager->start();
    close();
    sceneManager = newSceneManager;
    view->update();
}

bool Session::isMoving() const
{
    const auto window = view->getWindow();
    if (window && engine::window::isMoving(*window))
        return true;
    const auto animations = sceneManager ? sceneManager->getAnimationManager() : nullptr;
    return animations && animations->getAnimation() && !animations->paused();
}

void Session::close()
{
    if (!sceneManager)
        return;
    sceneManager->stop();
    sceneManager->setEventManager(nullptr);
    sceneManager.reset();
}

} // namespace halvern::studio
