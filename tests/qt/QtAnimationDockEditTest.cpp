#include "tests/qt/DockProbe.h"

#include <gmock/gmock.h>

using namespace halvern::test;
using boost::posix_time::milliseconds;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class QtAnimationDockEditTest : public DockTest
{
protected:
    /// What the deletion of the keyframe at the slider calls.
    std::vector<std::string> deleteKeyAt(int value)
    {
        dock.slider().setValue(value);
        calls.take();
        dock.callSlot("slot_deleteKeyFrame");
        return calls.take();
    }

    /// Where the slider stands after a keyframe was inserted.
    int insertKeyAt(int value)
    {
        dock.slider().setValue(value);
        calls.take();
        dock.callSlot("slot_addKeyFrame");
        return dock.slider().value();
    }

    void finishLength(int value)
    {
        dock.length().setValue(value);
        calls.take();
        QTest::keyClick(&dock.length(), Qt::Key_Return);
    }
};

} // namespace

// Edit mode

TEST_F(QtAnimationDockEditTest, EditModeEnablesBoxesAndKeyframeActions)
{
    dock.editAction().trigger();
    EXPECT_TRUE(dock.editAction().isChecked());
    EXPECT_EQ(dock.enabled(), all);
    dock.editAction().trigger();
    EXPECT_FALSE(dock.editAction().isChecked());
    EXPECT_EQ(dock.enabled(), none);
    EXPECT_THAT(calls.take(), IsEmpty());
}

TEST_F(QtAnimationDockEditTest, ToggleEditingSwitchesFourAndNothingElse)
{
    dock.toggleEditing(true);
    EXPECT_EQ(dock.enabled(), all);
    EXPECT_FALSE(dock.editAction().isChecked());
    dock.toggleEditing(false);
    EXPECT_EQ(dock.enabled(), none);
}

TEST_F(QtAnimationDockEditTest, EditModeNeverDisablesTheOtherActions)
{
    for (const bool on : {true, false}) {
        dock.toggleEditing(on);
        for (QAction* action :
             {&dock.playAction(), &dock.newAction(), &dock.cameraAction(), &dock.deleteAction()})
            EXPECT_TRUE(action->isEnabled());
    }
}

TEST_F(QtAnimationDockEditTest, ASceneWithoutNodesHasNoEditMode)
{
    scene->nodes.clear();
    dock.editAction().trigger();
    EXPECT_FALSE(dock.editAction().isChecked());
    EXPECT_EQ(dock.enabled(), none);
}

TEST_F(QtAnimationDockEditTest, ASceneWithoutAnimationsHasNoEditMode)
{
    scene->library.clear();
    dock.editAction().trigger();
    EXPECT_FALSE(dock.editAction().isChecked());
    EXPECT_EQ(dock.enabled(), none);
}

TEST_F(QtAnimationDockEditTest, AnIndexThatIsNoLongerInTheLibraryHasNoEditMode)
{
    dock.combo().setCurrentIndex(1);
    scene->library.pop_back();
    dock.editAction().trigger();
    EXPECT_FALSE(dock.editAction().isChecked());
    EXPECT_EQ(dock.enabled(), none);
}

TEST_F(QtAnimationDockEditTest, EditModeOfAnInvalidAnimationOnlyFlipsTheFlag)
{
    walk->valid = false;
    dock.editAction().trigger();
    EXPECT_FALSE(dock.editAction().isChecked());
    EXPECT_EQ(dock.enabled(), none);
    walk->valid = true;
    dock.editAction().trigger(); // the flag was on: now it is off
    EXPECT_TRUE(dock.editAction().isChecked());
    EXPECT_EQ(dock.enabled(), none);
}

TEST_F(QtAnimationDockEditTest, ChoosingAnInvalidAnimationLeavesEditModeButNotItsControls)
{
    run->valid = false;
    dock.editAction().trigger();
    dock.combo().setCurrentIndex(1);
    EXPECT_FALSE(dock.editAction().isChecked());
    EXPECT_EQ(dock.enabled(), all);
    dock.combo().setCurrentIndex(0);
    EXPECT_EQ(dock.enabled(), all);
    dock.editAction().trigger(); // the flag was off
    EXPECT_TRUE(dock.editAction().isChecked());
}

