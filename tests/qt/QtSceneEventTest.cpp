#include "tests/qt/ScenePanel.h"
#include "tests/support/Gate.h"
#include "tests/support/SynchronousEventManager.h"

#include <QSignalSpy>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <thread>

using halvern::qt::QtScene;
using namespace halvern::test;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

HCE::Event makeEvent(const std::string& type, const std::string& data = "")
{
    return {HCE::EventType(type), HCE::EventData(data), "1"};
}

/// Notes who registers and leaves, and whether a leaving panel is still whole.
class RegistrationLog : public RecordingEventManager
{
public:
    explicit RegistrationLog(QStringList& log, QString name = "") : log(log), name(std::move(name)) {}

    void registerEventListener(HCE::EventListener* /*listener*/, HCE::EventType type) override
    {
        log += name + "+" + QString::fromStdString(type.getName());
    }
    void removeEventListener(HCE::EventListener* listener) override
    {
        log += name + (dynamic_cast<QtScene*>(listener) ? "-panel" : "-remains");
    }
    using EventManager::removeEventListener;

private:
    QStringList& log;
    const QString name;
};

/// Answers "SelectObject" as an engine does.
class Engine : public HCE::EventListener
{
public:
    explicit Engine(HCE::EventManager& events) : events(events)
    {
        events.registerEventListener(this, HCE::EventType("SelectObject"));
    }
    ~Engine() override { events.removeEventListener(this); }
    void handleEvent(HCE::Event event) override
    {
        events.triggerEvent("ObjectSelected", event.getEventData().getData());
    }

private:
    HCE::EventManager& events;
};

/// Sends each type in turn from a thread of its own until it is destroyed, at a pace that the GUI thread
/// can follow.
class Sender
{
public:
    explicit Sender(boost::shared_ptr<HCE::EventManager> events) :
        thread([this, events] {
            while (!stop) {
                events->triggerEvent("ObjectSelected", "a, other");
                events->triggerEvent("SceneTopologyUpdate", "");
                events->triggerEvent("SceneAttached", "");
                ++rounds;
                std::this_thread::sleep_for(std::chrono::microseconds(100));
            }
        })
    {}
    ~Sender()
    {
        stop = true;
        thread.join();
    }

    std::atomic<int> rounds{0};

private:
    std::atomic<bool> stop{false};
    std::thread thread;
};

template <class Condition>
[[nodiscard]] bool waitFor(Condition condition)
{
    return QTest::qWaitFor(condition, 10000);
}

/// Runs the work in another thread to its end, without running the event loop of this one.
template <class Work>
void runElsewhere(Work work)
{
    std::thread(work).join();
}

/// The manager that an engine brings, and a host's own that delivers in the sender's thread.
enum class Kind { Threaded, Synchronous };

class QtSceneEventTest : public testing::TestWithParam<Kind>
{
protected:
    QtSceneEventTest()
    {
        if (GetParam() == Kind::Threaded)
            events = boost::make_shared<HCE::EventManager>(true);
        else
            events = boost::make_shared<SynchronousEventManager>();
        panel.setEventManager(events);
        panel.setSceneManager(makeScene(root));
    }

    void sendElsewhere(const char* type, const char* data = "")
    {
        runElsewhere([&] { events->triggerEvent(type, data); });
        events->waitUntilIdle();
    }

    boost::shared_ptr<HCE::EventManager> events;
    NodePtr root = makeNode("root", {makeNode("a"), makeNode("b")});
    ScenePanel panel;
};

INSTANTIATE_TEST_SUITE_P(Managers, QtSceneEventTest, testing::Values(Kind::Threaded, Kind::Synchronous),
                         [](const auto& info) {
                             return info.param == Kind::Threaded ? "Threaded" : "Synchronous";
                         });

} // namespace

// Registration

TEST(QtSceneEventTest, RegistersForThreeTypesInTheirOrder)
{
    QStringList log;
    ScenePanel panel;
    panel.setEventManager(boost::make_shared<RegistrationLog>(log));
    EXPECT_EQ(log, QStringList({"+ObjectSelected", "+SceneAttached", "+SceneTopologyUpdate"}));
}

