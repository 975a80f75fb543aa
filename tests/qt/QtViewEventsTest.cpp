#include "engine/scene/Material.h"
#include "engine/scene/Node.h"
#include "engine/scene/SceneManager.h"
#include "tests/qt/ViewProbe.h"
#include "tests/support/Heap.h"
#include "tests/support/SynchronousEventManager.h"

#include <QTest>

#include <boost/lexical_cast.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

using namespace halvern::test;
using halvern::core::event::EventManager;
using halvern::qt::QtView;
using halvern::scene::Material;
using halvern::scene::Node;
using halvern::scene::SceneManager;
using testing::ElementsAre;

namespace {

enum class Kind { Threaded, Synchronous };

boost::shared_ptr<EventManager> makeManager(Kind kind)
{
    if (kind == Kind::Synchronous)
        return boost::make_shared<SynchronousEventManager>();
    return boost::make_shared<EventManager>(true);
}

/// Runs against the manager with a thread of its own and against one that delivers in the sender's.
class QtViewEventsTest : public testing::TestWithParam<Kind>
{
protected:
    QtViewEventsTest()
    {
        view.setEventManager(manager);
        window->sceneManager = scene;
        scene->setRoot(node);
        scene->addMaterial(material);
    }

    /// Sends from a thread that is not the view's.
    void send(const std::string& type, const std::string& data)
    {
        std::thread([&] { manager->triggerEvent(type, data); }).join();
        manager->waitUntilIdle();
    }

    CallLog log;
    const boost::shared_ptr<EventManager> manager = makeManager(GetParam());
    const boost::shared_ptr<SceneManager> scene = boost::make_shared<SceneManager>(nullptr);
    const boost::shared_ptr<Node> node = boost::make_shared<Node>("node", "Node");
    const boost::shared_ptr<Material> material = boost::make_shared<Material>("gold", "effect");
    const boost::shared_ptr<FakeWindow> window = boost::make_shared<FakeWindow>(log);
    WindowlessView view;
};

INSTANTIATE_TEST_SUITE_P(, QtViewEventsTest, testing::Values(Kind::Threaded, Kind::Synchronous),
                         [](const auto& info) {
                             return info.param == Kind::Threaded ? "Threaded" : "Synchronous";
                         });

} // namespace

TEST_P(QtViewEventsTest, SyncSceneAndUpdateViewsRepaint)
{
    showView(view);
    for (const char* type : {"SyncScene", "UpdateViews"}) {
        const int before = view.paints;
        send(type, "");
        settle();
        EXPECT_EQ(view.paints, before + 1) << type;
    }
}

TEST_P(QtViewEventsTest, SyncSceneFromTheThreadOfTheViewRepaints)
{
    showView(view);
    const int before = view.paints;
    manager->triggerEvent("SyncScene", "ignored, arguments");
    manager->waitUntilIdle();
    settle();
    EXPECT_EQ(view.paints, before + 1);
}

TEST_P(QtViewEventsTest, SyncSceneOnTheThreadOfTheViewIsNotPosted)
{
    showView(view);
    const int before = view.paints;
    view.handleSyncScene();
    QCoreApplication::sendPostedEvents(&view, QEvent::UpdateRequest); // what is posted to it waits
    EXPECT_EQ(view.paints, before + 1);
}

TEST_P(QtViewEventsTest, SyncSceneDoesNotEmitNeedsUpdate)
{
    showView(view);
    std::atomic<int> emitted{0};
    QObject::connect(
        &view, &ViewProbe::needsUpdate, &view, [&] { ++emitted; }, Qt::DirectConnection);
    send("SyncScene", "");
    settle();
    EXPECT_EQ(emitted, 0);
}

TEST_P(QtViewEventsTest, OtherTypesDoNotReachTheView)
{
    showView(view);
    const int before = view.paints;
    for (const char* type : {"DropMaterial", "ObjectSelected", "syncscene", "SyncScene ", ""})
        send(type, "");
    settle();
    EXPECT_EQ(view.paints, before);
}

TEST_P(QtViewEventsTest, ARequestAfterARepaintRepaintsAgain)
{
    showView(view);
    for (int i = 0; i < 5; ++i) {
        const int before = view.paints;
        send("SyncScene", "");
        send("UpdateViews", "");
        settle();
        EXPECT_EQ(view.paints, before + 1);
    }
}

