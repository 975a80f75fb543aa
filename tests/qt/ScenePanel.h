#pragma once

#include "engine/scene/Node.h"
#include "engine/scene/SceneManager.h"
#include "qt/QtScene.h"
#include "qt/QtSceneItem.h"

#include <QAction>
#include <QLabel>
#include <QTest>
#include <QTreeWidget>

#include <boost/make_shared.hpp>

#include <functional>
#include <initializer_list>
#include <string>

namespace halvern::test {

using NodePtr = boost::shared_ptr<scene::Node>;
using ScenePtr = boost::shared_ptr<scene::SceneManager>;

inline NodePtr makeNode(std::string id, std::string name, std::initializer_list<NodePtr> children = {})
{
    auto node = boost::make_shared<scene::Node>(id, name);
    for (const auto& child : children)
        node->addChildNode(child);
    return node;
}

/// A node whose name is its ID with "Name" after it.
inline NodePtr makeNode(std::string id, std::initializer_list<NodePtr> children = {})
{
    return makeNode(id, id + "Name", children);
}

inline ScenePtr makeScene(NodePtr root, std::string name = "Garden")
{
    auto sceneManager = boost::make_shared<scene::SceneManager>(nullptr);
    sceneManager->setSceneName(name);
    if (root)
        sceneManager->setRoot(root);
    return sceneManager;
}

/// A panel whose protected parts are open.
class ScenePanel : public qt::QtScene
{
public:
    ScenePanel()
    {
        qRegisterMetaType<QTreeWidgetItem*>("QTreeWidgetItem*"); // for signal spies
    }
    ~ScenePanel() override { setEventManager(nullptr); }

    using QtScene::castShadowNode;
    using QtScene::findItemWorker;
    using QtScene::hideNode;
    using QtScene::populateTree;
    using QtScene::postRenderNode;
    using QtScene::reloadTree;
    using QtScene::selectItem;
    using QtScene::sendSelectionEvent;
    using QtScene::showContextMenu;
    using QtScene::transparentNode;

    QTreeWidget& tree() { return *findChild<QTreeWidget*>(); }
    QTreeWidgetItem& root() { return *tree().topLevelItem(0); }
    QTreeWidgetItem& item(const QString& id) { return *findItem(id, 1); }
    QString summary() { return findChild<QLabel*>()->text(); }

    QAction& action(const QString& text)
    {
        for (QAction* action : findChildren<QAction*>(QString(), Qt::FindDirectChildrenOnly))
            if (action->text() == text)
                return *action;
        qFatal("no action of that text");
    }

    /// Selects the items with these IDs, in this order, and nothing else.
    void select(std::initializer_list<const char*> ids)
    {
        tree().clearSelection();
        for (const char* id : ids)
            item(id).setSelected(true);
    }

    /// The IDs of the selected items, in the order of selection.
    QStringList selection()
    {
        QStringList ids;
        for (const QTreeWidgetItem* item : tree().selectedItems())
            ids += item->text(1);
        return ids;
    }

    /// Shows the panel with everything laid out.
    void open()
    {
        resize(300, 400);
        show();
        (void)QTest::qWaitForWindowExposed(this);
    }

    /// The middle of an item's row, in the tree's viewport.
    QPoint rowOf(const QString& id) { return tree().visualItemRect(&item(id)).center(); }
};

/// Calls visit(item) for the item and all below it, in depth-first pre-order.
inline void walk(QTreeWidgetItem& item, const std::function<void(QTreeWidgetItem&)>& visit)
{
    visit(item);
    for (int i = 0; i < item.childCount(); ++i)
        walk(*item.child(i), visit);
}

/// One line per item, indented by its depth: the texts of both columns.
inline QStringList outline(QTreeWidgetItem& item, int depth = 0)
{
    QStringList lines{QString(depth, ' ') + item.text(0) + '|' + item.text(1)};
    for (int i = 0; i < item.childCount(); ++i)
        lines += outline(*item.child(i), depth + 1);
    return lines;
}

} // namespace halvern::test

/// Makes failures print texts.
inline void PrintTo(const QString& text, std::ostream* out)
{
    *out << '"' << text.toStdString() << '"';
}