TEST(QtSceneEventTest, LeavesTheOldManagerBeforeItRegistersWithTheNew)
{
    QStringList log;
    ScenePanel panel;
    panel.setEventManager(boost::make_shared<RegistrationLog>(log, "old"));
    log.clear();
    panel.setEventManager(boost::make_shared<RegistrationLog>(log, "new"));
    EXPECT_EQ(log, QStringList(
                       {"old-panel", "new+ObjectSelected", "new+SceneAttached", "new+SceneTopologyUpdate"}));
}

TEST(QtSceneEventTest, EmptyManagerIsStoredAndOnlyLeavesTheOld)
{
    QStringList log;
    auto events = boost::make_shared<RegistrationLog>(log);
    const boost::weak_ptr<HCE::EventManager> stored = events;
    ScenePanel panel;
    panel.setEventManager(events);
    events.reset();
    log.clear();
    panel.setEventManager(nullptr);
    EXPECT_EQ(log, QStringList("-panel"));
    EXPECT_TRUE(stored.expired());
}

TEST(QtSceneEventTest, GivenTheSameManagerAgainItStaysRegistered)
{
    const auto events = boost::make_shared<HCE::EventManager>(true);
    ScenePanel panel;
    panel.setEventManager(events);
    panel.setEventManager(events);
    EXPECT_TRUE(events->isRegistered(&panel));
}

TEST(QtSceneEventTest, DestructorLeavesTheManagerWhileThePanelIsWhole)
{
    QStringList log;
    const auto events = boost::make_shared<RegistrationLog>(log);
    auto panel = std::make_unique<QtScene>();
    panel->setEventManager(events);
    log.clear();
    panel.reset();
    EXPECT_EQ(log, QStringList("-panel"));
}

// What each event makes the panel emit

TEST(QtSceneEventTest, ObjectSelectedEmitsSceneSelectionWithTheID)
{
    ScenePanel panel;
    QSignalSpy selected(&panel, SIGNAL(sceneSelection(QString)));
    panel.handleEvent(makeEvent("ObjectSelected", "t\xC3\xBCr, Window"));
    ASSERT_EQ(selected.count(), 1);
    EXPECT_EQ(selected[0][0].toString(), QStringLiteral("t\u00FCr"));
}

TEST(QtSceneEventTest, ObjectSelectedOfItsOwnEmitsNothingWithAnEmptyIDEither)
{
    ScenePanel panel;
    QSignalSpy selected(&panel, SIGNAL(sceneSelection(QString)));
    panel.handleEvent(makeEvent("ObjectSelected", "a, QtScene"));
    panel.handleEvent(makeEvent("ObjectSelected", ", QtScene"));
    EXPECT_EQ(selected.count(), 0);
}

TEST(QtSceneEventTest, OnlyTheExactOriginIsItsOwn)
{
    ScenePanel panel;
    QSignalSpy selected(&panel, SIGNAL(sceneSelection(QString)));
    for (const char* data :
         {"a, qtscene", "a, QtScene ", "a,  QtScene", "a, QtScenePanel", "a", "a, other, QtScene"})
        panel.handleEvent(makeEvent("ObjectSelected", data));
    EXPECT_EQ(selected.count(), 6);
}

TEST(QtSceneEventTest, ObjectSelectedWithAnEmptyIDEmitsAnEmptyText)
{
    ScenePanel panel;
    QSignalSpy selected(&panel, SIGNAL(sceneSelection(QString)));
    panel.handleEvent(makeEvent("ObjectSelected", ""));
    ASSERT_EQ(selected.count(), 1);
    EXPECT_EQ(selected[0][0].toString(), "");
}

