#include "tests/qt/ScenePanel.h"
#include "tests/support/RecordingEventManager.h"

#include <QSignalSpy>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace halvern::test;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// A panel over a scene with a branch, two nodes of the same ID, and a recording manager.
class QtSceneSelectionTest : public testing::Test
{
protected:
    QtSceneSelectionTest()
    {
        panel.setEventManager(events);
        panel.setSceneManager(
            makeScene(makeNode("root", {makeNode("a", {makeNode("twin", "deep")}), makeNode("b"),
                                        makeNode("twin", "flat"), makeNode("t\xC3\xBCr", "a")})));
    }

    std::vector<std::string> announced() { return events->getData("SelectObject"); }

    boost::shared_ptr<RecordingEventManager> events = boost::make_shared<RecordingEventManager>();
    ScenePanel panel;
};

} // namespace

// Outgoing

TEST_F(QtSceneSelectionTest, SelectingAnItemAnnouncesItsNodeAndTheSender)
{
    panel.item("a").setSelected(true);
    EXPECT_THAT(announced(), ElementsAre("a, QtScene"));
    EXPECT_EQ(events->getCount(), 1u);
}

TEST_F(QtSceneSelectionTest, ClickingAnItemAnnouncesItsNode)
{
    panel.open();
    QTest::mouseClick(panel.tree().viewport(), Qt::LeftButton, Qt::NoModifier, panel.rowOf("b"));
    EXPECT_THAT(announced(), ElementsAre("b, QtScene"));
}

TEST_F(QtSceneSelectionTest, EachChangeAnnouncesTheFirstSelectedItemAgain)
{
    panel.select({"b", "a", "root"});
    EXPECT_EQ(panel.selection().first(), "b");
    EXPECT_THAT(announced(), ElementsAre("b, QtScene", "b, QtScene", "b, QtScene"));
}

TEST_F(QtSceneSelectionTest, SelectionThatBecomesEmptyAnnouncesNothing)
{
    panel.select({"a"});
    events->clear();
    panel.tree().clearSelection();
    EXPECT_EQ(events->getCount(), 0u);
}

TEST_F(QtSceneSelectionTest, RebuildingTheTreeAnnouncesNothing)
{
    panel.select({"a"});
    events->clear();
    panel.reloadTree();
    EXPECT_EQ(events->getCount(), 0u);
}

TEST_F(QtSceneSelectionTest, AnnouncedIDIsUtf8)
{
    panel.item(QStringLiteral("t\u00FCr")).setSelected(true);
    EXPECT_THAT(announced(), ElementsAre("t\xC3\xBCr, QtScene"));
}

TEST_F(QtSceneSelectionTest, WithoutAnEventManagerNothingIsAnnounced)
{
    panel.setEventManager(nullptr);
    panel.select({"a"});
    panel.sendSelectionEvent();
    EXPECT_THAT(announced(), IsEmpty());
}

TEST_F(QtSceneSelectionTest, SceneMayComeBeforeTheEventManager)
{
    ScenePanel late;
    late.setSceneManager(makeScene(makeNode("root")));
    late.setEventManager(events);
    late.root().setSelected(true);
    EXPECT_THAT(announced(), ElementsAre("root, QtScene"));
}

// Incoming

TEST_F(QtSceneSelectionTest, SelectItemSelectsThatItemAloneAndMakesItCurrent)
{
    panel.select({"root", "b"});
    panel.selectItem("a");
    EXPECT_EQ(panel.selection(), QStringList("a"));
    EXPECT_EQ(panel.tree().currentItem(), &panel.item("a"));
}

TEST_F(QtSceneSelectionTest, SceneSelectionSelectsTheItem)
{
    emit panel.sceneSelection("b");
    EXPECT_EQ(panel.selection(), QStringList("b"));
}

TEST_F(QtSceneSelectionTest, SelectItemBlocksTheSignalsOfTheTreeAndSendsNothing)
{
    QSignalSpy changed(&panel.tree(), SIGNAL(itemSelectionChanged()));
    QSignalSpy current(&panel.tree(), SIGNAL(currentItemChanged(QTreeWidgetItem*, QTreeWidgetItem*)));
    panel.selectItem("a");
    EXPECT_EQ(changed.count() + current.count(), 0);
    EXPECT_EQ(events->getCount(), 0u);
}

TEST_F(QtSceneSelectionTest, AfterSelectItemTheTreeAnnouncesAgain)
{
    panel.selectItem("a");
    panel.select({"b"});
    EXPECT_THAT(announced(), ElementsAre("b, QtScene"));
}

TEST_F(QtSceneSelectionTest, SignalsThatTheHostBlockedStayBlocked)
{
    panel.tree().blockSignals(true);
    panel.selectItem("a");
    EXPECT_TRUE(panel.tree().signalsBlocked());
}

TEST_F(QtSceneSelectionTest, EmptyIDClearsTheSelectionWithSignalsUnblockedAndSendsNothing)
{
    panel.select({"a", "b"});
    events->clear();
    QSignalSpy changed(&panel.tree(), SIGNAL(itemSelectionChanged()));
    panel.selectItem("");
    EXPECT_TRUE(panel.selection().isEmpty());
    EXPECT_EQ(changed.count(), 1);
    EXPECT_EQ(events->getCount(), 0u);
}

TEST_F(QtSceneSelectionTest, UnknownIDChangesNothing)
{
    panel.select({"b"});
    QSignalSpy changed(&panel.tree(), SIGNAL(itemSelectionChanged()));
    panel.selectItem("unknown");
    EXPECT_EQ(panel.selection(), QStringList("b"));
    EXPECT_EQ(changed.count(), 0);
}

TEST_F(QtSceneSelectionTest, SelectItemSearchesIDsNotNames)
{
    panel.selectItem("deep");
    EXPECT_TRUE(panel.selection().isEmpty());
    panel.selectItem("a");
    EXPECT_EQ(panel.tree().currentItem()->text(0), "aName");
}

TEST_F(QtSceneSelectionTest, OfTwoNodesWithOneIDTheFirstInPreOrderIsSelected)
{
    panel.selectItem("twin");
    EXPECT_EQ(panel.tree().currentItem()->text(0), "deep");
}

TEST_F(QtSceneSelectionTest, SelectItemBeforeTheFirstSceneDoesNothing)
{
    ScenePanel empty;
    empty.selectItem("a");
    empty.selectItem("");
    EXPECT_TRUE(empty.selection().isEmpty());
}
