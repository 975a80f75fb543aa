#include "tests/qt/DockProbe.h"

#include <QDialogButtonBox>
#include <QLineEdit>

#include <gmock/gmock.h>

#include <cmath>

using namespace halvern::test;
using boost::posix_time::milliseconds;
using testing::ElementsAre;

namespace {

/// A shown dock on a scene of the reference engine whose thread runs, with a new animation of two seconds.
class QtAnimationDockEngineTest : public testing::Test
{
protected:
    QtAnimationDockEngineTest()
    {
        root->addChildNode(node);
        scene->setRoot(root);
        scene->start();
        dock.setSceneManager(scene);
        dock.resize(800, 150);
        dock.show();
        withModal([&] { dock.newAction().trigger(); },
                  [](QWidget& dialog) {
                      QTest::keyClicks(dialog.findChild<QLineEdit*>(QString(), Qt::FindDirectChildrenOnly),
                                       "move");
                      dialog.findChild<QSpinBox*>()->setValue(2000);
                      QTest::mouseClick(dialog.findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok),
                                        Qt::LeftButton);
                  });
        dock.editAction().trigger();
    }
    ~QtAnimationDockEngineTest() override { scene->stop(); }

    /// Waits while the scene plays and the dock repaints itself.
    static bool waitFor(const std::function<bool()>& condition) { return QTest::qWaitFor(condition, 20000); }

    float place() const { return node->getTranslation().x(); }

    /// The node stands there at that time.
    void record(int time, float place)
    {
        dock.slider().setValue(time);
        ASSERT_TRUE(waitFor([&] { return player->getCurrentTime() == milliseconds(time); }));
        node->setTranslation(Eigen::Translation3f(place, 0, 0));
        dock.insertAction().trigger();
    }

    const boost::shared_ptr<halvern::scene::Node> root = boost::make_shared<halvern::scene::Node>("root", "");
    const boost::shared_ptr<halvern::scene::Node> node = boost::make_shared<halvern::scene::Node>("node", "");
    const boost::shared_ptr<halvern::scene::SceneManager> scene =
        boost::make_shared<halvern::scene::SceneManager>(nullptr);
    const boost::shared_ptr<halvern::scene::AnimationManager> player = scene->getAnimationManager();
    DockProbe dock;
};

} // namespace

TEST_F(QtAnimationDockEngineTest, ANewAnimationIsTheCurrentOneWithAKeyframeAtZero)
{
    ASSERT_TRUE(player->getAnimation());
    EXPECT_EQ(player->getAnimation()->getID(), "move");
    EXPECT_THAT(player->getFrameTimes(), ElementsAre(0));
    EXPECT_EQ(dock.slider().maximum(), 2000);
}

TEST_F(QtAnimationDockEngineTest, ScrubbingMovesTheNodeBetweenItsKeyframes)
{
    record(1000, 10);
    record(2000, 20);
    EXPECT_THAT(player->getFrameTimes(), ElementsAre(0, 1, 2));
    dock.slider().setValue(500);
    EXPECT_TRUE(waitFor([&] { return std::abs(place() - 5) < 1e-3f; }));
    dock.slider().setValue(1500);
    EXPECT_TRUE(waitFor([&] { return std::abs(place() - 15) < 1e-3f; }));
}

TEST_F(QtAnimationDockEngineTest, PlayingMovesTheNodeUntilItIsPaused)
{
    record(2000, 20);
    dock.slider().setValue(0);
    ASSERT_TRUE(waitFor([&] { return place() == 0; }));
    dock.playAction().trigger();
    EXPECT_TRUE(waitFor([&] { return place() > 2; }));
    dock.playAction().trigger();
    EXPECT_TRUE(player->paused());
    const auto stopped = player->getCurrentTime();
    QTest::qWait(50);
    EXPECT_EQ(player->getCurrentTime(), stopped);
}

TEST_F(QtAnimationDockEngineTest, ADeletedKeyframeIsGone)
{
    record(1000, 10);
    record(2000, 20);
    dock.slider().setValue(1000);
    dock.deleteKeyAction().trigger();
    EXPECT_THAT(player->getFrameTimes(), ElementsAre(0, 2));
    dock.slider().setValue(500);
    EXPECT_TRUE(waitFor([&] { return std::abs(place() - 5) < 1e-3f; }));
}

TEST_F(QtAnimationDockEngineTest, AKeyframeThatSnappedToAMillisecondLessIsDeletedToo)
{
    record(251, 10);
    EXPECT_EQ(dock.slider().value(), 250);
    EXPECT_EQ(player->getFrameTimes().size(), 2u);
    dock.deleteKeyAction().trigger();
    EXPECT_THAT(player->getFrameTimes(), ElementsAre(0));
}

TEST_F(QtAnimationDockEngineTest, EverythingMayBeUsedWhileItPlays)
{
    dock.playAction().trigger();
    for (int i = 1; i < 40; ++i) {
        node->setTranslation(Eigen::Translation3f(float(i), 0, 0));
        dock.slider().setValue(i * 50);
        dock.insertAction().trigger();
        if (i % 5 == 0)
            dock.deleteKeyAction().trigger();
        if (i % 7 == 0)
            player->setTime(milliseconds(i));
        QCoreApplication::processEvents();
    }
    EXPECT_GT(player->getFrameTimes().size(), 20u);
    EXPECT_TRUE(withAnswer(QMessageBox::Yes, [&] { dock.deleteAction().trigger(); }));
    EXPECT_TRUE(scene->getAnimationsLibrary().empty());
    EXPECT_FALSE(player->getAnimation());
}
