#include "engine/core/event/EventManager.h"

#include "tests/core/FunctionListener.h"
#include "tests/support/Gate.h"
#include "tests/support/Heap.h"
#include "tests/support/RecordingEventManager.h"

#include <boost/smart_ptr/make_shared.hpp>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <functional>
#include <iostream>
#include <memory>
#include <mutex>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

using halvern::core::event::Event;
using halvern::core::event::EventData;
using halvern::core::event::EventManager;
using halvern::core::event::EventType;
using halvern::test::FunctionListener;
using halvern::test::Gate;
using halvern::test::getHeapInUse;
using halvern::test::RecordingEventManager;

using Texts = std::vector<std::string>;

std::string dataOf(const Event& event)
{
    return event.getEventData().getData();
}

/// Appends the data of each event to a list; to be read when the manager is idle.
FunctionListener listing(Texts& texts)
{
    return FunctionListener([&texts](const Event& event) { texts.push_back(dataOf(event)); });
}

void runInThreads(unsigned int count, const std::function<void(unsigned int)>& body)
{
    std::vector<std::thread> threads;
    for (unsigned int i = 0; i < count; ++i)
        threads.emplace_back(body, i);
    for (std::thread& thread : threads)
        thread.join();
}

/// Tells which thread runs threadMain.
class NamedThreadManager : public EventManager
{
public:
    NamedThreadManager() : EventManager(true) {}
    std::thread::id getThread() const { return thread; }

protected:
    void threadMain() override
    {
        thread = std::this_thread::get_id();
        EventManager::threadMain();
    }

private:
    std::atomic<std::thread::id> thread{};
};

/// Occupies the manager's thread from construction until release().
class Blocker
{
public:
    explicit Blocker(EventManager& manager) : manager(manager)
    {
        manager.registerEventListener(&listener, EventType("Block"));
        manager.triggerEvent("Block", "");
        EXPECT_TRUE(entered.wait());
    }

    ~Blocker()
    {
        release();
        manager.removeEventListener(&listener);
    }

    void release() { released.open(); }

private:
    EventManager& manager;
    Gate entered;
    Gate released;
    FunctionListener listener{[this](const Event&) {
        entered.open();
        EXPECT_TRUE(released.wait());
    }};
};

TEST(EventManagerTest, BothFlagsDeliverOnAThreadOfTheManager)
{
    for (const bool threaded : {false, true}) {
        EventManager manager(threaded);
        std::thread::id first;
        std::thread::id second;
        FunctionListener listener([&](const Event& event) {
            (dataOf(event) == "1" ? first : second) = std::this_thread::get_id();
        });
        manager.registerEventListener(&listener, EventType("A"));
        manager.triggerEvent("A", "1");
        manager.triggerEvent("A", "2");
        manager.waitUntilIdle();
        EXPECT_NE(first, std::thread::id());
        EXPECT_NE(first, std::this_thread::get_id());
        EXPECT_EQ(first, second);
    }
}

TEST(EventManagerTest, TheThreadStartsAtTheFirstEventSomebodyListensTo)
{
    NamedThreadManager manager;
    std::thread::id delivering;
    FunctionListener listener([&](const Event&) { delivering = std::this_thread::get_id(); });
    manager.triggerEvent("A", "");
    manager.registerEventListener(&listener, EventType("A"));
    manager.triggerEvent("B", "");
    manager.waitUntilIdle();
    EXPECT_EQ(manager.getThread(), std::thread::id());
    manager.triggerEvent("A", "");
    manager.waitUntilIdle();
    EXPECT_NE(manager.getThread(), std::thread::id());
    EXPECT_EQ(manager.getThread(), delivering);
}

TEST(EventManagerTest, DeliversTheEventAsItCame)
{
    EventManager manager(false);
    Event received;
    FunctionListener first([](const Event&) {});
    FunctionListener listener([&](const Event& event) { received = event; });
    manager.registerEventListener(&first, EventType("SelectObject"));
    manager.registerEventListener(&listener, EventType("SelectObject"));
    manager.triggerEvent(Event(EventType("SelectObject"), EventData("Node_1, QtScene"), "id"));
    manager.waitUntilIdle();
    EXPECT_EQ(received.getEventType(), EventType("SelectObject"));
    EXPECT_EQ(dataOf(received), "Node_1, QtScene");
    EXPECT_EQ(received.getUniqueID(), "id");
}

