#include "ShownStudio.h"

#include "engine/core/event/EventManager.h"
#include "engine/scene/Node.h"
#include "engine/scene/SceneManager.h"
#include "qt/QtScene.h"
#include "qt/QtView.h"
#include "studio/FrameDriver.h"
#include "studio/MainWindow.h"
#include "studio/SceneDock.h"

#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QTreeWidget>
#include <QWindow>

#include <boost/make_shared.hpp>

#include <gtest/gtest.h>

using namespace halvern;
using namespace halvern::studio;
using namespace studiotest;

namespace {

class SceneDockTest : public ShownStudio
{
protected:
    SceneDock* dock() { return window.findChild<SceneDock*>(); }
    QLineEdit* filterLine() { return dock()->findChild<QLineEdit*>(); }

    /// Selects the node, opens its menu with the right button and clicks on an entry.
    void choose(const QString& name, const QString& entry)
    {
        select(name);
        QTimer watch; // the menu runs an event loop of its own
        QObject::connect(&watch, &QTimer::timeout, [&] {
            auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
            if (!menu)
                return;
            watch.stop();
            for (QAction* action : menu->actions())
                if (action->text() == entry)
                    QTest::mouseClick(menu, Qt::LeftButton, Qt::NoModifier,
                                      menu->actionGeometry(action).center());
        });
        watch.start(1);
        click(*tree()->viewport(), rowOf(name), Qt::RightButton);
        EXPECT_FALSE(watch.isActive()) << "no menu came";
    }
};

} // namespace

TEST_F(SceneDockTest, ShowsTheSceneAfterItsFirstFrameBuiltOnce)
{
    open(Showcase);
    EXPECT_EQ(dock()->objectName(), "Halvern_Scene_Tree");
    QStringList labels;
    for (const QLabel* label : dock()->findChildren<QLabel*>())
        labels += label->text();
    EXPECT_TRUE(labels.contains("Scene: showcase (121 elements)."));
    EXPECT_TRUE(item("Lawn"));
}

