#include "engine/core/event/EventBase.h"

#include "tests/support/Gate.h"
#include "tests/support/SynchronousEventManager.h"

#include <boost/smart_ptr/make_shared.hpp>
#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

using halvern::core::event::Event;
using halvern::core::event::EventBase;
using halvern::core::event::EventData;
using halvern::core::event::EventManager;
using halvern::core::event::EventType;
using halvern::test::Gate;
using halvern::test::RecordingEventManager;
using halvern::test::SynchronousEventManager;

using ManagerPointer = boost::shared_ptr<EventManager>;
using Texts = std::vector<std::string>;

Event makeEvent(const std::string& type, const std::string& data = "")
{
    return Event(EventType(type), EventData(data), "id");
}

/// Writes down what is registered and removed, with the name that the manager has in the test.
class LoggingManager : public EventManager
{
public:
    LoggingManager(std::string name, Texts& log) : EventManager(false), name(std::move(name)), log(log) {}

    using EventManager::removeEventListener;

    void registerEventListener(EventListener* listener, EventType type) override
    {
        log.push_back(name + " + " + type.getName());
        EventManager::registerEventListener(listener, type);
    }

    void removeEventListener(EventListener* listener) override
    {
        log.push_back(name + " -");
        EventManager::removeEventListener(listener);
    }

private:
    const std::string name;
    Texts& log;
};

TEST(EventBaseTest, HandleEventCallsTheBoundHandlerInTheCallersThread)
{
    EventBase base({});
    std::thread::id thread;
    std::string data;
    base.registerHandler(EventType("A"), [&](const Event& event) {
        thread = std::this_thread::get_id();
        data = event.getEventData().getData();
    });
    base.handleEvent(makeEvent("A", "a, b"));
    EXPECT_EQ(thread, std::this_thread::get_id());
    EXPECT_EQ(data, "a, b");
}

TEST(EventBaseTest, UnknownTypesAreIgnored)
{
    EventBase base({});
    int handled = 0;
    base.registerHandler(EventType("A"), [&](const Event&) { ++handled; });
    base.registerToListen(EventType("B"));
    for (const char* type : {"B", "C", "a", ""})
        base.handleEvent(makeEvent(type));
    EXPECT_EQ(handled, 0);
}

TEST(EventBaseTest, AnExceptionOfAHandlerEscapes)
{
    EventBase base({});
    base.registerHandler(EventType("A"), [](const Event&) { throw std::runtime_error("meant"); });
    EXPECT_THROW(base.handleEvent(makeEvent("A")), std::runtime_error);
}

TEST(EventBaseTest, ATypeHasOneHandlerTheLast)
{
    EventBase base({});
    std::string called;
    base.registerHandler(EventType("A"), [&](const Event&) { called += "first"; });
    base.registerHandler(EventType("A"), [&](const Event&) { called += "last"; });
    base.registerToListen(EventType("A"));
    base.registerHandler(EventType("A"), {});
    base.handleEvent(makeEvent("A"));
    EXPECT_EQ(called, "last");
}

TEST(EventBaseTest, AHandlerMayReplaceItself)
{
    EventBase base({});
    std::string called;
    base.registerHandler(EventType("A"),
                         [&, kept = std::string("a captured text, not in place")](const Event&) {
                             base.registerHandler(EventType("A"), [&](const Event&) { called += " second"; });
                             called += kept;
                         });
    base.handleEvent(makeEvent("A"));
    base.handleEvent(makeEvent("A"));
    EXPECT_EQ(called, "a captured text, not in place second");
}

TEST(EventBaseTest, NoLockIsHeldWhileAHandlerRuns)
{
    EventBase base({});
    Gate entered;
    Gate released;
    base.registerHandler(EventType("A"), [&](const Event&) {
        entered.open();
        EXPECT_TRUE(released.wait());
    });
    std::thread thread([&] { base.handleEvent(makeEvent("A")); });
    EXPECT_TRUE(entered.wait());
    base.registerHandler(EventType("B"), [](const Event&) {});
    base.handleEvent(makeEvent("B"));
    base.setEventManager(boost::make_shared<EventManager>(false));
    EXPECT_TRUE(base.getEventManager());
    base.triggerEvent("B", "");
    released.open();
    thread.join();
}

