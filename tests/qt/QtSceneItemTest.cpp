#include "tests/qt/ScenePanel.h"

#include <gtest/gtest.h>

#include <type_traits>

using halvern::qt::QtSceneItem;
using namespace halvern::test;

namespace {

QtSceneItem* const noParent = nullptr;

} // namespace

TEST(QtSceneItemTest, IsATreeItemOfThePlainType)
{
    static_assert(std::is_base_of_v<QTreeWidgetItem, QtSceneItem>);
    static_assert(std::has_virtual_destructor_v<QtSceneItem>);
    EXPECT_EQ(QtSceneItem(makeNode("a"), noParent).type(), 0);
}

TEST(QtSceneItemTest, KeepsItsNodeAliveForAsLongAsItExists)
{
    auto node = makeNode("a");
    const boost::weak_ptr<halvern::scene::Node> watched = node;
    {
        const QtSceneItem item(std::move(node), noParent);
        EXPECT_EQ(item.getNode()->getID(), "a");
    }
    EXPECT_TRUE(watched.expired());
}

TEST(QtSceneItemTest, IsAppendedUnderItsParent)
{
    QtSceneItem parent(makeNode("parent"), noParent);
    auto* first = new QtSceneItem(makeNode("first"), &parent);
    auto* second = new QtSceneItem(makeNode("second"), &parent);
    EXPECT_EQ(parent.childCount(), 2);
    EXPECT_EQ(parent.child(0), first);
    EXPECT_EQ(parent.child(1), second);
}

TEST(QtSceneItemTest, IsAppendedAtTheTopOfAView)
{
    QTreeWidget view;
    auto* first = new QtSceneItem(makeNode("first"), &view);
    auto* second = new QtSceneItem(makeNode("second"), &view);
    EXPECT_EQ(view.topLevelItemCount(), 2);
    EXPECT_EQ(view.topLevelItem(0), first);
    EXPECT_EQ(view.topLevelItem(1), second);
}

TEST(QtSceneItemTest, ChildrenReleaseTheirNodesWithTheTree)
{
    const auto node = makeNode("a");
    {
        QTreeWidget view;
        auto* top = new QtSceneItem(node, &view);
        new QtSceneItem(node, top);
        EXPECT_EQ(node.use_count(), 3);
    }
    EXPECT_EQ(node.use_count(), 1);
}

TEST(QtSceneItemTest, CopyTakesTheTextsAndSharesTheNode)
{
    const auto node = makeNode("a");
    QtSceneItem original(node, noParent);
    original.setText(1, "text");
    original.setBackground(0, Qt::red);
    const QtSceneItem copy(original);
    EXPECT_EQ(copy.getNode(), node);
    EXPECT_EQ(node.use_count(), 3);
    EXPECT_EQ(copy.text(1), "text");
    EXPECT_EQ(copy.background(0), QBrush(Qt::red));
}

TEST(QtSceneItemTest, AssignmentTakesTheTextsAndSharesTheNode)
{
    const auto node = makeNode("a");
    const auto replaced = makeNode("b");
    QtSceneItem original(node, noParent);
    original.setText(1, "text");
    QtSceneItem assigned(replaced, noParent);
    assigned = original;
    EXPECT_EQ(assigned.getNode(), node);
    EXPECT_EQ(node.use_count(), 3);
    EXPECT_EQ(replaced.use_count(), 1);
    EXPECT_EQ(assigned.text(1), "text");
}

TEST(QtSceneItemTest, SetNodeReplacesTheNodeOnly)
{
    const auto before = makeNode("before");
    QtSceneItem item(before, noParent);
    item.setText(0, "text");
    const auto after = makeNode("after");
    item.setNode(after);
    EXPECT_EQ(item.getNode(), after);
    EXPECT_EQ(before.use_count(), 1);
    EXPECT_EQ(item.text(0), "text");
    item.setNode(nullptr);
    EXPECT_FALSE(item.getNode());
}
