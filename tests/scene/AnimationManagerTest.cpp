#include "engine/scene/AnimationManager.h"

#include "engine/scene/Animation.h"
#include "engine/scene/Camera.h"
#include "engine/scene/CameraInstance.h"
#include "reference/scene/AnimationCamera.h"
#include "reference/scene/Importer.h"
#include "tests/scene/ModelFiles.h"
#include "tests/scene/SceneHelpers.h"
#include "tests/support/SynchronousEventManager.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <limits>
#include <thread>

namespace {

using namespace halvern::scene;
using namespace halvern::test;
using boost::posix_time::milliseconds;
using boost::posix_time::seconds;
using boost::posix_time::time_duration;
using Clock = std::chrono::steady_clock;
using Times = std::vector<float>;

boost::shared_ptr<Animation> makeAnimation(const std::string& name = "animation")
{
    return boost::make_shared<Animation>(name, "");
}

void place(Node& node, float x)
{
    node.setTranslation(Eigen::Translation3f(x, 0, 0));
}

/// A scene "root" > "a", "b" and its animation manager.
struct AnimationManagerTest : testing::Test
{
    /// Runs cycles until the condition holds.
    testing::AssertionResult updateUntil(const std::function<bool()>& condition)
    {
        const auto deadline = Clock::now() + std::chrono::seconds(10);
        while (Clock::now() < deadline) {
            manager->update();
            if (condition())
                return testing::AssertionSuccess();
        }
        return testing::AssertionFailure() << "the time ran out";
    }

    /// Where the node is when the animation stands at that time.
    float placeAt(Node& node, const time_duration& time)
    {
        animations->setTime(time);
        manager->update();
        return node.getTranslation().x();
    }

    /// "a" goes from 0 to 10 within a second.
    boost::shared_ptr<Animation> recordMove()
    {
        const auto animation = makeAnimation();
        animations->setAnimation(animation);
        animations->insertKeyframe(0);
        place(*a, 10);
        animations->insertKeyframe(1);
        return animation;
    }