TEST_F(QtAnimationDockEditTest, ChoosingAnotherValidAnimationKeepsEditMode)
{
    dock.editAction().trigger();
    dock.combo().setCurrentIndex(1);
    EXPECT_TRUE(dock.editAction().isChecked());
    EXPECT_EQ(dock.enabled(), all);
}

TEST_F(QtAnimationDockEditTest, ANewSceneLeavesEditMode)
{
    dock.editAction().trigger();
    dock.setSceneManager(scene);
    EXPECT_FALSE(dock.editAction().isChecked());
    EXPECT_EQ(dock.enabled(), none);
    dock.setSceneManager(scene);
    EXPECT_FALSE(dock.editAction().isChecked());
}

TEST_F(QtAnimationDockEditTest, ASceneThatAllowsNoEditModeOnlyTakesTheCheckMarkAway)
{
    dock.editAction().trigger();
    const auto bare = boost::make_shared<FakeAnimationScene>(calls);
    dock.setSceneManager(bare);
    EXPECT_FALSE(dock.editAction().isChecked());
    EXPECT_EQ(dock.enabled(),
              (std::vector<bool>{false, false, true, true})); // the boxes have nothing to show
    bare->put("other");
    dock.editAction().trigger(); // the flag was still on
    EXPECT_EQ(dock.enabled(), none);
}

TEST_F(QtAnimationDockEditTest, ASceneWithoutAnAnimationManagerLeavesEditModeToo)
{
    dock.editAction().trigger();
    const auto bare = boost::make_shared<FakeAnimationScene>(calls);
    bare->put("other");
    bare->animations.reset();
    dock.setSceneManager(bare);
    EXPECT_FALSE(dock.editAction().isChecked());
    EXPECT_EQ(dock.enabled(), none);
}

// Inserting keyframes

TEST_F(QtAnimationDockEditTest, AKeyframeIsInsertedWhereTheSliderIs)
{
    dock.slider().setValue(2500);
    calls.take();
    dock.editAction().trigger();
    dock.insertAction().trigger();
    EXPECT_THAT(calls.take(), ElementsAre("insertKeyframe 2.5", "setTimeTarget 2500000"));
    EXPECT_EQ(dock.slider().value(), 2500);
}

TEST_F(QtAnimationDockEditTest, AfterInsertingTheSliderIsRoundedThroughFloats)
{
    EXPECT_EQ(insertKeyAt(250), 250);
    EXPECT_EQ(insertKeyAt(251), 250);
    EXPECT_THAT(calls.take(),
                ElementsAre("insertKeyframe 0.250999987", "setTimeTarget 250000", "setTimeTarget 250000"));
    EXPECT_EQ(insertKeyAt(2001), 2000);
    EXPECT_EQ(insertKeyAt(0), 0);
    EXPECT_EQ(insertKeyAt(10000), 10000);
}

TEST_F(QtAnimationDockEditTest, InsertingNeedsTheAnimationManagerAlone)
{
    scene->animations->animation.reset();
    insertKeyAt(0);
    EXPECT_THAT(calls.take(), ElementsAre("insertKeyframe 0", "setTimeTarget 0"));
}

// Deleting keyframes

TEST_F(QtAnimationDockEditTest, Below10MillisecondsNoKeyframeIsDeleted)
{
    for (const int value : {0, 5, 9})
        EXPECT_THAT(deleteKeyAt(value), IsEmpty()) << value;
}

TEST_F(QtAnimationDockEditTest, At10MillisecondsTheKeyframeAtAHundredthGoes)
{
    walk->duration = milliseconds(10000);
    EXPECT_THAT(deleteKeyAt(10), ElementsAre("removeKeyFrame walk 0.00999999978"));
    EXPECT_THAT(deleteKeyAt(11), ElementsAre("removeKeyFrame walk 0.0109999999"));
}

TEST_F(QtAnimationDockEditTest, TheActionDeletesTheKeyframeAtTheSlider)
{
    walk->duration = milliseconds(10000);
    dock.slider().setValue(2500);
    dock.editAction().trigger();
    calls.take();
    dock.deleteKeyAction().trigger();
    EXPECT_THAT(calls.take(), ElementsAre("removeKeyFrame walk 2.5"));
}

