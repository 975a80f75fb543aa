#include "engine/scene/SceneManager.h"

#include "engine/scene/Animation.h"
#include "engine/scene/AnimationManager.h"
#include "engine/scene/CameraInstance.h"
#include "engine/scene/Effect.h"
#include "engine/scene/Evaluator.h"
#include "engine/scene/Material.h"
#include "tests/scene/SceneHelpers.h"

#include <gtest/gtest.h>

#include <mutex>
#include <set>

namespace {

using namespace halvern::scene;
using namespace halvern::test;
using Texts = std::vector<std::string>;

constexpr unsigned int Last = 0xFFFFFFFF;

TEST(SceneManagerTest, ANewSceneIsEmpty)
{
    const auto manager = makeScene({});
    EXPECT_FALSE(manager->getRoot());
    EXPECT_EQ(manager->getSceneName(), "");
    EXPECT_TRUE(manager->getNodeArray().empty());
    EXPECT_FALSE(manager->getNodeByID(""));
    EXPECT_EQ(manager->getCameraInstanceCount(), 0u);
    EXPECT_TRUE(manager->getMaterialList().empty());
    EXPECT_TRUE(manager->getAnimationsLibrary().empty());
    ASSERT_TRUE(manager->getAnimationManager());
    EXPECT_FALSE(manager->getAnimationManager()->getAnimation());
}

TEST(SceneManagerTest, NodesComeInDepthFirstPreOrder)
{
    const auto manager = makeScene(
        makeNode("root", {makeNode("a", {makeNode("a1"), makeNode("a2")}), makeNode("b", {makeNode("b1")})}));
    EXPECT_EQ(idsOf(manager->getNodeArray()), (Texts{"root", "a", "a1", "a2", "b", "b1"}));
}

TEST(SceneManagerTest, NodesAreFoundFromEnteringToLeaving)
{
    const auto manager = makeScene(makeNode("root"));
    const auto a = makeNode("a", {makeNode("a1")});
    EXPECT_FALSE(manager->getNodeByID("a1"));
    manager->getRoot()->addChildNode(a);
    EXPECT_EQ(manager->getNodeByID("a1"), a->getChildNode(0));
    EXPECT_EQ(manager->getNodeByID("root"), manager->getRoot());
    a->addChildNode(makeNode("a2"));
    EXPECT_TRUE(manager->getNodeByID("a2"));
    manager->getRoot()->removeChildNode(a);
    EXPECT_FALSE(manager->getNodeByID("a"));
    EXPECT_FALSE(manager->getNodeByID("a2"));
    manager->setRoot(a);
    EXPECT_TRUE(manager->getNodeByID("a2"));
    EXPECT_FALSE(manager->getNodeByID("root"));
}

TEST(SceneManagerTest, OfEqualIDsTheFirstInPreOrderIsFound)
{
    const auto deep = makeNode("same");
    const auto a = makeNode("a", {deep});
    const auto late = makeNode("same");
    const auto manager = makeScene(makeNode("root", {a, late}));
    EXPECT_EQ(manager->getNodeByID("same"), deep);
    a->removeChildNode(deep);
    EXPECT_EQ(manager->getNodeByID("same"), late);
    manager->getRoot()->addChildNode(deep);
    EXPECT_EQ(manager->getNodeByID("same"), late);
    manager->getRoot()->removeChildNode(late);
    EXPECT_EQ(manager->getNodeByID("same"), deep);
    manager->getRoot()->removeChildNode(deep);
    EXPECT_FALSE(manager->getNodeByID("same"));
}

TEST(SceneManagerTest, AHundredThousandNodesOfOneIDComeAndGo)
{
    const auto root = makeNode("same");
    for (int i = 1; i < 100000; ++i)
        root->addChildNode(makeNode("same"));
    const auto manager = makeScene(root);
    EXPECT_EQ(manager->getNodeByID("same"), root);
    manager->setRoot({});
    EXPECT_FALSE(manager->getNodeByID("same"));
}

TEST(SceneManagerTest, AChainOfAHundredThousandNodesIsWalkedFoundAndReleased)
{
    auto manager = makeScene(makeChain(100000));
    EXPECT_EQ(manager->getNodeArray().size(), 100000u);
    const auto last = manager->getNodeByID("99999");
    ASSERT_TRUE(last);
    last->addChildNode(makeNode("100000"));
    EXPECT_TRUE(manager->getNodeByID("100000"));
    boost::weak_ptr<Node> root = manager->getRoot();
    manager.reset();
    EXPECT_TRUE(root.expired());
}

TEST(SceneManagerTest, NodesOutliveTheirScene)
{
    const auto child = makeNode("child");
    const auto root = makeNode("root", {child});
    makeScene(root).reset();
    child->setVisible(false);
    root->removeChildNode(child);
    root->addChildNode(child);
    const auto next = makeScene(root);
    EXPECT_EQ(next->getNodeByID("child"), child);
}

TEST(SceneManagerTest, GeneratedIDsAreNewAndWithoutCommas)
{
    const auto manager = makeScene(makeNode("root"));
    const auto other = makeScene({});
    std::set<std::string> ids;
    std::mutex mutex;
    runInThreads(3, [&](unsigned thread) {
        for (int i = 0; i < 1000; ++i) {
            const std::string id = (thread % 2 ? manager : other)->generateID();
            const std::lock_guard<std::mutex> lock(mutex);
            EXPECT_TRUE(ids.insert(id).second) << id;
            EXPECT_EQ(id.find(','), std::string::npos);
        }
    });
}

TEST(SceneManagerTest, GeneratedIDsAreNotThoseOfTheScene)
{
    const auto manager = makeScene(makeNode("root"));
    const std::string id = manager->generateID();
    const auto number = id.find_last_not_of("0123456789") + 1;
    const int next = std::stoi(id.substr(number)) + 1;
    const std::string taken = id.substr(0, number) + std::to_string(next);
    manager->getRoot()->addChildNode(makeNode(taken));
    EXPECT_NE(manager->generateID(), taken);
}

TEST(SceneManagerTest, UnknownIDsAndIndicesGiveEmptyPointers)
{
    const auto manager = makeScene(makeNode("root"));
    for (const unsigned int index : {0u, 1u, Last}) {
        EXPECT_FALSE(manager->getCameraInstanceAt(index));
        EXPECT_FALSE(manager->getEvaluatorAt(index));
        manager->removeAnimation(index);
    }
    EXPECT_FALSE(manager->getNodeByID("nobody"));
    EXPECT_FALSE(manager->getMaterialWithID("nobody"));
    EXPECT_FALSE(manager->getEffectByFilename("nobody"));
}

TEST(SceneManagerTest, ListsKeepTheOrderOfAddingWithoutEmptyPointers)
{
    const auto manager = makeScene(makeNode("root"));
    const auto root = manager->getRoot();
    manager->addCameraInstance({});
    manager->addCameraInstance(boost::make_shared<CameraInstance>("one", root, nullptr));
    manager->addCameraInstance(boost::make_shared<CameraInstance>("two", root, nullptr));
    ASSERT_EQ(manager->getCameraInstanceCount(), 2u);
    EXPECT_EQ(manager->getCameraInstanceAt(1)->getSID(), "two");

    const auto material = boost::make_shared<Material>("m", "e");
    manager->addMaterial({});
    manager->addMaterial(material);
    manager->addMaterial(material);
    EXPECT_EQ(manager->getMaterialList().size(), 1u);
    EXPECT_EQ(manager->getMaterialWithID("m"), material);

    const auto effect = boost::make_shared<Effect>("e", "file", "");
    manager->addEffect({});
    manager->addEffect(effect);
    EXPECT_EQ(manager->getEffectByFilename("file"), effect);

    const auto evaluator = boost::make_shared<Evaluator>("v");
    manager->addEvaluator({});
    manager->addEvaluator(evaluator);
    EXPECT_EQ(manager->getEvaluatorAt(0), evaluator);
}

TEST(SceneManagerTest, AnimationsAreRemovedByIndexOrAllAtOnce)
{
    const auto manager = makeScene({});
    for (const char* name : {"a", "b", "c"})
        manager->addAnimation(boost::make_shared<Animation>(name, ""));
    manager->addAnimation({});
    manager->removeAnimation(1);
    manager->removeAnimation(2);
    const auto left = manager->getAnimationsLibrary();
    ASSERT_EQ(left.size(), 2u);
    EXPECT_EQ(left[1]->getID(), "c");
    manager->removeAllAnimations();
    EXPECT_TRUE(manager->getAnimationsLibrary().empty());
}

TEST(SceneManagerTest, ThreeThreadsMayUseItsListsAtOnce)
{
    const auto manager = makeScene(makeNode("root"));
    runInThreads(3, [&](unsigned thread) {
        for (unsigned i = 0; i < 300; ++i) {
            const std::string id = std::to_string(thread) + '-' + std::to_string(i);
            manager->addMaterial(boost::make_shared<Material>(id, ""));
            manager->addCameraInstance(boost::make_shared<CameraInstance>(id, nullptr, nullptr));
            manager->addAnimation(boost::make_shared<Animation>(id, ""));
            manager->addEffect(boost::make_shared<Effect>(id, id, ""));
            manager->addEvaluator(boost::make_shared<Evaluator>(id));
            manager->setSceneName(id);
            ASSERT_TRUE(manager->getMaterialWithID(id));
            ASSERT_TRUE(manager->getEffectByFilename(id));
            ASSERT_FALSE(manager->getMaterialList().empty());
            ASSERT_FALSE(manager->getSceneName().empty());
            ASSERT_TRUE(manager->getCameraInstanceAt(manager->getCameraInstanceCount() - 1));
            ASSERT_TRUE(manager->getEvaluatorAt(i));
            manager->getAnimationsLibrary();
            manager->removeAnimation(0);
            manager->update();
        }
    });
    EXPECT_EQ(manager->getMaterialList().size(), 900u);
    EXPECT_EQ(manager->getCameraInstanceCount(), 900u);
    EXPECT_TRUE(manager->getAnimationsLibrary().empty());
}

TEST(SceneManagerTest, WithoutAnEventManagerNothingIsSent)
{
    const auto manager = makeScene(makeNode("root"));
    manager->getRoot()->setVisible(false);
    manager->addMaterial(boost::make_shared<Material>("m", ""));
    EXPECT_FALSE(manager->update());
}

} // namespace
