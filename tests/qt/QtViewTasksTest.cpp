#include "tests/qt/ViewProbe.h"

#include <QOpenGLContext>
#include <QTest>
#include <QThread>

#include <boost/function.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <stdexcept>
#include <thread>

using namespace halvern::test;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// Notes the effects it is asked to load.
class LoadingView : public ViewProbe
{
public:
    void internalLoadEffect(std::string effectFile, std::string nodeID, unsigned int first,
                            unsigned int second) override
    {
        loaded.push_back(effectFile + '|' + nodeID + '|' + std::to_string(first) + '|' +
                         std::to_string(second));
        thread = QThread::currentThread();
        currentContext = QOpenGLContext::currentContext();
    }

    std::vector<std::string> loaded;
    QThread* thread = nullptr;
    QOpenGLContext* currentContext = nullptr;
};

} // namespace

TEST(QtViewTasksTest, TasksRunOnceInOrderBeforeTheWindow)
{
    CallLog log;
    ViewProbe view;
    showWithFakeWindow(view, log);
    view.queueTask([&] { log.add("one"); });
    view.queueTask([&] { log.add("two"); });
    repaintView(view);
    EXPECT_THAT(log.take(), ElementsAre("one", "two", "update", "render"));
    repaintView(view);
    EXPECT_THAT(log.take(), ElementsAre("update", "render"));
}

TEST(QtViewTasksTest, TasksRunOnTheThreadOfTheViewWithItsContext)
{
    ViewProbe view;
    showView(view);
    view.doneCurrent();
    QThread* thread = nullptr;
    QOpenGLContext* context = nullptr;
    std::thread([&] {
        view.queueTask([&] {
            thread = QThread::currentThread();
            context = QOpenGLContext::currentContext();
        });
    }).join();
    ASSERT_TRUE(waitFor([&] { return thread != nullptr; }));
    EXPECT_EQ(thread, view.thread());
    EXPECT_EQ(context, view.context());
}

TEST(QtViewTasksTest, QueueingAsksForARepaintOnce)
{
    WindowlessView view;
    showView(view);
    int asked = 0;
    QObject::connect(&view, &ViewProbe::needsUpdate, [&] { ++asked; });
    const int before = view.paints;
    view.queueTask([] {});
    EXPECT_EQ(asked, 1);
    settle();
    EXPECT_EQ(view.paints, before + 1);
}

TEST(QtViewTasksTest, TheQueueIsUnlockedWhenTheRepaintIsAskedFor)
{
    ViewProbe view;
    int asked = 0;
    QObject::connect(&view, &ViewProbe::needsUpdate, [&] {
        if (++asked == 1)
            view.queueTask([] {}); // would wait for itself for ever
    });
    view.queueTask([] {});
    EXPECT_EQ(asked, 2);
}

TEST(QtViewTasksTest, ATaskQueuedByATaskRunsInTheNextFrame)
{
    CallLog log;
    ViewProbe view;
    showWithFakeWindow(view, log);
    view.queueTask([&] {
        log.add("outer");
        view.queueTask([&] { log.add("inner"); });
    });
    view.makeCurrent();
    view.paintGL();
    EXPECT_THAT(log.take(), ElementsAre("outer", "update", "render"));
    view.makeCurrent();
    view.paintGL();
    EXPECT_THAT(log.take(), ElementsAre("inner", "update", "render"));
}

TEST(QtViewTasksTest, ASenderDoesNotWaitForARunningTask)
{
    ViewProbe view;
    showView(view);
    bool sentWhileRunning = false;
    bool innerRan = false;
    view.queueTask([&] {
        auto sender = std::async(std::launch::async, [&] { view.queueTask([&] { innerRan = true; }); });
        sentWhileRunning = sender.wait_for(std::chrono::seconds(10)) == std::future_status::ready;
    });
    settle();
    EXPECT_TRUE(sentWhileRunning);
    ASSERT_TRUE(waitFor([&] { return innerRan; }));
}

TEST(QtViewTasksTest, ATaskMayUseTheView)
{
    CallLog log;
    ViewProbe view;
    showWithFakeWindow(view, log);
    bool ran = false;
    view.queueTask([&] {
        EXPECT_TRUE(view.getWindow());
        view.loadMaterial("material", "node", 0, 0);
        ran = true;
    });
    repaintView(view);
    EXPECT_TRUE(ran);
}

TEST(QtViewTasksTest, AThrowingTaskIsGoneAndTheRestRunsNext)
{
    CallLog log;
    ViewProbe view;
    showWithFakeWindow(view, log);
    view.queueTask([&] { log.add("one"); });
    view.queueTask([&] {
        log.add("throws");
        view.queueTask([&] { log.add("late"); });
        throw std::runtime_error("task");
    });
    view.queueTask([&] { log.add("two"); });
    view.queueTask([&] { log.add("three"); });
    view.makeCurrent();
    EXPECT_THROW(view.paintGL(), std::runtime_error);
    EXPECT_THAT(log.take(), ElementsAre("one", "throws"));
    view.makeCurrent();
    view.paintGL();
    EXPECT_THAT(log.take(), ElementsAre("two", "three", "late", "update", "render"));
}