TEST(QtSceneEventTest, TopologyAndAttachmentEachEmitSceneUpdated)
{
    ScenePanel panel;
    QSignalSpy updated(&panel, SIGNAL(sceneUpdated()));
    panel.handleEvent(makeEvent("SceneTopologyUpdate"));
    EXPECT_EQ(updated.count(), 1);
    panel.handleEvent(makeEvent("SceneAttached"));
    EXPECT_EQ(updated.count(), 2);
}

TEST(QtSceneEventTest, OtherEventsAreIgnored)
{
    ScenePanel panel;
    QSignalSpy selected(&panel, SIGNAL(sceneSelection(QString)));
    QSignalSpy updated(&panel, SIGNAL(sceneUpdated()));
    for (const char* type :
         {"", "SceneUpdate", "objectselected", "SelectObject", "NodeTransformationUpdate", "SyncScene"})
        panel.handleEvent(makeEvent(type, "a, b"));
    EXPECT_EQ(selected.count() + updated.count(), 0);
}

TEST(QtSceneEventTest, TriggerEventIsNeverEmitted)
{
    const auto events = boost::make_shared<SynchronousEventManager>();
    ScenePanel panel;
    QSignalSpy triggered(&panel, SIGNAL(triggerEvent(HCE::Event)));
    ASSERT_TRUE(triggered.isValid());
    panel.setEventManager(events);
    panel.setSceneManager(makeScene(makeNode("root")));
    panel.select({"root"});
    panel.action("Cast Shadow").trigger();
    for (const char* type : {"ObjectSelected", "SceneTopologyUpdate", "SceneAttached", "Other"})
        events->triggerEvent(type, "root, Window");
    EXPECT_EQ(triggered.count(), 0);
    emit panel.triggerEvent(makeEvent("Mine"));
    EXPECT_EQ(triggered.count(), 1);
}

// Through a manager, sent by another thread

TEST_P(QtSceneEventTest, SelectionMadeElsewhereIsMirroredByTheGuiThread)
{
    sendElsewhere("ObjectSelected", "b, Window");
    EXPECT_TRUE(panel.selection().isEmpty()) << "the event's thread must not touch the tree";
    EXPECT_TRUE(waitFor([&] { return panel.selection() == QStringList("b"); }));
}

TEST_P(QtSceneEventTest, EmptySelectionMadeElsewhereClearsTheTree)
{
    panel.select({"a", "b"});
    sendElsewhere("ObjectSelected", ", Window");
    EXPECT_TRUE(waitFor([&] { return panel.selection().isEmpty(); }));
}

TEST_P(QtSceneEventTest, TopologyUpdateRebuildsTheTreeOnTheGuiThreadAndLosesTheSelection)
{
    panel.select({"a"});
    root->addChildNode(makeNode("c"));
    sendElsewhere("SceneTopologyUpdate");
    EXPECT_EQ(panel.root().childCount(), 2) << "the event's thread must not touch the tree";
    EXPECT_TRUE(waitFor([&] { return panel.root().childCount() == 3; }));
    EXPECT_TRUE(panel.selection().isEmpty());
}

TEST_P(QtSceneEventTest, AttachmentRebuildsTheTree)
{
    root->addChildNode(makeNode("c"));
    sendElsewhere("SceneAttached");
    EXPECT_TRUE(waitFor([&] { return panel.root().childCount() == 3; }));
}

TEST_P(QtSceneEventTest, EchoOfItsOwnSelectionChangesNothing)
{
    const Engine engine(*events);
    QSignalSpy selected(&panel, SIGNAL(sceneSelection(QString)));
    panel.select({"a", "b"});
    events->waitUntilIdle();
    QCoreApplication::processEvents();
    EXPECT_EQ(selected.count(), 0);
    EXPECT_EQ(panel.selection(), QStringList({"a", "b"}));
}

