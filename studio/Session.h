#pragma once

#include <QObject>

#include <boost/shared_ptr.hpp>

namespace halvern::core::event {
class EventManager;
}
namespace halvern::scene {
class SceneManager;
}
namespace halvern::qt {
class QtView;
}

namespace halvern::studio {

/// The event manager that everything shares, and the scene that is open. GUI thread.
class Session : public QObject
{
    Q_OBJECT
public:
    /// Gives the view the event manager.
    explicit Session(qt::QtView* view);

    /// Stops the scene.
    ~Session() override;

    /// Puts a new scene in the place of the one that is open. The view was shown before.
    void open(boost::shared_ptr<scene::SceneManager> newSceneManager);

    /// Something in the view moves by itself.
    bool isMoving() const;

    boost::shared_ptr<core::event::EventManager> getEventManager() const { return eventManager; }

    /// Empty before the first scene.
    boost::shared_ptr<scene::SceneManager> getSceneManager() const { return sceneManager; }

private:
    void close();

    qt::QtView* const view;
    const boost::shared_ptr<core::event::EventManager> eventManager;
    boost::shared_ptr<scene::SceneManager> sceneManager;
};

} // namespace halvern::studio
