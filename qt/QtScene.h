#pragma once

#include "engine/Export.h"
#include "engine/core/event/EventListener.h"

#include <QMetaType>
#include <QString>
#include <QWidget>

#ifndef Q_MOC_RUN
#    include <boost/shared_ptr.hpp>
#endif

#include <atomic>

class QAction;
class QLabel;
class QTreeWidgetItem;
class QVBoxLayout;

namespace halvern::core::event {
class EventManager;
}
namespace halvern::scene {
class Node;
class SceneManager;
} // namespace halvern::scene

Q_DECLARE_METATYPE(HCE::Event)

namespace halvern::qt {

class QtSceneItem;
class TreeWidget;

/// Shows the scene graph as a tree of node names, with a one-line summary under it.
///
/// Selecting an item announces its node with "SelectObject"; a selection made elsewhere ("ObjectSelected")
/// is mirrored; "SceneTopologyUpdate" and "SceneAttached" rebuild the tree. The menu of a right click shows
/// whether the node under the cursor is hidden and in which render layers it is; choosing an entry changes
/// all selected nodes and sends "UpdateViews".
///
/// Every operation belongs to the GUI thread, except handleEvent. A derived class calls
/// setEventManager(nullptr) as the first statement of its own destructor: only then does no event reach an
/// object that is half destroyed.
class HALVERN_QT_API QtScene : public QWidget, public HCE::EventListener
{
    Q_OBJECT

public:
    /// An empty tree that neither sends nor hears anything.
    explicit QtScene(QWidget* parent = nullptr);
    ~QtScene() override;

    /// Listens to the events of another manager and sends its own there; when this returns, no delivery of
    /// the old manager runs. With an empty pointer nothing is sent or received.
    void setEventManager(boost::shared_ptr<HCE::EventManager> newEventManager);

    /// Rebuilds the tree; selection and folding start anew. An empty pointer is ignored. A scene without a
    /// root is taken, but tree and summary keep what they show.
    void setSceneManager(boost::shared_ptr<scene::SceneManager> newSceneManager);

    /// The first item in depth-first pre-order whose text in the column is exactly that, or null. Column 0
    /// holds the node's name, or its ID where it has no name; column 1, which is not shown, holds the ID.
    QTreeWidgetItem* findItem(QString text, int column);

    /// Hands the event over to the GUI thread. Any thread.
    void handleEvent(HCE::Event event) override;

signals:
    /// Never emitted by this class.
    void triggerEvent(HCE::Event);

    /// Somebody else selected the node with this ID; an empty ID stands for no node.
    void sceneSelection(QString item);

    /// The shape of the scene has changed.
    void sceneUpdated();

protected slots:
    /// Sends "SelectObject" with the ID of the first selected item and the origin "QtScene". Sends nothing
    /// when the selection is empty.
    void sendSelectionEvent();

    /// Selects the item of the node with this ID and sends nothing; an unknown ID changes nothing, an empty
    /// one clears the selection.
    void selectItem(QString item);

    /// Rebuilds the tree, unless a rebuild since the request has served it.
    void reloadTree();

    /// Blocks until the menu is closed. The position is that in the tree.
    void showContextMenu(const QPoint& position);

    /** @{ */
    /// Changes all selected nodes to what the entry of the menu says, and sends "UpdateViews".
    void hideNode();
    void castShadowNode();
    void transparentNode();
    void postRenderNode();
    /** @} */

protected:
    /// Fills the item and the items of all nodes below its own. Returns the number of nodes.
    int populateTree(QtSceneItem* item);

    /// findItem from the given item on, which may be null.
    QTreeWidgetItem* findItemWorker(QTreeWidgetItem* item, QString text, int column);

private:
    QAction* createToggle(const QString& text);
    void createTree();
    void connectAll();

    /// Returns the number of nodes.
    int rebuildTree(const boost::shared_ptr<scene::Node>& root);
    void setLayerOfSelected(const char* layer, bool add);

    /// Calls change(item, node) for each selected item, then asks all views to redraw.
    template <class Change>
    void changeSelected(Change change);

    boost::shared_ptr<scene::SceneManager> sceneManager;
    boost::shared_ptr<HCE::EventManager> eventManager;
    QtSceneItem* rootItem = nullptr;
    TreeWidget* treeWidget;
    QLabel* sceneLabel;
    QVBoxLayout* mainLayout;
    QAction* hideAction;
    QAction* castShadowAction;
    QAction* transparentAction;
    QAction* postRenderAction;

    std::atomic<int> reloadRequests{0}; // by events, since the last rebuild began
    int servedReloads = 0;              // calls of reloadTree() that a rebuild has served before they come
};

} // namespace halvern::qt