TEST(QtViewTasksTest, AThrowingTaskStaysInsideThePaintEventAndTheRestFollows)
{
    CallLog log;
    ViewProbe view;
    showWithFakeWindow(view, log);
    view.queueTask([&] { throw std::runtime_error("task"); });
    view.queueTask([&] { log.add("two"); });
    settle();
    EXPECT_THAT(log.take(), ElementsAre("two", "update", "render"));
    EXPECT_FALSE(view.paintingActive());
}

TEST(QtViewTasksTest, AnEmptyTaskRaisesTheBoostErrorAndIsGone)
{
    CallLog log;
    ViewProbe view;
    showWithFakeWindow(view, log);
    view.queueTask(boost::function<void()>());
    view.makeCurrent();
    try {
        view.paintGL();
        FAIL() << "no exception";
    } catch (const boost::bad_function_call& error) {
        EXPECT_STREQ(error.what(), "call to empty boost::function");
    }
    view.paintGL();
    EXPECT_THAT(log.take(), ElementsAre("update", "render"));
}

TEST(QtViewTasksTest, TasksOfManyThreadsAllRunInTheOrderOfEach)
{
    constexpr int Count = 500;
    ViewProbe view;
    showView(view);
    std::vector<int> ran[3];
    std::vector<std::thread> senders;
    for (auto& numbers : ran)
        senders.emplace_back([&view, &numbers] {
            for (int i = 0; i < Count; ++i)
                view.queueTask([&numbers, i] { numbers.push_back(i); });
        });
    for (auto& sender : senders)
        sender.join();
    ASSERT_TRUE(waitFor([&] { return ran[0].size() + ran[1].size() + ran[2].size() == 3u * Count; }));
    for (const auto& numbers : ran)
        EXPECT_TRUE(std::is_sorted(numbers.begin(), numbers.end()));
}

TEST(QtViewTasksTest, TasksLeftAtDestructionNeverRun)
{
    bool ran = false;
    const auto held = boost::make_shared<int>(0);
    {
        ViewProbe view;
        view.queueTask([&ran, held] { ran = true; });
        EXPECT_EQ(held.use_count(), 2);
    }
    EXPECT_FALSE(ran);
    EXPECT_EQ(held.use_count(), 1);
}

TEST(QtViewTasksTest, AFinishedTaskIsReleasedBeforeTheNextRuns)
{
    ViewProbe view;
    showView(view);
    const auto held = boost::make_shared<int>(0);
    long countInNext = 0;
    view.queueTask([held] {});
    view.queueTask([&] { countInNext = held.use_count(); });
    settle();
    EXPECT_EQ(countInNext, 1);
}

TEST(QtViewTasksTest, EffectsAreLoadedInTheNextFrameInOrder)
{
    LoadingView view;
    showView(view);
    view.loadEffect("toon.fx", "node", 3, 4000000000u);
    view.loadEffect("", "", 0, 0); // an empty name is queued like any other
    EXPECT_THAT(view.loaded, IsEmpty());
    settle();
    EXPECT_THAT(view.loaded, ElementsAre("toon.fx|node|3|4000000000", "||0|0"));
    EXPECT_EQ(view.currentContext, view.context());
}

TEST(QtViewTasksTest, EffectsMayBeAskedForFromAnotherThread)
{
    LoadingView view;
    showView(view);
    std::thread([&] { view.loadEffect("toon.fx", "node", 1, 2); }).join();
    ASSERT_TRUE(waitFor([&] { return !view.loaded.empty(); }));
    EXPECT_THAT(view.loaded, ElementsAre("toon.fx|node|1|2"));
    EXPECT_EQ(view.thread, static_cast<QObject&>(view).thread());
}

TEST(QtViewTasksTest, EffectsAskedForBeforeTheFirstShowWaitForIt)
{
    LoadingView view;
    view.loadEffect("toon.fx", "node", 1, 2);
    settle();
    EXPECT_THAT(view.loaded, IsEmpty());
    showView(view);
    EXPECT_THAT(view.loaded, ElementsAre("toon.fx|node|1|2"));
}

TEST(QtViewTasksTest, LoadEffectAsksForARepaint)
{
    ViewProbe view;
    int asked = 0;
    QObject::connect(&view, &ViewProbe::needsUpdate, [&] { ++asked; });
    view.loadEffect("toon.fx", "node", 1, 2);
    EXPECT_EQ(asked, 1);
}
