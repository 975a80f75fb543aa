#include "tests/qt/DockProbe.h"

#include <QLabel>
#include <QMainWindow>
#include <QMetaMethod>
#include <QSignalSpy>
#include <QToolBar>
#include <QTranslator>
#include <QVBoxLayout>

#include <gmock/gmock.h>

#include <stdexcept>

using namespace halvern::test;
using boost::posix_time::milliseconds;
using halvern::qt::QtAnimationDock;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class QtAnimationDockTest : public DockTest
{};

/// The methods of a kind that the class itself declares, in the order of declaration.
QStringList ownMethods(QMetaMethod::MethodType type)
{
    const QMetaObject& meta = QtAnimationDock::staticMetaObject;
    QStringList found;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i)
        if (meta.method(i).methodType() == type)
            found += meta.method(i).methodSignature();
    return found;
}

} // namespace

// Construction

TEST_F(QtAnimationDockTest, MetaObjectHasNameSignalsAndSlotsInOrder)
{
    EXPECT_STREQ(QtAnimationDock::staticMetaObject.className(), "halvern::qt::QtAnimationDock");
    EXPECT_STREQ(QtAnimationDock::staticMetaObject.superClass()->className(), "QDockWidget");
    EXPECT_EQ(ownMethods(QMetaMethod::Signal),
              QStringList({"updateAnimationSlider()", "animationPaused(bool)"}));
    EXPECT_EQ(ownMethods(QMetaMethod::Slot),
              QStringList({"slot_pauseAnimations()", "slot_setAnimationTarget(int)",
                           "slot_comboBoxChanged(int)", "slot_addKeyFrame()", "slot_animationTime()",
                           "slot_newAnimation()", "slot_deleteKeyFrame()", "slot_editmode()",
                           "slot_cameraAction()", "slot_deleteAnimation()"}));
}

TEST_F(QtAnimationDockTest, ItIsTitledAnimationAndAtLeast150High)
{
    QWidget parent;
    const auto* child = new QtAnimationDock(&parent);
    EXPECT_EQ(child->parent(), &parent);
    EXPECT_EQ(child->windowTitle(), "Animation");
    EXPECT_EQ(child->minimumHeight(), 150);
}

TEST_F(QtAnimationDockTest, ToolBarAndSliderStandInTheCentralWidgetOfAnInnerMainWindow)
{
    auto* window = qobject_cast<QMainWindow*>(dock.widget());
    ASSERT_TRUE(window);
    const auto* layout = qobject_cast<QVBoxLayout*>(window->centralWidget()->layout());
    ASSERT_TRUE(layout);
    ASSERT_EQ(layout->count(), 2);
    auto* toolBar = qobject_cast<QToolBar*>(layout->itemAt(0)->widget());
    ASSERT_TRUE(toolBar);
    EXPECT_EQ(toolBar->windowTitle(), "Animationslider");
    EXPECT_EQ(window->toolBarArea(toolBar), Qt::NoToolBarArea);
    EXPECT_EQ(layout->itemAt(1)->widget(), &dock.slider());
}

TEST_F(QtAnimationDockTest, TheToolBarHoldsActionsLabelsAndBoxesInOrder)
{
    QStringList seen;
    auto* toolBar = dock.findChild<QToolBar*>();
    for (QAction* action : toolBar->actions()) {
        QWidget* widget = toolBar->widgetForAction(action);
        if (const auto* label = qobject_cast<QLabel*>(widget))
            seen += label->text();
        else if (widget == &dock.combo())
            seen += "animations";
        else if (widget == &dock.currentTime())
            seen += "current time";
        else if (widget == &dock.length())
            seen += "length";
        else
            seen += action->text();
    }
    EXPECT_EQ(seen,
              QStringList({"&New Animation", "&Pause Animations", "Animation:", "animations",
                           "Current Time:", "current time", "Animation Time:", "length", "&Insert Keyframe",
                           "&Delete Keyframe", "&Edit Mode", "&Add Camera", "&Delete Animation"}));
}