TEST_P(QtViewEventsTest, AnOverriddenHandlerIsCalled)
{
    struct Overriding : ViewProbe
    {
        void handleSyncScene() override { ++synced; }
        void handleObjectPicked(HCE::Event event) override { picked = event.getEventData().getArg(1); }
        void handleDisplayMessageAt(HCE::Event event) override { shown = event.getEventData().getArg(1); }
        std::atomic<int> synced{0};
        std::string picked;
        std::string shown;
    };
    Overriding overriding;
    overriding.setEventManager(manager);
    send("SyncScene", "");
    send("UpdateViews", "");
    send("ObjectPicked", "a, 1");
    send("DisplayMessageAt", "b, 1, 2");
    EXPECT_EQ(overriding.synced, 2);
    EXPECT_EQ(overriding.picked, "a");
    EXPECT_EQ(overriding.shown, "b");
    overriding.setEventManager(nullptr); // before its own part is gone
}

TEST_P(QtViewEventsTest, APickWithoutAPendingDropChangesNothing)
{
    view.setWindow(window);
    send("ObjectPicked", "node, 0, 0, 5, 6, DropMaterial");
    EXPECT_FALSE(node->getMaterial(0, 0));
}

TEST_P(QtViewEventsTest, EventsArriveNoMoreAfterTheManagerChanged)
{
    showView(view);
    const int before = view.paints;
    view.setEventManager(nullptr);
    send("SyncScene", "");
    settle();
    EXPECT_EQ(view.paints, before);
}

TEST_P(QtViewEventsTest, LoadMaterialSetsItOnTheNode)
{
    view.setWindow(window);
    view.loadMaterial("gold", "node", 2, 3);
    EXPECT_EQ(node->getMaterial(2, 3), material);
}

TEST_P(QtViewEventsTest, LoadMaterialRunsInTheThreadOfItsCaller)
{
    view.setWindow(window);
    std::thread([&] {
        view.loadMaterial("gold", "node", 0, 1);
        EXPECT_EQ(node->getMaterial(0, 1), material);
    }).join();
}

TEST_P(QtViewEventsTest, LoadMaterialIgnoresWhatItDoesNotKnow)
{
    view.loadMaterial("gold", "node", 0, 0); // no window
    view.setWindow(window);
    view.loadMaterial("silver", "node", 0, 0);
    view.loadMaterial("gold", "nobody", 0, 0);
    view.loadMaterial("", "", 0, 0);
    window->sceneManager.reset();
    view.loadMaterial("gold", "node", 0, 0);
    EXPECT_FALSE(node->getMaterial(0, 0));
}

TEST_P(QtViewEventsTest, LoadMaterialNeitherQueuesNorRepaints)
{
    showView(view);
    view.setWindow(window);
    settle();
    const int before = view.paints;
    view.loadMaterial("gold", "node", 0, 0);
    settle();
    EXPECT_EQ(view.paints, before);
}

TEST_P(QtViewEventsTest, AStormOfRequestsIsOneRepaintAndNoMemory)
{
    constexpr int Threads = 3;
    constexpr int Count = 1000000;
    showView(view);
    const int before = view.paints;
    const std::size_t heap = getHeapInUse();
    const auto storm = [&] {
        HCE::EventListener& listener = view;
        const HCE::Event event = makeEvent("SyncScene");
        for (int i = 0; i < Count / Threads + 1; ++i) {
            if (GetParam() == Kind::Synchronous)
                listener.handleEvent(event); // as a manager does that delivers in the sender's thread
            else
                manager->triggerEvent(event);
            if (i % 1000 == 0)
                manager->waitUntilIdle(); // the memory of the manager's own queue is not in question
        }
    };
    std::vector<std::thread> threads;
    for (int i = 0; i < Threads; ++i)
        threads.emplace_back(storm);
    for (auto& thread : threads)
        thread.join(); // the event loop of the view stands still
    manager->waitUntilIdle();
    EXPECT_LT(getHeapInUse(), heap + (1 << 20));
    settle();
    EXPECT_EQ(view.paints, before + 1);
}

TEST_P(QtViewEventsTest, AViewDiesWhileEventsAreInFlight)
{
    std::atomic<bool> done{false};
    std::vector<std::thread> threads;
    for (int i = 0; i < 3; ++i)
        threads.emplace_back([&] {
            while (!done)
                for (const char* type : {"SyncScene", "UpdateViews", "DisplayMessageAt", "ObjectPicked"}) {
                    manager->triggerEvent(makeEvent(type, "node, 1, 2, 3, 4, DropMaterial"));
                    std::this_thread::yield();
                }
        });
    for (int i = 0; i < 30; ++i) {
        auto victim = std::make_unique<QtView>(); // a derived class has to unregister by itself
        victim->setEventManager(manager);
        victim->setWindow(window);
        QCoreApplication::processEvents();
        victim.reset();
        EXPECT_FALSE(window->eventManager);
    }
    {
        QtView shown;
        shown.setEventManager(manager);
        showView(shown);
    }
    done = true;
    for (auto& thread : threads)
        thread.join();
    manager->waitUntilIdle();
}
