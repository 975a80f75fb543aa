#include "engine/scene/ISceneController.h"

#include "tests/scene/SceneHelpers.h"
#include "tests/support/Gate.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>

namespace {

using namespace halvern::scene;
using namespace halvern::test;

/// Calls a function in update() and counts.
class Controller : public ISceneController
{
public:
    explicit Controller(std::function<bool()> newFunction = [] { return false; }) :
        function(std::move(newFunction))
    {}

    void setSceneManager(boost::shared_ptr<SceneManager> newManager) override
    {
        manager = newManager;
        handedOverOn = std::this_thread::get_id();
        updatesBefore = updates;
        ++handOvers;
    }

    bool update() override
    {
        ++updates;
        return function();
    }

    std::function<bool()> function;
    boost::weak_ptr<SceneManager> manager;
    std::thread::id handedOverOn;
    int updatesBefore = -1;
    std::atomic<int> handOvers{0};
    std::atomic<int> updates{0};
};

boost::shared_ptr<Controller> makeController(std::function<bool()> function = [] { return false; })
{
    return boost::make_shared<Controller>(std::move(function));
}

struct SceneControllerTest : testing::Test
{
    boost::shared_ptr<SceneManager> manager = makeScene(makeNode("root"));
};

TEST_F(SceneControllerTest, AddingHandsTheManagerOverOnTheCallersThreadBeforeAnyUpdate)
{
    const auto controller = makeController();
    manager->addSceneController(controller);
    EXPECT_EQ(controller->manager.lock(), manager);
    EXPECT_EQ(controller->handedOverOn, std::this_thread::get_id());
    EXPECT_EQ(controller->updatesBefore, 0);
    EXPECT_EQ(controller->updates, 0);
}

TEST_F(SceneControllerTest, AnEmptyControllerIsIgnored)
{
    manager->addSceneController({});
    manager->removeSceneController({});
    EXPECT_FALSE(manager->update());
}

TEST_F(SceneControllerTest, ASecondAddHandsOverAgainAndEntersOnce)
{
    const auto controller = makeController();
    manager->addSceneController(controller);
    manager->addSceneController(controller);
    EXPECT_EQ(controller->handOvers, 2);
    manager->update();
    EXPECT_EQ(controller->updates, 1);
    manager->removeSceneController(controller);
    manager->update();
    EXPECT_EQ(controller->updates, 1);
}

TEST_F(SceneControllerTest, ACycleCallsEachInTheOrderOfAddingAndTellsIfAnyChanged)
{
    std::string order;
    manager->addSceneController(makeController([&] { return (order += 'a', true); }));
    const auto second = makeController([&] { return (order += 'b', false); });
    manager->addSceneController(second);
    EXPECT_TRUE(manager->update());
    EXPECT_EQ(order, "ab");
    manager->addSceneController(makeController([&] { return (order += 'c', false); }));
    EXPECT_TRUE(manager->update());
    EXPECT_EQ(order, "ababc");
}

TEST_F(SceneControllerTest, RemovingNeverCallsSetSceneManager)
{
    const auto controller = makeController();
    manager->addSceneController(controller);
    manager->removeSceneController(controller);
    manager->removeSceneController(controller);
    EXPECT_EQ(controller->handOvers, 1);
    EXPECT_TRUE(controller->manager.lock());
}

TEST_F(SceneControllerTest, ARemovedControllerIsReleased)
{
    auto controller = makeController();
    const boost::weak_ptr<Controller> weak = controller;
    manager->addSceneController(controller);
    manager->removeSceneController(controller);
    controller.reset();
    EXPECT_TRUE(weak.expired());
}

TEST_F(SceneControllerTest, RemovingWaitsForARunningUpdate)
{
    Gate started;
    Gate mayEnd;
    std::atomic<bool> ended{false};
    const auto controller = makeController([&] {
        started.open();
        EXPECT_TRUE(mayEnd.wait());
        ended = true;
        return false;
    });
    manager->addSceneController(controller);
    std::thread cycle([&] { manager->update(); });
    ASSERT_TRUE(started.wait());

    std::atomic<bool> removed{false};
    std::thread remover([&] {
        manager->removeSceneController(controller);
        removed = true;
        EXPECT_TRUE(ended);
    });
    // Others are not held up by the one that runs.
    manager->addSceneController(makeController());
    EXPECT_FALSE(removed);
    mayEnd.open();
    remover.join();
    cycle.join();
}

TEST_F(SceneControllerTest, RemovingItselfInsideItsUpdateDoesNotWait)
{
    boost::shared_ptr<Controller> controller;
    controller = makeController([&] {
        manager->removeSceneController(controller);
        return true;
    });
    manager->addSceneController(controller);
    EXPECT_TRUE(manager->update());
    EXPECT_FALSE(manager->update());
    EXPECT_EQ(controller->updates, 1);
    controller->function = nullptr;
}

TEST_F(SceneControllerTest, OneThatIsRemovedInTheMiddleOfACycleIsNotCalledAnyMore)
{
    const auto second = makeController();
    manager->addSceneController(makeController([&] {
        manager->removeSceneController(second);
        return false;
    }));
    manager->addSceneController(second);
    manager->update();
    EXPECT_EQ(second->updates, 0);
}

TEST_F(SceneControllerTest, AControllerMayUseTheWholeManager)
{
    manager->addSceneController(makeController([&] {
        manager->getNodeArray();
        manager->getRoot()->addChildNode(makeNode(manager->generateID()));
        manager->addSceneController(makeController());
        manager->update(); // leaves out the one that runs
        manager->stop();
        return false;
    }));
    manager->update();
    EXPECT_EQ(manager->getRoot()->getChildCount(), 1u);
}

TEST_F(SceneControllerTest, AControllerMayUseTheManagerWhenItIsHandedOver)
{
    struct Eager : ISceneController
    {
        void setSceneManager(boost::shared_ptr<SceneManager> newManager) override
        {
            newManager->addSceneController(makeController([this] { return (found = true); }));
            newManager->update();
            newManager->getRoot()->addChildNode(makeNode(newManager->generateID()));
        }
        bool update() override { return (updated = true); }
        bool found = false;
        bool updated = false;
    };
    const auto eager = boost::make_shared<Eager>();
    manager->addSceneController(eager);
    EXPECT_TRUE(eager->found);
    EXPECT_FALSE(eager->updated) << "before it is entered";
    EXPECT_EQ(manager->getRoot()->getChildCount(), 1u);
}

TEST_F(SceneControllerTest, TwoCyclesAtOnceNeverRunAControllerTwiceAtOnce)
{
    std::atomic<int> inside{0};
    const auto controller = makeController([&] {
        EXPECT_EQ(++inside, 1);
        --inside;
        return false;
    });
    manager->addSceneController(controller);
    runInThreads(3, [&](unsigned) {
        for (int i = 0; i < 1000; ++i)
            manager->update();
    });
    EXPECT_GT(controller->updates, 0);
}

TEST_F(SceneControllerTest, AnExceptionStopsNobodyElse)
{
    const auto second = makeController([] { return true; });
    manager->addSceneController(makeController([]() -> bool { throw std::runtime_error("on purpose"); }));
    manager->addSceneController(second);
    EXPECT_TRUE(manager->update());
    EXPECT_EQ(second->updates, 1);
}

TEST_F(SceneControllerTest, TheLastReferenceMayGoInsideAnUpdate)
{
    const boost::weak_ptr<SceneManager> weak = manager;
    manager->addSceneController(makeController([&] {
        manager.reset();
        return true;
    }));
    SceneManager* const raw = manager.get();
    EXPECT_TRUE(raw->update());
    EXPECT_TRUE(weak.expired());
}

TEST_F(SceneControllerTest, NoUpdateStartsAfterRemovingUnderFire)
{
    manager->start();
    for (int i = 0; i < 300; ++i) {
        std::atomic<bool> isRemoved{false};
        const auto controller = makeController([&] {
            EXPECT_FALSE(isRemoved);
            return false;
        });
        manager->addSceneController(controller);
        manager->update();
        manager->removeSceneController(controller);
        isRemoved = true;
    }
    manager->stop();
}

} // namespace
