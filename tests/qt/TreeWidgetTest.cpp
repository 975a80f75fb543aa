#include "tests/qt/ScenePanel.h"

#include <QSignalSpy>

#include <gtest/gtest.h>

using namespace halvern::test;

namespace {

/// The tree of a panel with one unfolded branch.
class TreeWidgetTest : public testing::Test
{
protected:
    TreeWidgetTest()
    {
        panel.setSceneManager(makeScene(makeNode("root", {makeNode("child")})));
        panel.open();
    }

    void doubleClick(Qt::MouseButton button)
    {
        QWidget* viewport = panel.tree().viewport();
        const QPoint row = panel.rowOf("root");
        QTest::mouseClick(viewport, button, Qt::NoModifier, row);
        QTest::mouseDClick(viewport, button, Qt::NoModifier, row);
        QTest::mouseRelease(viewport, button, Qt::NoModifier, row);
    }

    ScenePanel panel;
};

/// Counts the double clicks that its children let through.
class Parent : public QWidget
{
public:
    int doubleClicks = 0;

protected:
    void mouseDoubleClickEvent(QMouseEvent* /*event*/) override { ++doubleClicks; }
};

} // namespace

TEST_F(TreeWidgetTest, LeftDoubleClickFoldsAndUnfolds)
{
    doubleClick(Qt::LeftButton);
    EXPECT_FALSE(panel.root().isExpanded());
    doubleClick(Qt::LeftButton);
    EXPECT_TRUE(panel.root().isExpanded());
}

TEST_F(TreeWidgetTest, MiddleDoubleClickIsHandledByTheBaseClass)
{
    QSignalSpy doubleClicked(&panel.tree(), SIGNAL(itemDoubleClicked(QTreeWidgetItem*, int)));
    doubleClick(Qt::MiddleButton);
    EXPECT_EQ(doubleClicked.count(), 1);
}

TEST_F(TreeWidgetTest, RightDoubleClickIsSwallowedEntirely)
{
    Parent parent;
    panel.setParent(&parent);
    parent.show();
    panel.show();
    QSignalSpy doubleClicked(&panel.tree(), SIGNAL(itemDoubleClicked(QTreeWidgetItem*, int)));
    QSignalSpy activated(&panel.tree(), SIGNAL(itemActivated(QTreeWidgetItem*, int)));
    doubleClick(Qt::RightButton);
    EXPECT_TRUE(panel.root().isExpanded());
    panel.root().setExpanded(false);
    doubleClick(Qt::RightButton);
    EXPECT_FALSE(panel.root().isExpanded());
    EXPECT_EQ(doubleClicked.count() + activated.count() + parent.doubleClicks, 0);
    panel.setParent(nullptr);
}