TEST(EventManagerTest, DeliversInTheOrderOfTriggeringOverAllTypesAndSenders)
{
    EventManager manager(false);
    std::mutex triggering;
    int triggered = 0;
    std::vector<int> received;
    FunctionListener listener([&](const Event& event) { received.push_back(std::stoi(dataOf(event))); });
    const Texts types = {"A", "B", "C"};
    for (const std::string& type : types)
        manager.registerEventListener(&listener, EventType(type));

    runInThreads(3, [&](unsigned int sender) {
        for (int i = 0; i < 2000; ++i) {
            const std::lock_guard<std::mutex> lock(triggering);
            manager.triggerEvent(types[(sender + i) % types.size()], std::to_string(triggered++));
        }
    });
    manager.waitUntilIdle();
    EXPECT_EQ(received.size(), 6000U);
    EXPECT_TRUE(std::is_sorted(received.begin(), received.end()));
}

TEST(EventManagerTest, OneDeliveryRunsAtATime)
{
    EventManager manager(true);
    std::atomic<int> running{0};
    std::atomic<int> deliveries{0};
    std::atomic<bool> overlapped{false};
    const auto handle = [&](const Event&) {
        if (++running != 1)
            overlapped = true;
        ++deliveries;
        --running;
    };
    FunctionListener first(handle);
    FunctionListener second(handle);
    for (const char* type : {"A", "B"}) {
        manager.registerEventListener(&first, EventType(type));
        manager.registerEventListener(&second, EventType(type));
    }
    runInThreads(4, [&](unsigned int sender) {
        for (int i = 0; i < 500; ++i)
            manager.triggerEvent(sender % 2 ? "A" : "B", "");
    });
    manager.waitUntilIdle();
    EXPECT_EQ(deliveries, 4000);
    EXPECT_FALSE(overlapped);
}

TEST(EventManagerTest, EachListenerOfTheTypeHearsTheEventOnceInTheOrderOfRegistration)
{
    EventManager manager(false);
    Texts texts;
    FunctionListener first([&](const Event& event) { texts.push_back("first " + dataOf(event)); });
    FunctionListener second([&](const Event& event) { texts.push_back("second " + dataOf(event)); });
    manager.registerEventListener(&second, EventType("A"));
    manager.registerEventListener(&first, EventType("A"));
    manager.registerEventListener(&first, EventType("B"));
    for (int i = 0; i < 3; ++i)
        manager.registerEventListener(&second, EventType("A"));
    manager.triggerEvent("A", "a");
    manager.triggerEvent("B", "b");
    manager.waitUntilIdle();
    EXPECT_EQ(texts, (Texts{"second a", "first a", "first b"}));
}

TEST(EventManagerTest, ANullListenerIsIgnored)
{
    EventManager manager(false);
    manager.registerEventListener(nullptr, EventType("A"));
    EXPECT_FALSE(manager.isRegistered(nullptr));
    manager.triggerEvent("A", "");
    manager.removeEventListener(nullptr);
    manager.removeEventListener(nullptr, EventType("A"));
    manager.waitUntilIdle();
}

TEST(EventManagerTest, KnowsWhoIsRegistered)
{
    EventManager manager(false);
    FunctionListener listener([](const Event&) {});
    EXPECT_FALSE(manager.isRegistered(&listener));
    manager.registerEventListener(&listener, EventType("A"));
    manager.registerEventListener(&listener, EventType("B"));
    EXPECT_TRUE(manager.isRegistered(&listener));
    manager.removeEventListener(&listener, EventType("A"));
    EXPECT_TRUE(manager.isRegistered(&listener));
    manager.removeEventListener(&listener, EventType("B"));
    EXPECT_FALSE(manager.isRegistered(&listener));
    manager.registerEventListener(&listener, EventType("A"));
    manager.removeEventListener(&listener);
    EXPECT_FALSE(manager.isRegistered(&listener));
}

TEST(EventManagerTest, RemovingATypeKeepsTheOthers)
{
    EventManager manager(false);
    Texts texts;
    FunctionListener listener = listing(texts);
    manager.registerEventListener(&listener, EventType("A"));
    manager.registerEventListener(&listener, EventType("B"));
    manager.removeEventListener(&listener, EventType("A"));
    manager.removeEventListener(&listener, EventType("never registered"));
    manager.triggerEvent("A", "a");
    manager.triggerEvent("B", "b");
    manager.waitUntilIdle();
    EXPECT_EQ(texts, (Texts{"b"}));
}

