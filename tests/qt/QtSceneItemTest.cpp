#include "tests/qt/ScenePanel.h"

#include <QSignalSpy>

#include <gtest/gtest.h>

#include <memory>
#include <type_traits>
#include <utility>

using halvern::qt::QtSceneItem;
using namespace halvern::test;

namespace {

QtSceneItem* const noParent = nullptr;

/// An item that got its texts from its constructor, in a tree.
struct Patterned
{
    Patterned()
    {
        pattern.setBackground(0, Qt::red);
        item = new QtSceneItem(pattern, node, "name", "id");
        view.addTopLevelItem(item);
    }

    QtSceneItem pattern{nullptr, noParent};
    NodePtr node = makeNode("a");
    QTreeWidget view;
    QtSceneItem* item;
};

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

TEST(QtSceneItemTest, TakesColoursFromAPatternAndTextsOfItsOwn)
{
    const Patterned made;
    EXPECT_EQ(made.item->background(0), QBrush(Qt::red));
    EXPECT_EQ(made.item->text(0), "name");
    EXPECT_EQ(made.item->text(1), "id");
    EXPECT_EQ(made.item->data(1, Qt::EditRole), "id");
    EXPECT_FALSE(made.item->data(2, Qt::DisplayRole).isValid());
    EXPECT_FALSE(made.item->data(-1, Qt::DisplayRole).isValid());
    EXPECT_FALSE(made.item->data(0, Qt::ToolTipRole).isValid());
    EXPECT_EQ(made.item->getNode(), made.node);
    EXPECT_EQ(made.pattern.text(0), "");
}

TEST(QtSceneItemTest, ChangingOneLeavesThePatternAndItsOtherItemsAlone)
{
    const Patterned made;
    const QtSceneItem other(made.pattern, nullptr, "", "");
    made.item->setBackground(0, Qt::blue);
    made.item->setForeground(0, Qt::green);
    EXPECT_EQ(made.item->background(0), QBrush(Qt::blue));
    for (const QtSceneItem* item : {&made.pattern, &other}) {
        EXPECT_EQ(item->background(0), QBrush(Qt::red));
        EXPECT_FALSE(item->data(0, Qt::ForegroundRole).isValid());
    }
}

TEST(QtSceneItemTest, TextOfTheConstructorIsReplacedAndAnnouncedLikeAnyOther)
{
    const Patterned made;
    QSignalSpy changed(made.view.model(), SIGNAL(dataChanged(QModelIndex, QModelIndex, QVector<int>)));
    made.item->setText(0, "name");
    EXPECT_EQ(changed.count(), 0);
    for (const char* text : {"other", "", "name"}) {
        made.item->setText(0, text);
        EXPECT_EQ(made.item->text(0), text);
    }
    EXPECT_EQ(changed.count(), 3);
    EXPECT_EQ(made.item->text(1), "id");
    made.item->setText(1, "");
    EXPECT_EQ(made.item->text(1), "");
    EXPECT_EQ(changed.count(), 4);
}

TEST(QtSceneItemTest, CopiesHaveTheTextsOfTheConstructorToo)
{
    const Patterned made;
    const QtSceneItem copy(*made.item);
    QtSceneItem assigned(nullptr, noParent);
    assigned.setText(0, "before");
    assigned = *made.item;
    for (const QtSceneItem* item : {&copy, &std::as_const(assigned)}) {
        EXPECT_EQ(item->text(0), "name");
        EXPECT_EQ(item->text(1), "id");
    }
}

TEST(QtSceneItemTest, CloneCopiesWhatIsBelowAndSharesTheNodes)
{
    const Patterned made;
    new QtSceneItem(made.node, made.item);
    made.item->child(0)->setText(0, "below");
    const std::unique_ptr<QTreeWidgetItem> clone(made.item->clone());
    EXPECT_EQ(outline(*clone), QStringList({"name|id", " below|"}));
    EXPECT_EQ(made.node.use_count(), 5);
}
