#include "engine/scene/ISceneController.h"
#include "tests/scene/SceneHelpers.h"
#include "tests/support/Gate.h"
#include "tests/support/RecordingEventManager.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <ctime>

namespace {

using namespace halvern::scene;
using namespace halvern::test;
using Clock = std::chrono::steady_clock;

class Controller : public ISceneController
{
public:
    explicit Controller(std::function<void()> newFunction) : function(std::move(newFunction)) {}
    void setSceneManager(boost::shared_ptr<SceneManager>) override {}
    bool update() override
    {
        function();
        return false;
    }

private:
    const std::function<void()> function;
};

struct SceneThreadTest : testing::Test
{
    /// Calls the function once per cycle.
    void onCycle(std::function<void()> function)
    {
        manager->addSceneController(boost::make_shared<Controller>(std::move(function)));
    }

    /// A gate that opens in the cycle of that number from now.
    std::shared_ptr<Gate> afterCycles(int count)
    {
        auto gate = std::make_shared<Gate>();
        auto left = std::make_shared<std::atomic<int>>(count);
        onCycle([gate, left] {
            if (--*left == 0)
                gate->open();
        });
        return gate;
    }

    boost::shared_ptr<SceneManager> manager = makeScene(makeNode("root"));
};

TEST_F(SceneThreadTest, ItIsOffUntilItIsStarted)
{
    std::atomic<std::thread::id> runsOn{std::thread::id()};
    onCycle([&] { runsOn = std::this_thread::get_id(); });
    EXPECT_EQ(runsOn.load(), std::thread::id());
    manager->update();
    EXPECT_EQ(runsOn.load(), std::this_thread::get_id());
    const auto ran = afterCycles(1);
    manager->start();
    ASSERT_TRUE(ran->wait());
    manager->stop();
    EXPECT_NE(runsOn.load(), std::this_thread::get_id());
}

TEST_F(SceneThreadTest, ItRunsSixtyCyclesASecondAndNoMore)
{
    const auto ran = afterCycles(31);
    const auto begin = Clock::now();
    manager->start();
    ASSERT_TRUE(ran->wait());
    const auto elapsed = Clock::now() - begin;
    manager->stop();
    // Later on a busy machine, but never sooner: thirty cycle times lie between the first and the last.
    EXPECT_GE(elapsed, std::chrono::milliseconds(499));
}

TEST_F(SceneThreadTest, ALateCycleIsSkippedNotCaughtUp)
{
    std::vector<Clock::time_point> begins;
    onCycle([&] {
        begins.push_back(Clock::now());
        if (begins.size() == 1) {
            while (Clock::now() - begins.front() < std::chrono::milliseconds(100)) {
            }
        }
    });
    const auto ran = afterCycles(8);
    manager->start();
    ASSERT_TRUE(ran->wait());
    manager->stop();
    // Caught up, the cycles after the long one would follow at once. The deadline of the third lies behind
    // the beginning of the second, and each later one a cycle time further.
    EXPECT_GE(begins[7] - begins[1], std::chrono::milliseconds(83));
}

TEST_F(SceneThreadTest, StopWaitsForTheRunningCycle)
{
    Gate inside;
    std::atomic<bool> ended{false};
    onCycle([&] {
        inside.open();
        for (int i = 0; i < 100; ++i)
            std::this_thread::yield();
        ended = true;
    });
    manager->start();
    ASSERT_TRUE(inside.wait());
    manager->stop();
    EXPECT_TRUE(ended);
    ended = false;
    manager->stop();
    EXPECT_FALSE(ended);
}

TEST_F(SceneThreadTest, StopWakesAWaitingThreadAtOnce)
{
    for (int i = 0; i < 20; ++i) {
        manager->start();
        manager->start();
        manager->stop();
    }
    const auto ran = afterCycles(2);
    manager->start();
    EXPECT_TRUE(ran->wait());
    manager->stop();
}

TEST_F(SceneThreadTest, StopInsideACycleDoesNotWaitAndEndsIt)
{
    Gate stopped;
    std::atomic<int> cycles{0};
    onCycle([&] {
        ++cycles;
        manager->stop();
        stopped.open();
    });
    manager->start();
    ASSERT_TRUE(stopped.wait());
    manager->stop();
    EXPECT_EQ(cycles, 1);
}

TEST_F(SceneThreadTest, ItStartsAgainAfterAStopInsideACycle)
{
    std::atomic<int> cycles{0};
    Gate second;
    onCycle([&] {
        if (++cycles == 2)
            second.open();
        manager->stop();
        if (cycles == 1)
            manager->start();
    });
    manager->start();
    EXPECT_TRUE(second.wait());
    manager->stop();
}

TEST_F(SceneThreadTest, ManyThreadsMayStartAndStop)
{
    runInThreads(3, [&](unsigned) {
        for (int i = 0; i < 100; ++i) {
            manager->start();
            manager->stop();
        }
    });
    const auto ran = afterCycles(1);
    manager->start();
    EXPECT_TRUE(ran->wait());
}

TEST_F(SceneThreadTest, DroppingTheManagerEndsTheThread)
{
    const auto ran = afterCycles(1);
    manager->start();
    ASSERT_TRUE(ran->wait());
    const boost::weak_ptr<SceneManager> weak = manager;
    manager.reset();
    const auto deadline = Clock::now() + std::chrono::seconds(10);
    while (!weak.expired() && Clock::now() < deadline) // a cycle may be the last owner
        std::this_thread::yield();
    EXPECT_TRUE(weak.expired());
}

TEST_F(SceneThreadTest, TheManagerMayBeDestroyedOnItsOwnThread)
{
    for (int i = 0; i < 20; ++i) {
        Gate mayGo;
        Gate gone;
        // The manager holds its controllers, and they hold what opens the gate in the end.
        const auto openAtEnd = [&gone](int*) { gone.open(); };
        auto owner = std::make_shared<boost::shared_ptr<SceneManager>>(makeScene(makeNode("root")));
        auto local = *owner;
        local->addSceneController(
            boost::make_shared<Controller>([&mayGo, owner, atEnd = std::shared_ptr<int>(nullptr, openAtEnd)] {
                EXPECT_TRUE(mayGo.wait());
                owner->reset(); // the cycle is the last owner
            }));
        local->start();
        local.reset();
        owner.reset();
        mayGo.open();
        EXPECT_TRUE(gone.wait());
    }
}

TEST_F(SceneThreadTest, ChangesAreAnnouncedWithoutAskingFromInside)
{
    const auto events = boost::make_shared<RecordingEventManager>();
    manager->setEventManager(events);
    manager->start();
    EXPECT_TRUE(events->waitForCount("SceneTopologyUpdate", 1));
    manager->getRoot()->setScale({2, 2, 2});
    EXPECT_TRUE(events->waitForCount("NodeTransformationUpdate", 1));
    manager->stop();
}

TEST_F(SceneThreadTest, AnIdleThreadCostsNextToNothing)
{
    const auto ran = afterCycles(60);
    manager->start();
    timespec begin{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &begin);
    ASSERT_TRUE(ran->wait());
    timespec end{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &end);
    manager->stop();
    const double seconds = double(end.tv_sec - begin.tv_sec) + double(end.tv_nsec - begin.tv_nsec) * 1e-9;
    RecordProperty("cpu_ms", std::to_string(seconds * 1000));
    EXPECT_LT(seconds, 0.05) << "for a second of cycles";
}

} // namespace