TEST(EventManagerTest, PrintsALinePerTypeAndListenerInTheOrderOfRegistration)
{
    EventManager manager(false);
    FunctionListener first([](const Event&) {});
    FunctionListener second([](const Event&) {});
    manager.registerEventListener(&first, EventType("B"));
    manager.registerEventListener(&second, EventType("A"));
    manager.registerEventListener(&first, EventType("A"));

    std::ostringstream printed;
    std::streambuf* const console = std::cout.rdbuf(printed.rdbuf());
    manager.print();
    std::cout.rdbuf(console);

    std::ostringstream expected;
    expected << "B: " << &first << "\nA: " << &second << "\nA: " << &first << '\n';
    EXPECT_EQ(printed.str(), expected.str());
}

TEST(EventManagerTest, AnEventNobodyListensToIsDroppedAtOnce)
{
    EventManager manager(false);
    Texts texts;
    FunctionListener listener = listing(texts);
    const std::size_t before = getHeapInUse();
    for (int i = 0; i < 100000; ++i)
        manager.triggerEvent("A", "nobody listens to this text of some length");
    EXPECT_LT(getHeapInUse(), before + 10000);
    manager.registerEventListener(&listener, EventType("A"));
    manager.waitUntilIdle();
    EXPECT_TRUE(texts.empty());
}

TEST(EventManagerTest, AnEventNobodyListensToAnyMoreIsDroppedAtOnce)
{
    EventManager manager(false);
    FunctionListener listener([](const Event&) { ADD_FAILURE(); });
    manager.registerEventListener(&listener, EventType("A"));
    manager.removeEventListener(&listener);
    Blocker blocker(manager);
    manager.triggerEvent("A", "");
    manager.registerEventListener(&listener, EventType("A"));
    blocker.release();
    manager.waitUntilIdle();
}

TEST(EventManagerTest, AListenerRemovedWhileAnEventIsQueuedDoesNotHearIt)
{
    EventManager manager(false);
    Texts texts;
    FunctionListener listener = listing(texts);
    manager.registerEventListener(&listener, EventType("A"));
    Blocker blocker(manager);
    manager.triggerEvent("A", "queued");
    manager.removeEventListener(&listener);
    blocker.release();
    manager.waitUntilIdle();
    EXPECT_TRUE(texts.empty());
}

TEST(EventManagerTest, AListenerRegisteredWhileAnEventIsQueuedHearsIt)
{
    EventManager manager(false);
    Texts texts;
    FunctionListener leaving([](const Event&) { ADD_FAILURE(); });
    FunctionListener listener = listing(texts);
    manager.registerEventListener(&leaving, EventType("A"));
    Blocker blocker(manager);
    manager.triggerEvent("A", "queued");
    manager.removeEventListener(&leaving);
    manager.registerEventListener(&listener, EventType("A"));
    blocker.release();
    manager.waitUntilIdle();
    EXPECT_EQ(texts, (Texts{"queued"}));
}

TEST(EventManagerTest, AListenerRegisteredDuringADeliveryHearsTheNextEvent)
{
    EventManager manager(false);
    Texts texts;
    FunctionListener late = listing(texts);
    FunctionListener listener([&](const Event&) { manager.registerEventListener(&late, EventType("A")); });
    manager.registerEventListener(&listener, EventType("A"));
    manager.triggerEvent("A", "1");
    manager.triggerEvent("A", "2");
    manager.waitUntilIdle();
    EXPECT_EQ(texts, (Texts{"2"}));
}

TEST(EventManagerTest, AListenerThatRegistersAnewInItsHandlerHearsEachEventOnce)
{
    EventManager manager(false);
    Texts texts;
    FunctionListener other = listing(texts);
    std::unique_ptr<FunctionListener> listener;
    listener = std::make_unique<FunctionListener>([&](const Event& event) {
        texts.push_back("moved " + dataOf(event));
        manager.removeEventListener(listener.get());
        manager.registerEventListener(listener.get(), EventType("A"));
    });
    manager.registerEventListener(listener.get(), EventType("A"));
    manager.registerEventListener(&other, EventType("A"));
    manager.triggerEvent("A", "1");
    manager.triggerEvent("A", "2");
    manager.waitUntilIdle();
    EXPECT_EQ(texts, (Texts{"moved 1", "1", "2", "moved 2"}));
}