TEST_F(QtAnimationDockTest, StatusTipsAreTheOnesThatAreMeant)
{
    EXPECT_EQ(dock.playAction().statusTip(), "Pause Animations");
    EXPECT_EQ(dock.editAction().statusTip(), "Edit Mode");
    EXPECT_EQ(dock.insertAction().statusTip(), "Add keyframe");
    EXPECT_EQ(dock.deleteKeyAction().statusTip(), "Delete keyframe");
    EXPECT_EQ(dock.cameraAction().statusTip(), "Add Camera");
    EXPECT_EQ(dock.deleteAction().statusTip(), "Delete Animation Camera");
    EXPECT_EQ(dock.newAction().statusTip(), "");
}

TEST_F(QtAnimationDockTest, AllIconsButTwoComeFromTheResources)
{
    DockProbe fresh;
    EXPECT_TRUE(isIcon(fresh.playAction().icon(), ":/icons/resume.png"));
    EXPECT_TRUE(isIcon(fresh.editAction().icon(), ":/icons/edit_mode.png"));
    EXPECT_TRUE(isIcon(fresh.insertAction().icon(), "://icons/add_keyframe.png"));
    EXPECT_TRUE(isIcon(fresh.deleteKeyAction().icon(), ":/icons/delete_keyframe.png"));
    EXPECT_TRUE(isIcon(fresh.cameraAction().icon(), "://icons/add_camera.png"));
    EXPECT_TRUE(fresh.deleteAction().icon().isNull());
    EXPECT_TRUE(fresh.newAction().icon().isNull());
}

TEST_F(QtAnimationDockTest, TheIconsDiffer)
{
    std::vector<QImage> icons;
    for (const char* name :
         {"resume", "pause", "edit_mode", "add_keyframe", "delete_keyframe", "add_camera"}) {
        const QImage icon(QString(":/icons/%1.png").arg(name));
        EXPECT_EQ(icon.size(), QSize(48, 48)) << name;
        for (const QImage& other : icons)
            EXPECT_NE(icon, other) << name;
        icons.push_back(icon);
    }
}

TEST_F(QtAnimationDockTest, CtrlSpaceInsertsAKeyframeAndEditModeIsCheckable)
{
    EXPECT_EQ(dock.insertAction().shortcut(), QKeySequence(Qt::CTRL + Qt::Key_Space));
    EXPECT_TRUE(dock.editAction().isCheckable());
    EXPECT_FALSE(dock.editAction().isChecked());
    for (QAction* action : {&dock.playAction(), &dock.newAction(), &dock.insertAction()})
        EXPECT_FALSE(action->isCheckable());
}

TEST_F(QtAnimationDockTest, ActionTextsAreTranslated)
{
    struct Marking : QTranslator
    {
        QString translate(const char* context, const char* text, const char* /*comment*/,
                          int /*n*/) const override
        {
            const bool ours = QByteArray(context) == "halvern::qt::QtAnimationDock";
            return ours ? QString("<") + text + '>' : QString();
        }
        bool isEmpty() const override { return false; }
    } translator;
    QCoreApplication::installTranslator(&translator);
    DockProbe translated;
    QCoreApplication::removeTranslator(&translator);
    for (const char* text : {"<&Pause Animations>", "<&Insert Keyframe>", "<&New Animation>",
                             "<&Delete Keyframe>", "<&Edit Mode>", "<&Add Camera>", "<&Delete Animation>"})
        EXPECT_EQ(translated.action(text).text(), text);
    EXPECT_EQ(translated.action("<&Insert Keyframe>").statusTip(), "<Add keyframe>");
}

TEST_F(QtAnimationDockTest, BeforeTheFirstSceneRangesAreTheFixedOnes)
{
    DockProbe fresh;
    EXPECT_EQ(fresh.slider().minimum(), 0);
    EXPECT_EQ(fresh.slider().maximum(), 10000);
    EXPECT_EQ(fresh.currentTime().minimum(), 0);
    EXPECT_EQ(fresh.currentTime().maximum(), 0);
    EXPECT_EQ(fresh.length().minimum(), 0);
    EXPECT_EQ(fresh.length().maximum(), 120000);
    EXPECT_EQ(fresh.combo().sizeAdjustPolicy(), QComboBox::AdjustToContents);
    EXPECT_EQ(fresh.combo().count(), 0);
}

TEST_F(QtAnimationDockTest, AtFirstOnlyWhatNeedsNoEditModeIsEnabled)
{
    DockProbe fresh;
    EXPECT_EQ(fresh.enabled(), none);
    for (QAction* action : {&fresh.newAction(), &fresh.playAction(), &fresh.editAction(),
                            &fresh.cameraAction(), &fresh.deleteAction()})
        EXPECT_TRUE(action->isEnabled());
}