TEST_F(QtAnimationDockEditTest, AShorterDurationSetsATargetWhoseMillisecondsAreTakenAsSeconds)
{
    walk->duration = milliseconds(3000);
    EXPECT_THAT(deleteKeyAt(2500), ElementsAre("removeKeyFrame walk 2.5", "setTimeTarget 2990000000"));
    walk->duration = milliseconds(0);
    EXPECT_THAT(deleteKeyAt(2500), ElementsAre("removeKeyFrame walk 2.5", "setTimeTarget -10000000"));
}

TEST_F(QtAnimationDockEditTest, TheTargetIsSetOnlyIfTheSliderGoesFurther)
{
    walk->duration = milliseconds(10000);
    EXPECT_THAT(deleteKeyAt(2500), ElementsAre("removeKeyFrame walk 2.5"));
    walk->duration = boost::posix_time::microseconds(9999999);
    EXPECT_THAT(deleteKeyAt(2500), ElementsAre("removeKeyFrame walk 2.5", "setTimeTarget 9989000000"));
}

TEST_F(QtAnimationDockEditTest, TheInnerProductOfTheTargetWrapsAs32Bits)
{
    walk->timeRange = 100000000;
    walk->duration = milliseconds(3000000);
    dock.setSceneManager(scene);
    // (3000000 - 10) * 1000 is 2999990000, as 32 bits -1294977296
    EXPECT_THAT(deleteKeyAt(2500), ElementsAre("removeKeyFrame walk 2.5", "setTimeTarget -1294977296000"));
}

TEST_F(QtAnimationDockEditTest, WithoutACurrentAnimationNoKeyframeIsDeleted)
{
    scene->animations->animation.reset();
    EXPECT_THAT(deleteKeyAt(2500), IsEmpty());
}

// The length

TEST_F(QtAnimationDockEditTest, AGreaterLengthIsTakenOver)
{
    walk->duration = milliseconds(3000);
    dock.editAction().trigger();
    finishLength(20000);
    EXPECT_THAT(calls.take(), ElementsAre("setTimeRange 20000"));
    EXPECT_EQ(dock.slider().maximum(), 20000);
    EXPECT_EQ(dock.currentTime().maximum(), 20000);
    EXPECT_EQ(dock.slider().minimum(), 0);
}

TEST_F(QtAnimationDockEditTest, ALengthNotGreaterThanTheDurationIsIgnored)
{
    walk->duration = milliseconds(3000);
    dock.editAction().trigger();
    for (const int length : {3000, 2999, 0}) {
        finishLength(length);
        EXPECT_THAT(calls.take(), IsEmpty());
        EXPECT_EQ(dock.slider().maximum(), 10000);
        EXPECT_EQ(dock.length().value(), length);
    }
}

TEST_F(QtAnimationDockEditTest, TheLengthIsComparedWithTheDurationNotWithTheRange)
{
    walk->duration = boost::posix_time::microseconds(3000999);
    dock.editAction().trigger();
    finishLength(3001);
    EXPECT_THAT(calls.take(), ElementsAre("setTimeRange 3001"));
    EXPECT_EQ(dock.slider().maximum(), 3001);
}

TEST_F(QtAnimationDockEditTest, ALengthCountsWhenEditingIsFinished)
{
    dock.editAction().trigger();
    dock.length().setValue(20000);
    EXPECT_THAT(calls.take(), IsEmpty());
    EXPECT_EQ(dock.slider().maximum(), 10000);
}

TEST_F(QtAnimationDockEditTest, WithoutACurrentAnimationALengthIsIgnored)
{
    dock.editAction().trigger();
    scene->animations->animation.reset();
    finishLength(20000);
    EXPECT_THAT(calls.take(), IsEmpty());
    EXPECT_EQ(dock.slider().maximum(), 10000);
}

// The camera

TEST_F(QtAnimationDockEditTest, TheCameraIsAddedOutsideOfEditModeToo)
{
    dock.cameraAction().trigger();
    EXPECT_THAT(calls.take(), ElementsAre("addAnimationCamera"));
}