TEST(EventManagerTest, AHandlerMayRemoveAnyListener)
{
    // Four listeners; the second removes one of them during the first event.
    for (std::size_t removed = 0; removed < 4; ++removed) {
        EventManager manager(false);
        std::string heard;
        std::vector<std::unique_ptr<FunctionListener>> listeners;
        for (std::size_t i = 0; i < 4; ++i) {
            listeners.push_back(std::make_unique<FunctionListener>([&, i](const Event& event) {
                heard += std::to_string(i);
                if (i == 1 && dataOf(event) == "remove")
                    manager.removeEventListener(listeners[removed].get());
            }));
            manager.registerEventListener(listeners[i].get(), EventType("A"));
        }
        manager.triggerEvent("A", "remove");
        manager.waitUntilIdle();
        EXPECT_EQ(heard, (Texts{"0123", "0123", "013", "012"}[removed]));
        heard.clear();
        manager.triggerEvent("A", "");
        manager.waitUntilIdle();
        EXPECT_EQ(heard, (Texts{"123", "023", "013", "012"}[removed]));
    }
}

TEST(EventManagerTest, RemovalWaitsForTheRunningDelivery)
{
    EventManager manager(false);
    Gate entered;
    Gate released;
    std::atomic<bool> left{false};
    FunctionListener listener([&](const Event&) {
        entered.open();
        EXPECT_TRUE(released.wait());
        left = true;
    });
    manager.registerEventListener(&listener, EventType("A"));
    manager.triggerEvent("A", "");
    ASSERT_TRUE(entered.wait());

    // Two at a time, one of which finds the listener removed already; both wait.
    std::atomic<int> returned{0};
    std::atomic<bool> early{false};
    const auto check = [&] {
        ++returned;
        if (!left)
            early = true;
    };
    std::thread all([&] {
        manager.removeEventListener(&listener);
        check();
    });
    std::thread typed([&] {
        manager.removeEventListener(&listener, EventType("A"));
        check();
    });
    while (manager.isRegistered(&listener))
        std::this_thread::yield();
    EXPECT_EQ(returned, 0);
    released.open();
    all.join();
    typed.join();
    EXPECT_FALSE(early);
}

TEST(EventManagerTest, RemovalDoesNotWaitForOthers)
{
    EventManager manager(false);
    FunctionListener listener([](const Event&) {});
    manager.registerEventListener(&listener, EventType("A"));
    manager.registerEventListener(&listener, EventType("B"));
    Blocker blocker(manager);
    manager.removeEventListener(&listener, EventType("A"));
    manager.removeEventListener(&listener);
    EXPECT_FALSE(manager.isRegistered(&listener));
}

TEST(EventManagerTest, RemovalOfATypeDoesNotWaitForAnotherType)
{
    EventManager manager(false);
    Gate entered;
    Gate released;
    FunctionListener listener([&](const Event&) {
        entered.open();
        EXPECT_TRUE(released.wait());
    });
    manager.registerEventListener(&listener, EventType("A"));
    manager.registerEventListener(&listener, EventType("B"));
    manager.triggerEvent("A", "");
    ASSERT_TRUE(entered.wait());
    manager.removeEventListener(&listener, EventType("B"));
    EXPECT_TRUE(manager.isRegistered(&listener));
    released.open();
}

TEST(EventManagerTest, RemovalWaitsForOneDeliveryThoughTheListenerIsBackForTheNext)
{
    EventManager manager(false);
    Gate entered;
    Gate released;
    Gate removed;
    std::unique_ptr<FunctionListener> listener;
    listener = std::make_unique<FunctionListener>([&](const Event& event) {
        if (dataOf(event) == "next") {
            EXPECT_TRUE(removed.wait());
            return;
        }
        entered.open();
        EXPECT_TRUE(released.wait());
        manager.registerEventListener(listener.get(), EventType("A"));
    });
    manager.registerEventListener(listener.get(), EventType("A"));
    {
        Blocker blocker(manager); // so that the two are taken together
        manager.triggerEvent("A", "first");
        manager.triggerEvent("A", "next");
    }
    ASSERT_TRUE(entered.wait());
    std::thread remover([&] {
        manager.removeEventListener(listener.get());
        removed.open();
    });
    while (manager.isRegistered(listener.get()))
        std::this_thread::yield();
    released.open();
    remover.join();
    manager.removeEventListener(listener.get());
}