TEST(EventBaseTest, WithoutAManagerNothingIsSent)
{
    EventBase base({});
    EXPECT_FALSE(base.getEventManager());
    base.triggerEvent("A", "a");
    base.triggerEvent(makeEvent("A"));
}

TEST(EventBaseTest, SendsThroughItsManager)
{
    const auto manager = boost::make_shared<RecordingEventManager>();
    EventBase base(manager);
    EXPECT_EQ(base.getEventManager(), manager);
    base.triggerEvent("SelectObject", "Node_1, QtScene");
    base.triggerEvent(makeEvent("A", "a"));
    const auto events = manager->getEvents();
    ASSERT_EQ(events.size(), 2U);
    EXPECT_EQ(events[0].getEventType(), EventType("SelectObject"));
    EXPECT_EQ(events[0].getEventData().getData(), "Node_1, QtScene");
    EXPECT_NE(events[0].getUniqueID(), "");
    EXPECT_EQ(events[1].getUniqueID(), "id");
}

TEST(EventBaseTest, RegistersWithItsManagerAtOnce)
{
    Texts log;
    EventBase base(boost::make_shared<LoggingManager>("m", log));
    base.registerHandler(EventType("B"), [](const Event&) {});
    base.registerToListen(EventType("A"));
    EXPECT_EQ(log, (Texts{"m + B", "m + A"}));
}

TEST(EventBaseTest, AHandlerRegisteredBeforeThereIsAManagerIsKept)
{
    EventBase base({});
    int handled = 0;
    base.registerHandler(EventType("A"), [&](const Event&) { ++handled; });
    const auto manager = boost::make_shared<SynchronousEventManager>();
    base.setEventManager(manager);
    manager->triggerEvent("A", "");
    EXPECT_EQ(handled, 1);
}

TEST(EventBaseTest, MovesItsRegistrationsInTheOrderOfRegistration)
{
    Texts log;
    EventBase base(boost::make_shared<LoggingManager>("old", log));
    for (const char* type : {"C", "A", "B", "C"})
        base.registerHandler(EventType(type), [](const Event&) {});
    log.clear();
    base.setEventManager(boost::make_shared<LoggingManager>("new", log));
    EXPECT_EQ(log, (Texts{"old -", "new + C", "new + A", "new + B"}));
}

TEST(EventBaseTest, AnEmptyManagerKeepsTheRegistrationsForTheNext)
{
    Texts log;
    EventBase base(boost::make_shared<LoggingManager>("old", log));
    base.registerToListen(EventType("A"));
    log.clear();
    base.setEventManager({});
    EXPECT_FALSE(base.getEventManager());
    EXPECT_EQ(log, (Texts{"old -"}));
    base.registerToListen(EventType("B"));
    base.setEventManager(boost::make_shared<LoggingManager>("new", log));
    EXPECT_EQ(log, (Texts{"old -", "new + A", "new + B"}));
}

TEST(EventBaseTest, SettingTheSameManagerRegistersAnew)
{
    Texts log;
    const auto manager = boost::make_shared<LoggingManager>("m", log);
    EventBase base(manager);
    base.registerToListen(EventType("A"));
    log.clear();
    base.setEventManager(manager);
    EXPECT_EQ(log, (Texts{"m -", "m + A"}));
}

TEST(EventBaseTest, AlsoLeavesTheOldManagerWhereItWasRegisteredByOthers)
{
    const auto manager = boost::make_shared<EventManager>(false);
    EventBase base(manager);
    manager->registerEventListener(&base, EventType("A"));
    base.setEventManager({});
    EXPECT_FALSE(manager->isRegistered(&base));
}