TEST_P(QtSceneEventTest, EachTopologyEventEmitsButTheQueuedOnesShareTheirRebuild)
{
    std::atomic<int> updated{0};
    QObject::connect(
        &panel, &QtScene::sceneUpdated, &panel, [&] { ++updated; }, Qt::DirectConnection);
    QSignalSpy rebuilt(panel.tree().model(), SIGNAL(modelReset()));
    for (int i = 0; i < 50; ++i) {
        sendElsewhere("SceneTopologyUpdate");
        sendElsewhere("SceneAttached");
    }
    EXPECT_EQ(updated, 100);
    root->addChildNode(makeNode("last"));
    sendElsewhere("SceneTopologyUpdate");
    EXPECT_TRUE(waitFor([&] { return panel.findItem("last", 1); }));
    QCoreApplication::processEvents();
    EXPECT_EQ(rebuilt.count(), 1);
}

TEST_P(QtSceneEventTest, EventDuringARebuildGetsARebuildOfItsOwn)
{
    bool grown = false;
    QObject::connect(&panel.tree(), &QTreeWidget::itemExpanded, [&] {
        if (std::exchange(grown, true))
            return;
        root->addChildNode(makeNode("late"));
        sendElsewhere("SceneTopologyUpdate");
    });
    sendElsewhere("SceneTopologyUpdate");
    EXPECT_TRUE(waitFor([&] { return panel.findItem("late", 1); }));
}

TEST_P(QtSceneEventTest, RebuildsThatNoEventAskedForAreDoneAfterAStormToo)
{
    for (int i = 0; i < 10; ++i)
        sendElsewhere("SceneTopologyUpdate");
    QCoreApplication::processEvents();
    QSignalSpy rebuilt(panel.tree().model(), SIGNAL(modelReset()));
    panel.reloadTree();
    emit panel.sceneUpdated();
    EXPECT_EQ(rebuilt.count(), 2);
}

TEST_P(QtSceneEventTest, EventsWhoseSignalsWereBlockedSwallowNoLaterOne)
{
    panel.blockSignals(true);
    for (int i = 0; i < 3; ++i)
        sendElsewhere("SceneTopologyUpdate");
    panel.blockSignals(false);
    QSignalSpy rebuilt(panel.tree().model(), SIGNAL(modelReset()));
    for (int i = 1; i <= 3; ++i) {
        sendElsewhere("SceneTopologyUpdate");
        EXPECT_TRUE(waitFor([&] { return rebuilt.count() == i; }));
    }
}

TEST_P(QtSceneEventTest, WhatWasSentToAPanelThatIsGoneIsDropped)
{
    auto gone = std::make_unique<ScenePanel>();
    gone->setEventManager(events);
    gone->setSceneManager(makeScene(makeNode("root")));
    sendElsewhere("SceneTopologyUpdate");
    sendElsewhere("ObjectSelected", "root, Window");
    gone.reset();
    QCoreApplication::processEvents();
    sendElsewhere("SceneTopologyUpdate");
    EXPECT_TRUE(events->isRegistered(&panel));
}

TEST_P(QtSceneEventTest, PanelsMayBeDestroyedWhileThreeThreadsSendTheirEvents)
{
    const std::unique_ptr<Sender> senders[]{
        std::make_unique<Sender>(events), std::make_unique<Sender>(events), std::make_unique<Sender>(events)};
    for (int i = 0; i < 100; ++i) {
        ScenePanel fleeting;
        fleeting.setEventManager(events);
        fleeting.setSceneManager(makeScene(root));
        const int before = senders[i % 3]->rounds;
        while (senders[i % 3]->rounds == before)
            QCoreApplication::processEvents();
    }
}

TEST_P(QtSceneEventTest, ManagerMayBeChangedWhileThreeThreadsSendEvents)
{
    const std::unique_ptr<Sender> senders[]{
        std::make_unique<Sender>(events), std::make_unique<Sender>(events), std::make_unique<Sender>(events)};
    const auto other = boost::make_shared<HCE::EventManager>(true);
    for (int i = 0; i < 100; ++i) {
        panel.setEventManager(i % 2 ? events : other);
        EXPECT_EQ(events->isRegistered(&panel), i % 2 == 1);
        QCoreApplication::processEvents();
    }
}