TEST(EventManagerTest, RemovalInsideItsOwnDeliveryDoesNotWait)
{
    EventManager manager(false);
    Texts texts;
    std::unique_ptr<FunctionListener> listener;
    listener = std::make_unique<FunctionListener>([&](const Event& event) {
        texts.push_back(dataOf(event));
        manager.removeEventListener(listener.get(), event.getEventType());
        manager.removeEventListener(listener.get());
    });
    manager.registerEventListener(listener.get(), EventType("A"));
    manager.triggerEvent("A", "1");
    manager.triggerEvent("A", "2");
    manager.waitUntilIdle();
    EXPECT_EQ(texts, (Texts{"1"}));
    EXPECT_FALSE(manager.isRegistered(listener.get()));
}

TEST(EventManagerTest, AListenerMayDieInItsOwnDelivery)
{
    EventManager manager(false);
    Texts texts;
    FunctionListener other = listing(texts);
    std::unique_ptr<FunctionListener> listener;
    listener = std::make_unique<FunctionListener>([&](const Event&) {
        manager.removeEventListener(listener.get());
        std::unique_ptr<FunctionListener> dying = std::move(listener);
        manager.triggerEvent("B", "gone");
    });
    manager.registerEventListener(listener.get(), EventType("A"));
    manager.registerEventListener(&other, EventType("B"));
    manager.triggerEvent("A", "");
    manager.waitUntilIdle();
    EXPECT_EQ(texts, (Texts{"gone"}));
}

TEST(EventManagerTest, NoLockIsHeldWhileAHandlerRuns)
{
    EventManager manager(false);
    FunctionListener listener([](const Event&) {});
    Blocker blocker(manager);
    // Each would hang until the handler gives up, which fails the test.
    manager.registerEventListener(&listener, EventType("A"));
    manager.triggerEvent("A", "");
    manager.triggerEvent(Event(EventType("A"), EventData(), ""));
    manager.handleEvent(Event(EventType("A"), EventData(), ""));
    manager.removeEventListener(&listener);
    EXPECT_FALSE(manager.isRegistered(&listener));
}

TEST(EventManagerTest, TriggeringNeverWaitsForDelivery)
{
    EventManager manager(false);
    Texts texts;
    FunctionListener listener = listing(texts);
    manager.registerEventListener(&listener, EventType("A"));
    Blocker blocker(manager);
    for (int i = 0; i < 10000; ++i)
        manager.triggerEvent("A", "");
    EXPECT_TRUE(texts.empty());
    blocker.release();
    manager.waitUntilIdle();
    EXPECT_EQ(texts.size(), 10000U);
}

TEST(EventManagerTest, EventsTriggeredInAHandlerComeAfterThoseQueued)
{
    EventManager manager(false);
    Texts texts;
    FunctionListener listener([&](const Event& event) {
        texts.push_back(dataOf(event));
        if (texts.size() <= 2)
            manager.triggerEvent("A", "nested " + dataOf(event));
    });
    manager.registerEventListener(&listener, EventType("A"));
    Blocker blocker(manager);
    manager.triggerEvent("A", "1");
    manager.triggerEvent("A", "2");
    blocker.release();
    manager.waitUntilIdle();
    EXPECT_EQ(texts, (Texts{"1", "2", "nested 1", "nested 2"}));
}

TEST(EventManagerTest, AnExceptionKeepsNobodyFromTheirEvents)
{
    EventManager manager(false);
    Texts texts;
    FunctionListener standard([](const Event&) { throw std::runtime_error("meant"); });
    FunctionListener odd([](const Event&) { throw 1; });
    FunctionListener listener = listing(texts);
    manager.registerEventListener(&standard, EventType("A"));
    manager.registerEventListener(&odd, EventType("A"));
    manager.registerEventListener(&listener, EventType("A"));
    manager.triggerEvent("A", "1");
    manager.triggerEvent("A", "2");
    manager.waitUntilIdle();
    EXPECT_EQ(texts, (Texts{"1", "2"}));
    EXPECT_TRUE(manager.isRegistered(&standard));
}

