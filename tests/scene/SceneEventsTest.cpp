#include "engine/scene/Light.h"
#include "engine/scene/Material.h"
#include "engine/scene/SceneManager.h"
#include "tests/scene/SceneHelpers.h"
#include "tests/support/SynchronousEventManager.h"

#include <gtest/gtest.h>

#include <atomic>

namespace {

using namespace halvern::scene;
using namespace halvern::test;
using Texts = std::vector<std::string>;

/// A scene "root" > "child" that was updated once, with a manager that records.
struct SceneEventsTest : testing::Test
{
    SceneEventsTest()
    {
        manager->update();
        events->clear();
    }

    Texts takeTypes()
    {
        Texts types;
        for (const auto& event : events->getEvents())
            types.push_back(event.getEventType().getName());
        events->clear();
        return types;
    }

    const boost::shared_ptr<SynchronousEventManager> events = boost::make_shared<SynchronousEventManager>();
    const boost::shared_ptr<Node> child = makeNode("child");
    const boost::shared_ptr<Node> root = makeNode("root", {child});
    const boost::shared_ptr<SceneManager> manager = makeScene(root, events);
};

TEST_F(SceneEventsTest, ACycleWithoutChangesSendsNothing)
{
    manager->update();
    EXPECT_TRUE(takeTypes().empty());
}

TEST_F(SceneEventsTest, ATransformedNodeIsAnnouncedOncePerCycle)
{
    for (int i = 0; i < 10; ++i) {
        child->setTranslation(Eigen::Translation3f(1, 0, 0));
        child->setRotation(Eigen::Affine3f::Identity());
        child->setScale({1, 1, 1});
    }
    root->setScale({1, 1, 1});
    manager->update();
    EXPECT_EQ(events->getData("NodeTransformationUpdate"), (Texts{"child", "root"}));
    EXPECT_EQ(takeTypes(), (Texts{"NodeTransformationUpdate", "NodeTransformationUpdate", "SyncScene"}));
    child->setScale({1, 1, 1});
    manager->update();
    EXPECT_EQ(events->getData("NodeTransformationUpdate"), (Texts{"child"}));
}

TEST_F(SceneEventsTest, ABatchOfTopologyChangesIsAnnouncedOnce)
{
    for (int i = 0; i < 10; ++i)
        child->addChildNode(makeNode(std::to_string(i)));
    root->removeChildNode(child);
    manager->setRoot(makeNode("next"));
    manager->update();
    EXPECT_EQ(events->getData("SceneTopologyUpdate"), (Texts{""}));
    EXPECT_EQ(takeTypes(), (Texts{"SceneTopologyUpdate", "SyncScene"}));
}

TEST_F(SceneEventsTest, AnyOtherChangeAsksForARedraw)
{
    child->setVisible(false);
    manager->update();
    EXPECT_EQ(events->getData("SyncScene"), (Texts{""}));
    EXPECT_EQ(takeTypes(), (Texts{"SyncScene"}));

    const auto light = boost::make_shared<Light>("l");
    child->addInstanceLight(light);
    manager->update();
    EXPECT_EQ(takeTypes(), (Texts{"SyncScene"}));
    light->setColor(0, 0, 0);
    manager->update();
    EXPECT_EQ(takeTypes(), (Texts{"SyncScene"}));
}

TEST_F(SceneEventsTest, AnAddedMaterialIsAnnouncedAtOnce)
{
    manager->addMaterial(boost::make_shared<Material>("m", ""));
    EXPECT_EQ(events->getData("SceneUpdate"), (Texts{"MaterialList"}));
    EXPECT_EQ(takeTypes(), (Texts{"SceneUpdate"}));
}

TEST_F(SceneEventsTest, ASelectionIsAnsweredWithThePiecesAsTheyCame)
{
    for (const char* data : {"child, QtScene", "child", "no such node, \tX ", "", "a, b, c"})
        events->triggerEvent("SelectObject", data);
    EXPECT_EQ(events->getData("ObjectSelected"),
              (Texts{"child, QtScene", "child", "no such node, \tX ", "", "a, b, c"}));
}

TEST_F(SceneEventsTest, AnAnnouncedActionIsNotAppliedAgain)
{
    events->triggerEvent("TranslationAction", "child,1,2,3");
    events->triggerEvent("RotationAction", "child,10,20,30");
    manager->update();
    EXPECT_TRUE(child->getTranslation().translation().isZero());
    EXPECT_TRUE(child->getRotation().isIdentity());
    EXPECT_EQ(takeTypes(), (Texts{"TranslationAction", "RotationAction"}));
}

TEST_F(SceneEventsTest, ASceneIsDestroyedWhileSelectionsArrive)
{
    const auto threaded =
        boost::make_shared<RecordingEventManager>(RecordingEventManager::Delivery::Threaded);
    std::atomic<bool> done{false};
    std::thread sender([&] {
        while (!done)
            threaded->triggerEvent("SelectObject", "child, X");
    });
    for (int i = 0; i < 200; ++i)
        makeScene(makeNode("root"), threaded).reset();
    done = true;
    sender.join();
    threaded->waitUntilIdle();
    const size_t answers = threaded->getCount("ObjectSelected");
    threaded->triggerEvent("SelectObject", "child, X");
    threaded->waitUntilIdle();
    EXPECT_EQ(threaded->getCount("ObjectSelected"), answers);
}

TEST_F(SceneEventsTest, AnotherEventManagerTakesOver)
{
    const auto next = boost::make_shared<SynchronousEventManager>();
    manager->setEventManager(next);
    next->triggerEvent("SelectObject", "child, X");
    child->setVisible(true);
    manager->update();
    EXPECT_EQ(next->getData("ObjectSelected"), (Texts{"child, X"}));
    EXPECT_EQ(next->getCount("SyncScene"), 1u);
    EXPECT_TRUE(takeTypes().empty());
}

} // namespace
