#include "engine/scene/Animation.h"

#include "engine/scene/AnimationManager.h"

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

namespace {

using namespace halvern::scene;
using boost::posix_time::milliseconds;
using boost::posix_time::time_duration;

TEST(AnimationTest, ANewAnimationIsEmptyAndCanBeEdited)
{
    const Animation animation("name", "");
    EXPECT_EQ(animation.getID(), "name");
    EXPECT_TRUE(animation.isValid());
    EXPECT_EQ(animation.getTimeRange(), 0);
    EXPECT_EQ(animation.getDuration(), time_duration());
}

TEST(AnimationTest, TheTimeRangeComesBackAsItWasSet)
{
    Animation animation("name", "");
    animation.setTimeRange(-5);
    EXPECT_EQ(animation.getTimeRange(), -5);
    animation.setTimeRange(2000);
    EXPECT_EQ(animation.getTimeRange(), 2000);
    EXPECT_EQ(animation.getDuration(), time_duration());
}

TEST(AnimationTest, TheDurationIsTheTimeOfTheLastKeyframe)
{
    AnimationManager manager;
    const auto animation = boost::make_shared<Animation>("name", "");
    manager.setAnimation(animation);
    manager.insertKeyframe(0);
    manager.insertKeyframe(1.5f);
    manager.insertKeyframe(0.5f);
    EXPECT_EQ(animation->getDuration(), milliseconds(1500));
    EXPECT_EQ(animation->getTimeRange(), 0);
    manager.removeKeyFrame(animation, 1.5f);
    EXPECT_EQ(animation->getDuration(), milliseconds(500));
}

} // namespace