TEST(EventManagerTest, RemovalWaitsForADeliveryThatThrows)
{
    EventManager manager(false);
    Gate entered;
    FunctionListener listener([&](const Event&) {
        entered.open();
        throw std::runtime_error("meant");
    });
    manager.registerEventListener(&listener, EventType("A"));
    manager.triggerEvent("A", "");
    ASSERT_TRUE(entered.wait());
    manager.removeEventListener(&listener);
    manager.waitUntilIdle();
}

TEST(EventManagerTest, GivesEachEventAFreshUniqueID)
{
    RecordingEventManager manager;
    RecordingEventManager other;
    std::set<std::string> ids;
    for (int i = 0; i < 1000; ++i)
        (i % 2 ? manager : other).triggerEvent("A", "a");
    for (const auto* recorder : {&manager, &other})
        for (const Event& event : recorder->getEvents())
            ids.insert(event.getUniqueID());
    EXPECT_EQ(ids.size(), 1000U);
    EXPECT_EQ(ids.count(""), 0U);
}

TEST(EventManagerTest, TextsAreTriggeredThroughTheVirtualOperation)
{
    RecordingEventManager manager;
    EventManager& plain = manager;
    plain.triggerEvent("A", "a, b");
    plain.handleEvent(Event(EventType("B"), EventData("c"), "id"));
    EXPECT_EQ(manager.getData("A"), (Texts{"a, b"}));
    EXPECT_EQ(manager.getData("B"), (Texts{"c"}));
}

TEST(EventManagerTest, AManagerCanListenToAnother)
{
    EventManager target(false);
    EventManager source(false);
    Texts texts;
    FunctionListener listener = listing(texts);
    target.registerEventListener(&listener, EventType("A"));
    source.registerEventListener(&target, EventType("A"));
    source.triggerEvent("A", "through");
    source.waitUntilIdle();
    target.waitUntilIdle();
    EXPECT_EQ(texts, (Texts{"through"}));
}

TEST(EventManagerTest, WaitUntilIdleReturnsAtOnceOnTheOwnThread)
{
    EventManager manager(false);
    Gate returned;
    FunctionListener listener([&](const Event&) {
        manager.waitUntilIdle();
        returned.open();
    });
    manager.registerEventListener(&listener, EventType("A"));
    manager.triggerEvent("A", "");
    manager.triggerEvent("A", "");
    EXPECT_TRUE(returned.wait());
}

TEST(EventManagerTest, WaitUntilIdleWaitsForTheQueueAndTheRunningDelivery)
{
    EventManager manager(false);
    manager.waitUntilIdle();
    std::atomic<int> handled{0};
    FunctionListener listener([&](const Event& event) {
        if (dataOf(event) == "first")
            manager.triggerEvent("A", "second");
        std::this_thread::yield();
        ++handled;
    });
    manager.registerEventListener(&listener, EventType("A"));
    for (int i = 1; i <= 500; ++i) {
        manager.triggerEvent("A", "first");
        manager.waitUntilIdle();
        ASSERT_EQ(handled, 2 * i);
    }
}

TEST(EventManagerTest, WaitUntilIdleReturnsThoughTheLastEventsFindNoListener)
{
    EventManager manager(false);
    FunctionListener listener([](const Event&) { ADD_FAILURE(); });
    manager.registerEventListener(&listener, EventType("A"));
    for (int i = 0; i < 200; ++i) {
        Blocker blocker(manager);
        manager.registerEventListener(&listener, EventType("A"));
        manager.triggerEvent("A", "");
        manager.removeEventListener(&listener);
        std::thread waiter([&] { manager.waitUntilIdle(); });
        blocker.release();
        waiter.join();
    }
}

TEST(EventManagerTest, TheDestructorDropsWhatIsUndelivered)
{
    constexpr int queued = 100000;
    Gate released;
    int handled = 0;
    FunctionListener listener([&](const Event&) {
        EXPECT_TRUE(released.wait());
        ++handled;
        std::this_thread::yield();
    });
    {
        EventManager manager(false);
        manager.registerEventListener(&listener, EventType("A"));
        for (int i = 0; i < queued; ++i)
            manager.triggerEvent("A", "");
        released.open();
    }
    EXPECT_LT(handled, queued);
}

