#pragma once

#include <QDockWidget>

#include <boost/shared_ptr.hpp>

namespace halvern::core::event {
class EventManager;
}
namespace halvern::qt {
class QtScene;
}
namespace halvern::scene {
class SceneManager;
}

namespace halvern::studio {

class TreeFilter;

/// The scene as a tree, with a line over it that filters by name.
///
/// It starts empty and costs the first frame nothing: open() only notes the scene, fill() shows it.
class SceneDock : public QDockWidget
{
    Q_OBJECT
public:
    explicit SceneDock(boost::shared_ptr<core::event::EventManager> eventManager, QWidget* parent = nullptr);

    /// Announces a scene that is about to be attached; until fill() the tree follows no events.
    void open(boost::shared_ptr<scene::SceneManager> sceneManager);

    /// The ID of the first node that is selected in the tree; empty when none is.
    QString getSelectedID() const;

public slots:
    /// Shows the scene that open() announced; without one it does nothing.
    void fill();

    /// Shows the dock and gives the keyboard to the filter.
    void find();

private:
    void build();

    const boost::shared_ptr<core::event::EventManager> eventManager;
    boost::shared_ptr<scene::SceneManager> announced;
    qt::QtScene* panel = nullptr; ///< made when it is needed
    TreeFilter* filter = nullptr;
};

} // namespace halvern::studio