TEST_F(QtAnimationDockTest, NothingTakesTheFocus)
{
    EXPECT_EQ(dock.focusPolicy(), Qt::NoFocus);
    EXPECT_EQ(dock.currentTime().focusPolicy(), Qt::NoFocus);
    EXPECT_EQ(dock.length().focusPolicy(), Qt::NoFocus);
    EXPECT_EQ(dock.slider().focusPolicy(), Qt::NoFocus);
}

TEST_F(QtAnimationDockTest, WithoutASceneNothingHappens)
{
    DockProbe fresh;
    QSignalSpy paused(&fresh, SIGNAL(animationPaused(bool)));
    for (QAction* action : {&fresh.playAction(), &fresh.newAction(), &fresh.insertAction(),
                            &fresh.deleteKeyAction(), &fresh.cameraAction(), &fresh.deleteAction()}) {
        action->setEnabled(true);
        EXPECT_FALSE(withModal([&] { action->trigger(); }, [](QWidget& window) { window.close(); }));
    }
    fresh.editAction().trigger();
    EXPECT_FALSE(fresh.editAction().isChecked());
    fresh.pause();
    fresh.unPause();
    fresh.slider().setValue(5000);
    fresh.callSlot("slot_deleteKeyFrame");
    fresh.callSlot("slot_animationTime");
    fresh.callSlot("slot_comboBoxChanged", 0);
    EXPECT_EQ(paused.count(), 0);
    EXPECT_EQ(fresh.slider().value(), 5000);
    EXPECT_EQ(fresh.enabled(), (std::vector<bool>{false, false, true, true}));
}

// A scene

TEST_F(QtAnimationDockTest, ASceneListsItsAnimationsInOrderAndChoosesTheFirst)
{
    EXPECT_EQ(dock.listed(), QStringList({"walk", "run"}));
    EXPECT_EQ(dock.combo().currentIndex(), 0);
    EXPECT_EQ(scene->animations->animation, walk);
    EXPECT_TRUE(dock.combo().itemIcon(0).isNull());
    EXPECT_FALSE(dock.combo().itemData(0).isValid());
}

TEST_F(QtAnimationDockTest, ASceneIsTakenOverTwice)
{
    DockProbe fresh;
    QSignalSpy paused(&fresh, SIGNAL(animationPaused(bool)));
    fresh.setSceneManager(scene);
    EXPECT_THAT(calls.take(), ElementsAre("pause", "setAnimation walk", "pause", "setAnimation walk"));
    ASSERT_EQ(paused.count(), 2);
    EXPECT_TRUE(paused[0][0].toBool());
    EXPECT_TRUE(paused[1][0].toBool());
}

TEST_F(QtAnimationDockTest, AnEmptySceneManagerIsIgnored)
{
    dock.editAction().trigger();
    dock.setSceneManager({});
    EXPECT_THAT(calls.take(), IsEmpty());
    EXPECT_EQ(dock.listed(), QStringList({"walk", "run"}));
    EXPECT_TRUE(dock.editAction().isChecked());
    dock.pause();
    EXPECT_THAT(calls.take(), ElementsAre("pause"));
}

TEST_F(QtAnimationDockTest, ASceneWithoutAnAnimationManagerLeavesListAndTimeLineAsTheyAre)
{
    const boost::weak_ptr<halvern::scene::AnimationManager> old = scene->animations;
    const auto bare = boost::make_shared<FakeAnimationScene>(calls);
    bare->animations.reset();
    dock.setSceneManager(bare);
    EXPECT_EQ(dock.listed(), QStringList({"walk", "run"}));
    calls.take();
    dock.pause();
    dock.slider().setValue(100);
    dock.playAction().trigger();
    dock.combo().setCurrentIndex(1);
    EXPECT_THAT(calls.take(), IsEmpty());
    QMouseEvent click(QEvent::MouseButtonDblClick, QPointF(), Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&dock.slider(), &click);
    EXPECT_THAT(calls.take(), ElementsAre("setTime 0")); // the time line still has the old manager
}