TEST(EventBaseTest, TheDestructorUnregisters)
{
    const auto manager = boost::make_shared<EventManager>(false);
    auto base = std::make_unique<EventBase>(manager);
    base->registerToListen(EventType("A"));
    EventBase* const address = base.get();
    base.reset();
    EXPECT_FALSE(manager->isRegistered(address));
}

class CountingBase : public EventBase
{
public:
    using EventBase::EventBase;
    ~CountingBase() override { EventBase::setEventManager({}); }

    void handleEvent(Event event) override
    {
        ++received;
        EventBase::handleEvent(event);
    }

    std::atomic<int> received{0};
};

/// Both must work: handlers called on the manager's own thread and in the sender's.
void withEachManager(const std::function<void(const ManagerPointer&)>& check)
{
    for (const ManagerPointer& manager : {boost::make_shared<EventManager>(false),
                                          ManagerPointer(boost::make_shared<SynchronousEventManager>())})
        check(manager);
}

TEST(EventBaseTest, ListenedTypesReachHandleEvent)
{
    withEachManager([](const ManagerPointer& manager) {
        CountingBase base(manager);
        int handled = 0;
        base.registerHandler(EventType("A"), [&](const Event&) { ++handled; });
        base.registerToListen(EventType("B"));
        for (const char* type : {"A", "B", "C"})
            manager->triggerEvent(type, "");
        manager->waitUntilIdle();
        EXPECT_EQ(base.received, 2);
        EXPECT_EQ(handled, 1);
    });
}

TEST(EventBaseTest, TheOldManagerIsHeardNoMore)
{
    withEachManager([](const ManagerPointer& manager) {
        CountingBase base(manager);
        base.registerToListen(EventType("A"));
        base.setEventManager(boost::make_shared<EventManager>(false));
        manager->triggerEvent("A", "");
        manager->waitUntilIdle();
        EXPECT_EQ(base.received, 0);
    });
}

TEST(EventBaseTest, SetEventManagerWaitsForTheRunningHandler)
{
    withEachManager([](const ManagerPointer& manager) {
        Gate entered;
        Gate released;
        std::atomic<bool> left{false};
        EventBase base(manager);
        base.registerHandler(EventType("A"), [&](const Event&) {
            entered.open();
            EXPECT_TRUE(released.wait());
            left = true;
        });
        std::thread sender([&] { manager->triggerEvent("A", ""); });
        ASSERT_TRUE(entered.wait());
        std::thread setter([&] {
            base.setEventManager({});
            EXPECT_TRUE(left);
        });
        while (manager->isRegistered(&base))
            std::this_thread::yield();
        released.open();
        setter.join();
        sender.join();
    });
}

TEST(EventBaseTest, AHandlerMaySetTheManager)
{
    withEachManager([](const ManagerPointer& manager) {
        const auto next = boost::make_shared<EventManager>(false);
        EventBase base(manager);
        std::atomic<int> handled{0};
        base.registerHandler(EventType("A"), [&](const Event&) {
            ++handled;
            base.setEventManager(next);
        });
        manager->triggerEvent("A", "");
        manager->triggerEvent("A", "");
        manager->waitUntilIdle();
        EXPECT_EQ(handled, 1);
        EXPECT_FALSE(manager->isRegistered(&base));
        EXPECT_TRUE(next->isRegistered(&base));
    });
}

TEST(EventBaseTest, AHandlerMayAnswer)
{
    withEachManager([](const ManagerPointer& manager) {
        EventBase engine(manager);
        EventBase widget(manager);
        std::string answer;
        engine.registerHandler(EventType("SelectObject"), [&](const Event& event) {
            engine.triggerEvent("ObjectSelected", event.getEventData().getData());
        });
        widget.registerHandler(EventType("ObjectSelected"),
                               [&](const Event& event) { answer = event.getEventData().getArg(2); });
        widget.triggerEvent("SelectObject", "Node_1, QtScene");
        manager->waitUntilIdle();
        EXPECT_EQ(answer, "QtScene");
    });
}