TEST_F(SceneDockTest, AnotherSceneTakesThePlaceOfTheFirstAndReleasesIt)
{
    open(Showcase);
    const boost::weak_ptr<scene::SceneManager> first = scene.sceneManager;
    QSignalSpy rebuilt(tree()->model(), SIGNAL(modelReset()));
    scene = {};
    loader.load(House);
    ASSERT_TRUE(QTest::qWaitFor([&] { return first.expired(); }, 60'000));
    EXPECT_TRUE(waitFor([&] { return rebuilt.count() == 1; }));
    EXPECT_FALSE(item("Lawn"));
    settle();
    EXPECT_EQ(rebuilt.count(), 1);
}

TEST_F(SceneDockTest, FollowsTheTopologyOfTheScene)
{
    open(Showcase);
    const auto added = boost::make_shared<scene::Node>("added", "Added");
    scene.sceneManager->getRoot()->addChildNode(added);
    EXPECT_TRUE(waitFor([&] { return item("Added"); }));
}

TEST_F(SceneDockTest, AClickOnARowOutlinesItsNodeInTheView)
{
    open(Showcase);
    const QImage before = picture();
    select("Colonnade");
    const QImage outlined = picture();
    EXPECT_GT(countChanged(before, outlined), 200);
    select("Lawn");
    EXPECT_GT(countChanged(outlined, picture()), 200);
}

TEST_F(SceneDockTest, AClickInTheViewSelectsTheRowAndOutlinesTheNode)
{
    open(Showcase);
    const QImage before = picture();
    click(*view(), view()->rect().center() + QPoint(0, view()->height() / 4));
    ASSERT_TRUE(waitFor([&] { return tree()->selectedItems().size() == 1; }));
    EXPECT_TRUE(
        tree()->viewport()->rect().intersects(tree()->visualItemRect(tree()->selectedItems().first())));
    EXPECT_GT(countChanged(before, picture()), 100);

    click(*view(), QPoint(3, 3));
    EXPECT_TRUE(waitFor([&] { return tree()->selectedItems().isEmpty(); }));
    EXPECT_EQ(countChanged(before, picture()), 0);
}

TEST_F(SceneDockTest, HiddenNodeVanishesFromThePictureAndComesBack)
{
    open(Showcase);
    select("Colonnade");
    const QImage before = picture();
    choose("Colonnade", "Hidden");
    EXPECT_FALSE(node("Colonnade")->isVisible());
    EXPECT_GT(countChanged(before, picture()), 5000);
    choose("Colonnade", "Hidden");
    EXPECT_EQ(countChanged(before, picture()), 0);
}

TEST_F(SceneDockTest, ShadowGoesAndComesWithItsLayer)
{
    open(Showcase);
    select("Colonnade");
    const QImage before = picture();
    ASSERT_TRUE(node("Colonnade")->inLayer("cast_shadow"));
    choose("Colonnade", "Cast Shadow");
    EXPECT_GT(countChanged(before, picture()), 500);
    choose("Colonnade", "Cast Shadow");
    EXPECT_EQ(countChanged(before, picture()), 0);
}

TEST_F(SceneDockTest, TransparentAndPostRenderedNodesAreDrawnDifferently)
{
    open(Showcase);
    select("Colonnade");
    const QImage before = picture();
    choose("Colonnade", "Transparent");
    const QImage transparent = picture();
    EXPECT_GT(countChanged(before, transparent), 2000);
    choose("Colonnade", "Transparent");
    choose("Colonnade", "Post Render");
    const QImage over = picture();
    EXPECT_GT(countChanged(before, over), 500);
    EXPECT_GT(countChanged(transparent, over), 500);
    choose("Colonnade", "Post Render");
    EXPECT_EQ(countChanged(before, picture()), 0);
}

TEST_F(SceneDockTest, HouseOfManyNodesIsSelectedAndHidden)
{
    open(House);
    ASSERT_GT(scene.counts.nodes, 100u);
    const QImage before = picture();
    click(*view(), view()->rect().center());
    ASSERT_TRUE(waitFor([&] { return tree()->selectedItems().size() == 1; }));
    const QImage outlined = picture();
    EXPECT_GT(countChanged(before, outlined), 50);
    choose(selection().first(), "Hidden");
    EXPECT_GT(countChanged(outlined, picture()), 200);
}

TEST_F(SceneDockTest, ControlFGivesTheFilterTheKeyboard)
{
    open(Showcase);
    window.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    dock()->hide();
    QTest::keyClick(window.windowHandle(), Qt::Key_F, Qt::ControlModifier);
    ASSERT_TRUE(waitFor([&] { return filterLine()->hasFocus(); }));
    EXPECT_TRUE(dock()->isVisible());
    QTest::keyClicks(filterLine(), "SHAFT column 2");
    QCoreApplication::processEvents();
    EXPECT_TRUE(tree()->visualItemRect(item("Lawn")).isEmpty());
    EXPECT_FALSE(tree()->visualItemRect(item("Column 2 Shaft")).isEmpty());
}

TEST_F(SceneDockTest, AClickInTheViewShowsTheRowEvenIfItIsFilteredOut)
{
    open(Showcase);
    QTest::keyClicks(filterLine(), "lamp");
    settle();
    click(*view(), view()->rect().center() + QPoint(0, view()->height() / 4));
    ASSERT_TRUE(waitFor([&] { return tree()->selectedItems().size() == 1; }));
    EXPECT_FALSE(selection().first().contains("lamp", Qt::CaseInsensitive));
    EXPECT_TRUE(waitFor([&] { return !tree()->visualItemRect(tree()->selectedItems().first()).isEmpty(); }));
}

TEST_F(SceneDockTest, ViewMenuShowsAndHidesTheDock)
{
    open(Showcase);
    QAction* action = findAction("Scene Tree");
    ASSERT_TRUE(action);
    EXPECT_TRUE(action->isChecked());
    action->trigger();
    EXPECT_FALSE(dock()->isVisible());
    action->trigger();
    EXPECT_TRUE(dock()->isVisible());
}

TEST_F(SceneDockTest, HiddenDockStaysHiddenInTheNextRun)
{
    const QTemporaryDir folder;
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, folder.path());
    QCoreApplication::setOrganizationName("halvern-test");
    {
        MainWindow first(&loader, true);
        first.show();
        ASSERT_TRUE(first.findChild<SceneDock*>()->isVisible());
        first.findChild<SceneDock*>()->hide();
        first.close();
    }
    MainWindow second(&loader, true);
    second.show();
    EXPECT_FALSE(second.findChild<SceneDock*>()->isVisible());
}