TEST_F(QtAnimationDockTest, ASceneWithoutAnimationsEmptiesListBoxesAndSlider)
{
    dock.editAction().trigger();
    dock.slider().setValue(500);
    calls.take();
    dock.setSceneManager(boost::make_shared<FakeAnimationScene>(calls));
    EXPECT_EQ(dock.combo().count(), 0);
    EXPECT_FALSE(dock.currentTime().isEnabled());
    EXPECT_FALSE(dock.length().isEnabled());
    EXPECT_EQ(dock.currentTime().value(), 0);
    EXPECT_EQ(dock.length().value(), 0);
    EXPECT_EQ(dock.slider().value(), 0);
}

TEST_F(QtAnimationDockTest, ANewSceneReplacesTheOldWhichIsReleased)
{
    auto first = boost::make_shared<FakeAnimationScene>(calls);
    const boost::weak_ptr<halvern::scene::SceneManager> oldScene = first;
    const boost::weak_ptr<halvern::scene::AnimationManager> oldManager = first->animations;
    dock.setSceneManager(first);
    first.reset();
    EXPECT_FALSE(oldScene.expired());
    dock.setSceneManager(scene);
    EXPECT_TRUE(oldScene.expired());
    EXPECT_TRUE(oldManager.expired());
}

TEST_F(QtAnimationDockTest, DestructorReleasesTheScene)
{
    auto first = boost::make_shared<FakeAnimationScene>(calls);
    const boost::weak_ptr<halvern::scene::SceneManager> watch = first;
    {
        DockProbe fresh;
        fresh.setSceneManager(std::move(first));
        EXPECT_FALSE(watch.expired());
    }
    EXPECT_TRUE(watch.expired());
}

TEST_F(QtAnimationDockTest, IDsAreUtf8)
{
    scene->library = {boost::make_shared<FakeAnimation>(calls, "gr\xc3\xbc\xc3\x9f")};
    dock.setSceneManager(scene);
    EXPECT_EQ(dock.listed(), QStringList(QString::fromUtf8("gr\xc3\xbc\xc3\x9f")));
}

// Choosing

TEST_F(QtAnimationDockTest, ChoosingAnAnimationPausesAndTakesOverItsRange)
{
    dock.unPause();
    dock.slider().setValue(9000);
    calls.take();
    dock.combo().setCurrentIndex(1);
    EXPECT_THAT(calls.take(),
                ElementsAre("pause", "setAnimation run", "setTimeTarget 4000000", "setTimeTarget 0"));
    EXPECT_EQ(dock.slider().minimum(), 0);
    EXPECT_EQ(dock.slider().maximum(), 4000);
    EXPECT_EQ(dock.slider().value(), 0);
    EXPECT_EQ(dock.currentTime().minimum(), 0);
    EXPECT_EQ(dock.currentTime().maximum(), 4000);
    EXPECT_EQ(dock.length().value(), 4000);
    EXPECT_TRUE(isIcon(dock.playAction().icon(), ":/icons/resume.png"));
}

TEST_F(QtAnimationDockTest, TheLengthBoxShowsAtMost120Seconds)
{
    run->timeRange = 150000;
    dock.combo().setCurrentIndex(1);
    EXPECT_EQ(dock.length().value(), 120000);
    EXPECT_EQ(dock.slider().maximum(), 150000);
    EXPECT_EQ(dock.currentTime().maximum(), 150000);
}

TEST_F(QtAnimationDockTest, AnIndexOutsideOfTheLibraryThrows)
{
    for (const int index : {2, 1000}) {
        try {
            dock.callSlot("slot_comboBoxChanged", index);
            ADD_FAILURE() << "nothing was thrown";
        } catch (const std::out_of_range& error) {
            EXPECT_STREQ(error.what(), "invalid vector<T> subscript");
        }
    }
}

TEST_F(QtAnimationDockTest, ANegativeIndexDoesNothing)
{
    dock.callSlot("slot_comboBoxChanged", -1);
    EXPECT_THAT(calls.take(), IsEmpty());
    EXPECT_EQ(dock.slider().maximum(), 10000);
}