TEST(EventManagerTest, TheDestructorWaitsForTheRunningHandler)
{
    for (int i = 0; i < 200; ++i) {
        Gate entered;
        std::atomic<bool> left{false};
        FunctionListener listener([&](const Event&) {
            entered.open();
            std::this_thread::yield();
            left = true;
        });
        {
            EventManager manager(false);
            manager.registerEventListener(&listener, EventType("A"));
            manager.triggerEvent("A", "");
            ASSERT_TRUE(entered.wait());
        }
        ASSERT_TRUE(left);
    }
}

TEST(EventManagerTest, TheLastReferenceMayBeDroppedInAHandler)
{
    for (int i = 0; i < 200; ++i) {
        Gate dropped;
        std::atomic<int> handled{0};
        boost::shared_ptr<EventManager> manager =
            boost::make_shared<RecordingEventManager>(RecordingEventManager::Delivery::Threaded);
        Gate ready;
        FunctionListener listener([&](const Event&) {
            ++handled;
            EXPECT_TRUE(ready.wait());
            manager.reset();
            dropped.open();
        });
        FunctionListener second([&](const Event&) { ++handled; });
        manager->registerEventListener(&listener, EventType("A"));
        manager->registerEventListener(&second, EventType("A"));
        manager->triggerEvent("A", "");
        manager->triggerEvent("A", "");
        ready.open();
        ASSERT_TRUE(dropped.wait());
        ASSERT_EQ(handled, 1);
    }
}

TEST(EventManagerTest, ADerivedManagerMayBeDestroyedRightAfterTriggering)
{
    FunctionListener listener([](const Event&) {});
    for (int i = 0; i < 300; ++i) {
        RecordingEventManager manager(RecordingEventManager::Delivery::Threaded);
        manager.registerEventListener(&listener, EventType("A"));
        manager.triggerEvent("A", "");
    }
}

TEST(EventManagerTest, SixThousandListenersComeAndGoUnderFire)
{
    EventManager manager(false);
    std::atomic<bool> done{false};
    std::atomic<int> dead{0};
    std::thread sender([&] {
        while (!done) {
            manager.triggerEvent("A", "fire");
            manager.triggerEvent("B", "fire");
            std::this_thread::yield();
        }
    });

    runInThreads(3, [&](unsigned int thread) {
        for (int i = 0; i < 2000; ++i) {
            auto alive = std::make_unique<std::atomic<bool>>(true);
            auto listener = std::make_unique<FunctionListener>([&dead, alive = alive.get()](const Event&) {
                if (!*alive)
                    ++dead;
            });
            manager.registerEventListener(listener.get(), EventType("A"));
            manager.registerEventListener(listener.get(), EventType("B"));
            if ((i + thread) % 2)
                std::this_thread::yield();
            if (i % 3) {
                manager.removeEventListener(listener.get());
            } else {
                manager.removeEventListener(listener.get(), EventType("A"));
                manager.removeEventListener(listener.get(), EventType("B"));
            }
            *alive = false;
            listener.reset();
        }
    });
    done = true;
    sender.join();
    EXPECT_EQ(dead, 0);
}

TEST(EventManagerTest, AStormOfAMillionEventsLeavesNoMemoryBehind)
{
    constexpr int eventsPerSender = 333334;
    EventManager manager(false);
    std::atomic<int> handled{0};
    FunctionListener listener([&](const Event&) { ++handled; });
    manager.registerEventListener(&listener, EventType("SyncScene"));
    manager.triggerEvent("SyncScene", "");
    manager.waitUntilIdle();

    const std::size_t before = getHeapInUse();
    runInThreads(3, [&](unsigned int) {
        for (int i = 0; i < eventsPerSender; ++i)
            manager.triggerEvent("SyncScene", "");
    });
    manager.waitUntilIdle();
    const std::size_t after = getHeapInUse();
    EXPECT_EQ(handled, 3 * eventsPerSender + 1);
    EXPECT_LT(after, before + 1000000);
}

TEST(EventManagerTest, AQueueThatWasLongLeavesNoMemoryBehind)
{
    EventManager manager(false);
    FunctionListener listener([](const Event&) {});
    manager.registerEventListener(&listener, EventType("A"));
    Blocker blocker(manager);
    const std::size_t before = getHeapInUse();
    for (int i = 0; i < 300000; ++i)
        manager.triggerEvent("A", "");
    EXPECT_GT(getHeapInUse(), before + 1000000);
    blocker.release();
    manager.waitUntilIdle();
    EXPECT_LT(getHeapInUse(), before + 100000);
}

} // namespace
