#pragma once

#include <QObject>

#include <boost/shared_ptr.hpp>

class QAction;
class QDockWidget;
class QMainWindow;
class QMenu;

namespace halvern::core::event {
class EventManager;
}
namespace halvern::qt {
class QtAnimationDock;
class QtFXMaterial;
class QtMaterialPanel;
class QtProperties;
class QtView;
} // namespace halvern::qt
namespace halvern::scene {
class SceneManager;
}

namespace halvern::studio {

class SceneDock;

/// The docks round the view. They start empty and cost the first frame nothing: open() only notes the scene,
/// fill() shows it. GUI thread.
class Panels : public QObject
{
    Q_OBJECT
public:
    /// The docks belong to the window.
    Panels(QMainWindow* newWindow, qt::QtView* newView,
           boost::shared_ptr<core::event::EventManager> newEventManager);

    /// The widths and heights that the docks have in a window of this size until the user changes them. A
    /// small window leaves the room to the view: the docks at its right wait to be opened.
    void arrange();

    /// Adds what shows, hides and searches the panels to a menu that lives as long.
    void addActions(QMenu& menu);

    /// Announces a scene that is about to be attached.
    void open(boost::shared_ptr<scene::SceneManager> sceneManager);

    /// The ID of the first node that is selected in the tree; empty when none is.
    QString getSelectedID() const;

public slots:
    /// Shows the scene that open() announced; without one it does nothing.
    void fill();

private slots:
    /// Shows the scene's animations once the dock can be seen: it may have to ask what to do with them.
    void fillAnimations();

private:
    QDockWidget* addDock(Qt::DockWidgetArea area, const QString& title, const QString& name);
    void build();
    void buildAnimationDock();
    void renewParameters();

    QMainWindow* const window;
    qt::QtView* const view;
    const boost::shared_ptr<core::event::EventManager> eventManager;
    boost::shared_ptr<scene::SceneManager> announced;
    boost::shared_ptr<scene::SceneManager> toAnimate; ///< what the animation dock does not show yet

    SceneDock* sceneDock;
    QDockWidget* propertiesDock;
    QDockWidget* materialDock;
    QDockWidget* parameterDock;
    QMenu* viewMenu = nullptr;
    QAction* findAction = nullptr;

    // Made when they are first filled.
    qt::QtAnimationDock* animationDock = nullptr;
    qt::QtProperties* properties = nullptr;
    qt::QtMaterialPanel* materials = nullptr;
    qt::QtFXMaterial* parameters = nullptr;
};

} // namespace halvern::studio