TEST_F(QtAnimationDockTest, AnEmptyEntryIsListedAndClearsTheAnimation)
{
    scene->library.push_back(nullptr);
    withAnswer(QMessageBox::No, [&] { dock.setSceneManager(scene); });
    EXPECT_EQ(dock.listed(), QStringList({"walk", "run", ""}));
    calls.take();
    dock.combo().setCurrentIndex(2);
    EXPECT_THAT(calls.take(), ElementsAre("pause", "setAnimation none"));
    EXPECT_EQ(dock.slider().maximum(), 10000);
    dock.editAction().trigger();
    EXPECT_FALSE(dock.editAction().isChecked());
    EXPECT_EQ(dock.enabled(), none);
}

// Playing

TEST_F(QtAnimationDockTest, PauseShowsTheResumeIconAndUnPauseThePauseIcon)
{
    QSignalSpy paused(&dock, SIGNAL(animationPaused(bool)));
    dock.unPause();
    EXPECT_TRUE(isIcon(dock.playAction().icon(), ":/icons/pause.png"));
    dock.pause();
    EXPECT_TRUE(isIcon(dock.playAction().icon(), ":/icons/resume.png"));
    EXPECT_THAT(calls.take(), ElementsAre("resume", "pause"));
    ASSERT_EQ(paused.count(), 2);
    EXPECT_FALSE(paused[0][0].toBool());
    EXPECT_TRUE(paused[1][0].toBool());
}

TEST_F(QtAnimationDockTest, TheActionTurnsWhatTheEngineSays)
{
    scene->animations->isPaused = true;
    dock.playAction().trigger();
    EXPECT_THAT(calls.take(), ElementsAre("resume"));
    dock.playAction().trigger();
    EXPECT_THAT(calls.take(), ElementsAre("pause"));
    scene->animations->isPaused = false; // somebody else resumed
    dock.playAction().trigger();
    EXPECT_THAT(calls.take(), ElementsAre("pause"));
}

// Scrubbing

TEST_F(QtAnimationDockTest, TheSliderSetsATargetInTicks)
{
    dock.slider().setValue(1234);
    EXPECT_THAT(calls.take(), ElementsAre("setTimeTarget 1234000"));
}

TEST_F(QtAnimationDockTest, TicksAre64Bits)
{
    walk->timeRange = 3000000;
    dock.setSceneManager(scene);
    calls.take();
    dock.slider().setValue(3000000);
    EXPECT_THAT(calls.take(), ElementsAre("setTimeTarget 3000000000"));
}

TEST_F(QtAnimationDockTest, SliderAndCurrentTimeFollowOneAnother)
{
    dock.slider().setValue(1234);
    EXPECT_EQ(dock.currentTime().value(), 1234);
    dock.currentTime().setValue(77);
    EXPECT_EQ(dock.slider().value(), 77);
    EXPECT_THAT(calls.take(), ElementsAre("setTimeTarget 1234000", "setTimeTarget 77000"));
}

TEST_F(QtAnimationDockTest, TheCurrentTimeFollowsTheSliderNotPlayback)
{
    scene->animations->currentTime = milliseconds(5000);
    dock.unPause();
    int paints = 0;
    struct Counter : QObject
    {
        explicit Counter(int& count) : count(count) {}
        bool eventFilter(QObject* /*watched*/, QEvent* event) override
        {
            count += event->type() == QEvent::Paint;
            return false;
        }
        int& count;
    } counter(paints);
    dock.slider().installEventFilter(&counter);
    dock.show();
    EXPECT_TRUE(QTest::qWaitFor([&] { return paints > 3; }, 20000));
    EXPECT_EQ(dock.currentTime().value(), 0);
    EXPECT_EQ(dock.slider().value(), 0);
}

TEST_F(QtAnimationDockTest, UpdateAnimationSliderRepaintsTheTimeLine)
{
    bool asked = false;
    struct Watch : QObject
    {
        explicit Watch(bool& asked) : asked(asked) {}
        bool eventFilter(QObject* /*watched*/, QEvent* event) override
        {
            asked |= event->type() == QEvent::UpdateRequest || event->type() == QEvent::Paint;
            return false;
        }
        bool& asked;
    } watch(asked);
    dock.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&dock));
    dock.slider().findChild<QTimer*>()->stop();
    QCoreApplication::processEvents();
    dock.slider().installEventFilter(&watch);
    QTest::qWait(0);
    asked = false;
    emit dock.updateAnimationSlider();
    EXPECT_TRUE(QTest::qWaitFor([&] { return asked; }, 10000));
}