    const boost::shared_ptr<Node> a = makeNode("a");
    const boost::shared_ptr<Node> b = makeNode("b");
    const boost::shared_ptr<SceneManager> manager = makeScene(makeNode("root", {a, b}));
    const boost::shared_ptr<AnimationManager> animations = manager->getAnimationManager();
};

TEST_F(AnimationManagerTest, ItStartsPausedWithoutAnAnimation)
{
    EXPECT_TRUE(animations->paused());
    EXPECT_FALSE(animations->getAnimation());
    EXPECT_TRUE(animations->getFrameTimes().empty());
    EXPECT_EQ(animations->getCurrentTime(), time_duration());
}

TEST_F(AnimationManagerTest, WithoutACurrentAnimationOperationsDoNothing)
{
    animations->setTime(seconds(1));
    animations->setTimeTarget(seconds(1));
    animations->insertKeyframe(1);
    animations->removeKeyFrame({}, 1);
    animations->addAnimationCamera();
    manager->update();
    EXPECT_EQ(animations->getCurrentTime(), time_duration());
    EXPECT_TRUE(animations->getFrameTimes().empty());
}

TEST_F(AnimationManagerTest, PauseAndResumeNeedNoAnimation)
{
    animations->resume();
    EXPECT_FALSE(animations->paused());
    manager->update();
    animations->pause();
    EXPECT_TRUE(animations->paused());
}

TEST_F(AnimationManagerTest, AnEmptyPointerClearsTheAnimation)
{
    animations->setAnimation(makeAnimation());
    animations->insertKeyframe(1);
    animations->setAnimation({});
    EXPECT_FALSE(animations->getAnimation());
    EXPECT_TRUE(animations->getFrameTimes().empty());
}

TEST_F(AnimationManagerTest, FrameTimesAreAscendingAndFollowTheAnimation)
{
    const auto first = makeAnimation();
    animations->setAnimation(first);
    for (const float time : {2.0f, 0.0f, 1.0f, 1.0f, 1.0004f})
        animations->insertKeyframe(time);
    const Times& times = animations->getFrameTimes();
    EXPECT_EQ(times, (Times{0, 1.0004f, 2}));
    animations->removeKeyFrame(first, 2);
    EXPECT_EQ(&animations->getFrameTimes(), &times);
    EXPECT_EQ(times, (Times{0, 1.0004f}));
    animations->setAnimation(makeAnimation());
    EXPECT_TRUE(animations->getFrameTimes().empty());
}

TEST_F(AnimationManagerTest, TheVectorOfFrameTimesChangesOnlyWhenItIsAskedFor)
{
    const auto animation = makeAnimation();
    animations->setAnimation(animation);
    animations->insertKeyframe(1);
    const Times& times = animations->getFrameTimes();
    runInThreads(1, [&](unsigned) { animations->insertKeyframe(2); });
    EXPECT_EQ(times, (Times{1}));
    animations->getFrameTimes();
    EXPECT_EQ(times, (Times{1, 2}));
}

TEST_F(AnimationManagerTest, AKeyframeIsRemovedAtItsTimeInWholeMilliseconds)
{
    const auto animation = makeAnimation();
    animations->setAnimation(animation);
    animations->insertKeyframe(0.0333f);
    animations->insertKeyframe(0.04f);
    animations->removeKeyFrame(animation, 0.033f);
    animations->removeKeyFrame(animation, 7);
    animations->removeKeyFrame(animation, std::numeric_limits<float>::quiet_NaN());
    animations->insertKeyframe(std::numeric_limits<float>::infinity());
    EXPECT_EQ(animations->getFrameTimes(), (Times{0.04f}));
}

TEST_F(AnimationManagerTest, KeyframesAMillisecondApartAreTwo)
{
    const auto animation = makeAnimation();
    animations->setAnimation(animation);
    for (const float time : {0.010f, 0.011f, 0.012f})
        animations->insertKeyframe(time);
    animations->removeKeyFrame(animation, 0.011f);
    EXPECT_EQ(animations->getFrameTimes(), (Times{0.010f, 0.012f}));
}

TEST_F(AnimationManagerTest, AKeyframeIsRemovedAtTheMillisecondThatItsFloatIsCutOffTo)
{
    const auto animation = makeAnimation();
    animations->setAnimation(animation);
    for (int time = 1; time <= 150000; time += 499) {
        const auto inserted = static_cast<float>(time) / 1000;
        animations->insertKeyframe(inserted);
        animations->removeKeyFrame(animation, static_cast<float>(static_cast<int>(inserted * 1000)) / 1000);
        ASSERT_TRUE(animations->getFrameTimes().empty()) << time;
    }
}

TEST_F(AnimationManagerTest, SetTimeJumpsAndMovesTheNodesInTheNextCycle)
{
    recordMove();
    animations->setTime(milliseconds(250));
    EXPECT_EQ(animations->getCurrentTime(), milliseconds(250));
    EXPECT_EQ(a->getTranslation().x(), 10);
    manager->update();
    EXPECT_FLOAT_EQ(a->getTranslation().x(), 2.5f);
    place(*a, 77); // a paused animation moves nothing again
    manager->update();
    EXPECT_EQ(a->getTranslation().x(), 77);
}

TEST_F(AnimationManagerTest, OutsideItsKeysANodeStaysAtTheFirstAndLast)
{
    recordMove();
    EXPECT_EQ(placeAt(*a, seconds(-5)), 0);
    EXPECT_EQ(placeAt(*a, seconds(100)), 10);
    EXPECT_EQ(animations->getCurrentTime(), seconds(100));
}

TEST_F(AnimationManagerTest, OnlyNodesThatMovedAreRecorded)
{
    recordMove();
    place(*b, 5);
    placeAt(*a, milliseconds(500));
    EXPECT_EQ(b->getTranslation().x(), 5);
}

TEST_F(AnimationManagerTest, ANodeThatMovesLaterKeepsItsPlaceInEarlierKeyframes)
{
    recordMove();
    place(*b, 8);
    animations->insertKeyframe(2);
    EXPECT_EQ(placeAt(*b, seconds(0)), 0);
    EXPECT_EQ(placeAt(*b, seconds(1)), 0);
    EXPECT_FLOAT_EQ(placeAt(*b, milliseconds(1500)), 4);
    EXPECT_EQ(placeAt(*b, seconds(2)), 8);
}

TEST_F(AnimationManagerTest, AnAnimatedNodeIsRecordedEvenIfItStandsStill)
{
    recordMove();
    animations->insertKeyframe(3);
    place(*a, 20);
    animations->insertKeyframe(5);
    EXPECT_EQ(placeAt(*a, seconds(3)), 10);
    EXPECT_FLOAT_EQ(placeAt(*a, seconds(4)), 15);
}

TEST_F(AnimationManagerTest, RotationTakesTheShorterArcAndScaleIsLinear)
{
    animations->setAnimation(makeAnimation());
    animations->insertKeyframe(0);
    const auto turned = [](float angle) {
        return Eigen::Affine3f(Eigen::AngleAxisf(angle, Eigen::Vector3f::UnitZ()));
    };
    a->setRotation(turned(1.5f));
    a->setScale({3, 1, 1});
    animations->insertKeyframe(1);
    animations->setTime(milliseconds(500));
    manager->update();
    EXPECT_TRUE(a->getRotation().isApprox(turned(0.75f).matrix(), 1e-5f));
    EXPECT_TRUE(a->getScale().isApprox(Eigen::Vector3f(2, 1, 1)));
}

TEST_F(AnimationManagerTest, ARunningAnimationLoopsOverItsRange)
{
    const auto animation = recordMove();
    animation->setTimeRange(1200);
    animations->setTime(milliseconds(1150));
    animations->resume();
    EXPECT_TRUE(updateUntil([&] { return animations->getCurrentTime() < milliseconds(1000); }));
    EXPECT_LT(a->getTranslation().x(), 10);
    animations->pause();
    const auto stopped = animations->getCurrentTime();
    manager->update();
    EXPECT_EQ(animations->getCurrentTime(), stopped);
}

TEST_F(AnimationManagerTest, ATimeFarOutsideIsBackInTheRangeAsSoonAsItPlays)
{
    recordMove()->setTimeRange(2000);
    for (const int far : {-10001, 2991}) {
        animations->pause();
        animations->setTime(seconds(far));
        animations->resume();
        manager->update();
        EXPECT_GE(animations->getCurrentTime(), time_duration()) << far;
        EXPECT_LT(animations->getCurrentTime(), seconds(2)) << far;
    }
}

TEST_F(AnimationManagerTest, AnAnimationOfNoLengthStaysAtItsBegin)
{
    animations->setAnimation(makeAnimation());
    animations->insertKeyframe(0);
    animations->resume();
    for (int i = 0; i < 10; ++i)
        manager->update();
    EXPECT_EQ(animations->getCurrentTime(), time_duration());
}

TEST_F(AnimationManagerTest, ATargetIsReachedSmoothlyWhilePaused)
{
    recordMove();
    animations->setTimeTarget(seconds(1));
    EXPECT_EQ(animations->getCurrentTime(), time_duration());
    const auto begin = Clock::now();
    manager->update();
    std::vector<time_duration> passed;
    EXPECT_TRUE(updateUntil([&] {
        passed.push_back(animations->getCurrentTime());
        return passed.back() == seconds(1);
    }));
    EXPECT_GE(Clock::now() - begin, std::chrono::milliseconds(240));
    EXPECT_TRUE(std::is_sorted(passed.begin(), passed.end()));
    EXPECT_GT(std::set<time_duration>(passed.begin(), passed.end()).size(), 2u);
    EXPECT_EQ(a->getTranslation().x(), 10);
}

TEST_F(AnimationManagerTest, ATargetThatKeepsMovingIsFollowed)
{
    recordMove()->setTimeRange(100000);
    int target = 0;
    EXPECT_TRUE(updateUntil([&] {
        animations->setTimeTarget(milliseconds(++target));
        const auto cycle = Clock::now() + std::chrono::milliseconds(10);
        while (Clock::now() < cycle)
            manager->update();
        return target == 60;
    }));
    EXPECT_GT(animations->getCurrentTime(), milliseconds(20));
}

TEST_F(AnimationManagerTest, ATargetIsAJumpWhilePlaying)
{
    recordMove()->setTimeRange(60000);
    animations->resume();
    animations->setTimeTarget(seconds(30));
    EXPECT_EQ(animations->getCurrentTime(), seconds(30));
}

TEST_F(AnimationManagerTest, TheActiveCameraJoinsTheAnimation)
{
    const auto events = boost::make_shared<SynchronousEventManager>();
    manager->setEventManager(events);
    const auto camera = boost::make_shared<Camera>("camera");
    manager->addCameraInstance(boost::make_shared<CameraInstance>("first", a, camera));
    manager->addCameraInstance(boost::make_shared<CameraInstance>("second", b, camera));
    animations->setAnimation(makeAnimation());
    animations->addAnimationCamera();
    EXPECT_EQ(animations->getFrameTimes(), (Times{0}));
    place(*a, 10);
    animations->insertKeyframe(1);
    EXPECT_EQ(placeAt(*a, milliseconds(500)), 5);

    events->triggerEvent("ActiveCamera", "second");
    events->triggerEvent("ActiveCamera", "no such camera");
    animations->addAnimationCamera();
    place(*b, 4);
    EXPECT_EQ(placeAt(*b, seconds(1)), 0);
}

TEST_F(AnimationManagerTest, AnAddedCameraGoesAlongWithTheViewWhilePaused)
{
    manager->addCameraInstance(
        boost::make_shared<CameraInstance>("first", a, boost::make_shared<Camera>("camera")));
    animations->setAnimation(makeAnimation());
    const auto look = [&](const boost::shared_ptr<Node>& camera, float x) {
        const Eigen::Quaternionf turn(Eigen::AngleAxisf(x, Eigen::Vector3f::UnitY()));
        return setView(*animations, CameraPlace{camera, {x, 0, 0}, turn});
    };
    EXPECT_FALSE(look(a, 1));
    EXPECT_EQ(a->getTranslation().x(), 0);
    animations->addAnimationCamera();
    EXPECT_EQ(a->getTranslation().x(), 1);
    EXPECT_TRUE(look(a, 2));
    EXPECT_EQ(a->getTranslation().x(), 2);
    EXPECT_TRUE(a->getRotation().isApprox(
        Eigen::Affine3f(Eigen::AngleAxisf(2, Eigen::Vector3f::UnitY())).matrix(), 1e-5f));
    EXPECT_EQ(placeAt(*a, seconds(0)), 1);

    EXPECT_FALSE(look(b, 3));
    animations->resume();
    EXPECT_FALSE(look(a, 4));
    animations->pause();
    EXPECT_FALSE(setView(*animations, {}));
    animations->setAnimation(makeAnimation());
    EXPECT_FALSE(look(a, 5));
    EXPECT_EQ(a->getTranslation().x(), 1);
    EXPECT_EQ(b->getTranslation().x(), 0);
}

TEST_F(AnimationManagerTest, ANodeThatMovesIsAnnouncedOnceACycle)
{
    recordMove()->setTimeRange(60000);
    manager->update();
    const auto events = boost::make_shared<SynchronousEventManager>();
    manager->setEventManager(events);
    const auto takeMoved = [&] {
        auto moved = events->getData("NodeTransformationUpdate");
        events->clear();
        return moved;
    };
    for (int i = 1; i <= 5; ++i) {
        animations->setTime(milliseconds(i));
        animations->setTime(milliseconds(100 * i));
        manager->update();
        EXPECT_EQ(takeMoved(), std::vector<std::string>{"a"});
    }
    manager->update();
    EXPECT_TRUE(takeMoved().empty());

    animations->resume();
    for (int i = 0; i < 100; ++i) {
        manager->update();
        EXPECT_LE(takeMoved().size(), 1u);
    }
}

TEST_F(AnimationManagerTest, ANodeThatStandsStillIsNotAnnounced)
{
    recordMove()->setTimeRange(60000);
    a->setRotation(Eigen::Affine3f(Eigen::AngleAxisf(1, Eigen::Vector3f(1, 2, 3).normalized())));
    animations->insertKeyframe(2);
    animations->insertKeyframe(3);
    animations->setTime(seconds(2));
    manager->update();
    const auto events = boost::make_shared<SynchronousEventManager>();
    manager->setEventManager(events);
    animations->setTime(milliseconds(2500));
    manager->update();
    EXPECT_TRUE(events->getData("NodeTransformationUpdate").empty());
}

TEST_F(AnimationManagerTest, PlaybackRunsOnTheSceneThread)
{
    struct WatchedNode : Node
    {
        using Node::Node;
        void setTranslation(Eigen::Translation3f translation) override
        {
            movedBy = std::this_thread::get_id();
            Node::setTranslation(translation);
        }
        std::atomic<std::thread::id> movedBy{std::thread::id()};
    };
    const auto watched = boost::make_shared<WatchedNode>("watched", "");
    a->addChildNode(watched);
    recordMove();
    place(*watched, 1);
    animations->insertKeyframe(2);
    watched->movedBy = std::thread::id();
    manager->start();
    animations->resume();
    const auto deadline = Clock::now() + std::chrono::seconds(20);
    while (watched->movedBy.load() == std::thread::id() && Clock::now() < deadline)
        std::this_thread::yield();
    manager->stop();
    EXPECT_NE(watched->movedBy.load(), std::thread::id());
    EXPECT_NE(watched->movedBy.load(), std::this_thread::get_id());
}

TEST_F(AnimationManagerTest, AnAnimationOfAFileIsPlayed)
{
    const TemporaryFolder folder;
    Gltf gltf;
    const std::string times = std::to_string(gltf.floats("SCALAR", {0, 2}));
    const std::string places = std::to_string(gltf.floats("VEC3", {0, 0, 0, 8, 0, 0}));
    const auto imported = importScene(
        folder.write(
            "a.gltf",
            gltf.text(
                R"({"name":"n"})", "0",
                "\"animations\":[{\"name\":\"move\",\"samplers\":[{\"input\":" + times +
                    ",\"output\":" + places +
                    "}],\"channels\":[{\"sampler\":0,\"target\":{\"node\":0,\"path\":\"translation\"}}]}]")),
        {});
    auto& scene = *imported.sceneManager;
    const auto player = scene.getAnimationManager();
    player->setAnimation(scene.getAnimationsLibrary().at(0));
    EXPECT_EQ(player->getFrameTimes(), (Times{0, 2}));
    player->setTime(milliseconds(500));
    scene.update();
    EXPECT_FLOAT_EQ(scene.getNodeByID("n")->getTranslation().x(), 2);
}

TEST_F(AnimationManagerTest, AKeyframeRecordedAgainLeavesTheOthersAsTheyWere)
{
    recordMove();
    place(*b, 3);
    animations->insertKeyframe(2);
    place(*a, 30);
    animations->insertKeyframe(1);
    place(*a, 40);
    animations->insertKeyframe(1.0002f);
    EXPECT_EQ(animations->getFrameTimes(), (Times{0, 1.0002f, 2}));
    EXPECT_EQ(placeAt(*a, seconds(0)), 0);
    EXPECT_FLOAT_EQ(placeAt(*a, milliseconds(500)), 20 / 1.0002f);
    EXPECT_EQ(placeAt(*a, seconds(2)), 10);
}

TEST_F(AnimationManagerTest, WhatAFileDoesNotAnimateKeepsItsPlaceInTheOtherKeyframes)
{
    const TemporaryFolder folder;
    Gltf gltf;
    const std::string times = std::to_string(gltf.floats("SCALAR", {0, 2}));
    const std::string turns = std::to_string(gltf.floats("VEC4", {0, 0, 0, 1, 0, 1, 0, 0}));
    const auto imported = importScene(
        folder.write(
            "a.gltf",
            gltf.text(
                R"({"name":"n"})", "0",
                "\"animations\":[{\"name\":\"turn\",\"samplers\":[{\"input\":" + times +
                    ",\"output\":" + turns +
                    "}],\"channels\":[{\"sampler\":0,\"target\":{\"node\":0,\"path\":\"rotation\"}}]}]")),
        {});
    auto& scene = *imported.sceneManager;
    const auto node = scene.getNodeByID("n");
    const auto player = scene.getAnimationManager();
    player->setAnimation(scene.getAnimationsLibrary().at(0));
    place(*node, 5);
    player->insertKeyframe(1);
    for (const auto& [time, expected] : {std::pair(0, 0), std::pair(1, 5), std::pair(2, 0)}) {
        player->setTime(seconds(time));
        scene.update();
        EXPECT_EQ(node->getTranslation().x(), float(expected)) << time;
    }
}

TEST_F(AnimationManagerTest, ThreeThreadsMayPlayAndEditAtOnce)
{
    const auto animation = recordMove();
    animations->resume();
    runInThreads(3, [&](unsigned thread) {
        for (int i = 0; i < 300; ++i) {
            if (thread == 0) {
                manager->update();
                continue;
            }
            animations->setTime(milliseconds(i));
            animations->setTimeTarget(milliseconds(i));
            if (thread == 1) {
                animations->getFrameTimes();
                animations->insertKeyframe(static_cast<float>(i) / 100);
            }
            animations->removeKeyFrame(animation, static_cast<float>(i) / 50);
            animations->setAnimation(i % 10 ? animation : nullptr);
            animations->pause();
            animations->resume();
            animations->getCurrentTime();
        }
    });
    EXPECT_FALSE(animations->paused());
}

TEST_F(AnimationManagerTest, ItOutlivesItsScene)
{
    auto scene = makeScene(makeNode("root"));
    const auto player = scene->getAnimationManager();
    scene.reset();
    player->setAnimation(makeAnimation());
    player->insertKeyframe(1);
    EXPECT_EQ(player->getFrameTimes(), (Times{1}));
}

} // namespace