TEST(EventBaseTest, ObjectsDieUnderFire)
{
    withEachManager([](const ManagerPointer& manager) {
        std::atomic<bool> done{false};
        std::thread sender([&] {
            while (!done) {
                manager->triggerEvent("A", "");
                std::this_thread::yield();
            }
        });
        for (int i = 0; i < 1000; ++i) {
            CountingBase base(manager);
            base.registerHandler(EventType("A"), [&base](const Event&) { EXPECT_GT(base.received, 0); });
        }
        done = true;
        sender.join();
    });
}

/// Lets something happen once while a registration or a removal is under way, as another thread could.
class InterruptedManager : public EventManager
{
public:
    InterruptedManager() : EventManager(false) {}

    using EventManager::removeEventListener;

    void registerEventListener(EventListener* listener, EventType type) override
    {
        interrupt(duringRegistration);
        EventManager::registerEventListener(listener, type);
    }

    void removeEventListener(EventListener* listener) override
    {
        interrupt(duringRemoval);
        EventManager::removeEventListener(listener);
    }

    std::function<void()> duringRegistration;
    std::function<void()> duringRemoval;

private:
    static void interrupt(std::function<void()>& interruption)
    {
        if (const auto once = std::exchange(interruption, nullptr))
            once();
    }
};

TEST(EventBaseTest, AManagerReplacedWhileItIsSetLosesTheRegistrations)
{
    const auto first = boost::make_shared<InterruptedManager>();
    const auto second = boost::make_shared<EventManager>(false);
    EventBase base({});
    base.registerToListen(EventType("A"));
    first->duringRegistration = [&] { base.setEventManager(second); };
    base.setEventManager(first);
    EXPECT_EQ(base.getEventManager(), second);
    EXPECT_FALSE(first->isRegistered(&base));
    EXPECT_TRUE(second->isRegistered(&base));
}

TEST(EventBaseTest, AManagerReplacedWhileAHandlerIsRegisteredLosesTheRegistration)
{
    const auto first = boost::make_shared<InterruptedManager>();
    const auto second = boost::make_shared<EventManager>(false);
    EventBase base(first);
    first->duringRegistration = [&] { base.setEventManager(second); };
    base.registerToListen(EventType("A"));
    EXPECT_FALSE(first->isRegistered(&base));
    EXPECT_TRUE(second->isRegistered(&base));
}

TEST(EventBaseTest, AManagerSetAgainWhileItIsLeftHasTheRegistrations)
{
    const auto first = boost::make_shared<InterruptedManager>();
    const auto second = boost::make_shared<EventManager>(false);
    EventBase base(first);
    base.registerToListen(EventType("A"));
    first->duringRemoval = [&] { base.setEventManager(first); };
    base.setEventManager(second);
    EXPECT_EQ(base.getEventManager(), first);
    EXPECT_TRUE(first->isRegistered(&base));
    EXPECT_FALSE(second->isRegistered(&base));
}

TEST(EventBaseTest, TheLastManagerSetFromSeveralThreadsHasAllRegistrations)
{
    const Texts types = {"A", "B", "C", "D"};
    for (int round = 0; round < 300; ++round) {
        const std::vector<ManagerPointer> managers = {boost::make_shared<EventManager>(false),
                                                      boost::make_shared<EventManager>(false),
                                                      ManagerPointer()};
        CountingBase base{ManagerPointer()};
        const auto change = [&](int first) {
            for (int i = first; i < first + 6; ++i) {
                base.setEventManager(managers[i % 3]);
                base.registerToListen(EventType(types[i % 4]));
            }
        };
        std::thread second(change, 1);
        std::thread third(change, 2);
        change(0);
        second.join();
        third.join();

        const ManagerPointer last = base.getEventManager();
        for (const ManagerPointer& manager : managers) {
            if (!manager)
                continue;
            base.received = 0;
            for (const std::string& type : types)
                manager->triggerEvent(type, "");
            manager->waitUntilIdle();
            ASSERT_EQ(base.received, manager == last ? 4 : 0) << "round " << round;
            ASSERT_EQ(manager->isRegistered(&base), manager == last);
        }
    }
}

} // namespace
