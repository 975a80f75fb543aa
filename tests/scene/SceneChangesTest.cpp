#include "reference/scene/SceneChanges.h"

#include "engine/scene/Animation.h"
#include "engine/scene/Camera.h"
#include "engine/scene/CameraInstance.h"
#include "engine/scene/Light.h"
#include "engine/scene/Material.h"
#include "reference/scene/CameraPose.h"
#include "reference/scene/LightSource.h"
#include "reference/scene/Mesh.h"
#include "reference/scene/StandardMaterial.h"
#include "tests/scene/SceneHelpers.h"
#include "tests/support/Heap.h"

#include <gtest/gtest.h>

#include <atomic>

namespace {

using namespace halvern::scene;
using namespace halvern::test;
using Changes = std::map<std::string, unsigned>;

/// A scene "root" > "child", read from now on.
struct SceneChangesTest : testing::Test
{
    Changes takeNodes() { return changesByID(reader->take()); }

    const boost::shared_ptr<Node> child = makeNode("child");
    const boost::shared_ptr<Node> root = makeNode("root", {child});
    const boost::shared_ptr<SceneManager> manager = makeScene(root);
    const std::shared_ptr<SceneChanges> reader = readChanges(*manager);
};

TEST_F(SceneChangesTest, ANewReaderKnowsOfNothing)
{
    EXPECT_TRUE(reader->take().empty());
}

TEST_F(SceneChangesTest, EachSetterOfANodeMarksWhatItChanges)
{
    child->setTranslation(Eigen::Translation3f(1, 2, 3));
    EXPECT_EQ(takeNodes(), (Changes{{"child", SceneChanges::Transform}}));
    child->setRotation(Eigen::Affine3f::Identity());
    EXPECT_EQ(takeNodes(), (Changes{{"child", SceneChanges::Transform}}));
    child->setScale({1, 1, 1});
    EXPECT_EQ(takeNodes(), (Changes{{"child", SceneChanges::Transform}}));
    child->setVisible(false);
    EXPECT_EQ(takeNodes(), (Changes{{"child", SceneChanges::Layers}}));
    child->addToLayer("a");
    EXPECT_EQ(takeNodes(), (Changes{{"child", SceneChanges::Layers}}));
    child->removeFromLayer("a");
    EXPECT_EQ(takeNodes(), (Changes{{"child", SceneChanges::Layers}}));
    child->setMaterial(boost::make_shared<Material>("m", ""), 0, 0);
    EXPECT_EQ(takeNodes(), (Changes{{"child", SceneChanges::Materials}}));
    child->addInstanceLight(boost::make_shared<Light>("l"));
    EXPECT_EQ(takeNodes(), (Changes{{"child", SceneChanges::Instances}}));
    child->addInstanceCamera(boost::make_shared<Camera>("c"));
    EXPECT_EQ(takeNodes(), (Changes{{"child", SceneChanges::Instances}}));
    setGeometries(*child, {});
    EXPECT_EQ(takeNodes(), (Changes{{"child", SceneChanges::Geometries}}));
    EXPECT_TRUE(reader->take().empty());
}

TEST_F(SceneChangesTest, EqualValuesMarkToo)
{
    child->setVisible(true);
    EXPECT_EQ(takeNodes(), (Changes{{"child", SceneChanges::Layers}}));
}

TEST_F(SceneChangesTest, ManyChangesOfANodeAreOneEntryInTheOrderOfTheFirst)
{
    child->setVisible(true);
    root->setVisible(true);
    for (int i = 0; i < 1000; ++i)
        child->setScale({1, 1, 1});
    const auto batch = reader->take();
    ASSERT_EQ(batch.nodes.size(), 2u);
    EXPECT_EQ(batch.nodes[0].node, child.get());
    EXPECT_EQ(batch.nodes[0].changes, unsigned(SceneChanges::Layers | SceneChanges::Transform));
    EXPECT_EQ(batch.nodes[1].id, "root");
}

TEST_F(SceneChangesTest, AddingMarksTheParentAndTheTopOfWhatEntered)
{
    child->addChildNode(makeNode("new", {makeNode("below")}));
    EXPECT_EQ(takeNodes(), (Changes{{"child", SceneChanges::Children}, {"new", SceneChanges::Entered}}));
}

TEST_F(SceneChangesTest, NodesBelowOneThatEnteredMarkFromThenOn)
{
    const auto below = makeNode("below");
    const auto top = makeNode("new", {below});
    below->setVisible(true);
    EXPECT_TRUE(reader->take().empty());
    child->addChildNode(top);
    reader->take();
    below->setVisible(true);
    EXPECT_EQ(takeNodes(), (Changes{{"below", SceneChanges::Layers}}));
}

TEST_F(SceneChangesTest, ANodeThatLeftMarksNothingAndIsForgotten)
{
    child->addChildNode(makeNode("below"));
    const auto below = child->getChildNode(0);
    reader->take();
    below->setVisible(true);
    child->setVisible(true);
    root->removeChildNode(child);
    child->setVisible(true);
    below->setVisible(true);
    EXPECT_EQ(takeNodes(), (Changes{{"root", SceneChanges::Children}}));
}

TEST_F(SceneChangesTest, ANodeThatCameBackIsMarked)
{
    root->removeChildNode(child);
    child->setVisible(false);
    root->addChildNode(child);
    EXPECT_EQ(takeNodes(), (Changes{{"root", SceneChanges::Children}, {"child", SceneChanges::Entered}}));
}

TEST_F(SceneChangesTest, ANodeInTheSceneTwiceStaysWithTheSecondEntry)
{
    const auto other = makeNode("other", {child});
    root->addChildNode(other);
    root->removeChildNode(child);
    reader->take();
    child->setVisible(true);
    EXPECT_EQ(takeNodes(), (Changes{{"child", SceneChanges::Layers}}));
    root->removeChildNode(other);
    reader->take();
    child->setVisible(true);
    EXPECT_TRUE(reader->take().empty());
}

TEST_F(SceneChangesTest, ANewRootIsOneSceneChange)
{
    const auto next = makeNode("next", {makeNode("below")});
    manager->setRoot(next);
    const auto batch = reader->take();
    EXPECT_EQ(batch.scene, unsigned(SceneChanges::Root));
    root->setVisible(true);
    EXPECT_TRUE(reader->take().empty());
    next->getChildNode(0)->setVisible(true);
    EXPECT_EQ(takeNodes(), (Changes{{"below", SceneChanges::Layers}}));
}

TEST_F(SceneChangesTest, WhatSeveralNodesShareMarksTheScene)
{
    const auto light = boost::make_shared<Light>("l");
    const auto camera = boost::make_shared<Camera>("c");
    const auto material = boost::make_shared<Material>("m", "");
    for (const auto& node : {root, child}) {
        node->addInstanceLight(light);
        node->addInstanceCamera(camera);
        node->setMaterial(material, 0, 0);
    }
    reader->take();
    light->setColor(1, 1, 1);
    EXPECT_EQ(reader->take().scene, unsigned(SceneChanges::LightValues));
    setLightSource(*light, {});
    EXPECT_EQ(reader->take().scene, unsigned(SceneChanges::LightValues));
    camera->setYFov(45);
    camera->setZNear(1);
    camera->setZFar(2);
    setCameraPose(*camera, Eigen::Isometry3f::Identity());
    EXPECT_EQ(reader->take().scene, unsigned(SceneChanges::CameraValues));
    setStandardMaterial(*material, {});
    EXPECT_EQ(reader->take().scene, unsigned(SceneChanges::MaterialValues));
}

TEST_F(SceneChangesTest, WhatANodeCarriedBeforeItEnteredMarksTheScene)
{
    const auto light = boost::make_shared<Light>("l");
    const auto camera = boost::make_shared<Camera>("c");
    const auto material = boost::make_shared<Material>("m", "");
    const auto node = makeNode("node");
    node->addInstanceLight(light);
    node->addInstanceCamera(camera);
    node->setMaterial(material, 0, 0);
    light->setColor(1, 1, 1);
    EXPECT_TRUE(reader->take().empty());
    root->addChildNode(node);
    reader->take();
    light->setColor(1, 1, 1);
    camera->setYFov(45);
    setStandardMaterial(*material, {});
    EXPECT_EQ(reader->take().scene, unsigned(SceneChanges::LightValues | SceneChanges::CameraValues |
                                             SceneChanges::MaterialValues));
}

TEST_F(SceneChangesTest, ALightOfTwoScenesMarksBoth)
{
    const auto other = makeScene(makeNode("other"));
    const auto otherReader = readChanges(*other);
    const auto light = boost::make_shared<Light>("l");
    root->addInstanceLight(light);
    other->getRoot()->addInstanceLight(light);
    reader->take();
    otherReader->take();
    light->setColor(1, 1, 1);
    EXPECT_EQ(reader->take().scene, unsigned(SceneChanges::LightValues));
    EXPECT_EQ(otherReader->take().scene, unsigned(SceneChanges::LightValues));
}

TEST_F(SceneChangesTest, TheListsOfTheSceneMark)
{
    manager->addMaterial(boost::make_shared<Material>("m", ""));
    EXPECT_EQ(reader->take().scene, unsigned(SceneChanges::MaterialList));
    manager->addCameraInstance(boost::make_shared<CameraInstance>("s", root, nullptr));
    EXPECT_EQ(reader->take().scene, unsigned(SceneChanges::CameraList));
    manager->addAnimation(boost::make_shared<Animation>("a", ""));
    EXPECT_EQ(reader->take().scene, unsigned(SceneChanges::AnimationList));
    manager->removeAnimation(0);
    EXPECT_EQ(reader->take().scene, unsigned(SceneChanges::AnimationList));
    manager->removeAllAnimations();
    EXPECT_EQ(reader->take().scene, unsigned(SceneChanges::AnimationList));
}

TEST_F(SceneChangesTest, AMaterialOfTheListMarksThoughNoNodeHasIt)
{
    const auto material = boost::make_shared<Material>("m", "");
    manager->addMaterial(material);
    reader->take();
    setStandardMaterial(*material, {});
    EXPECT_EQ(reader->take().scene, unsigned(SceneChanges::MaterialValues));
}

TEST_F(SceneChangesTest, EachReaderTakesForItself)
{
    const auto second = readChanges(*manager);
    child->setVisible(true);
    EXPECT_EQ(takeNodes().size(), 1u);
    EXPECT_EQ(changesByID(second->take()).size(), 1u);
    EXPECT_TRUE(second->take().empty());
}

TEST_F(SceneChangesTest, AReaderOutlivesItsScene)
{
    auto other = makeScene(makeNode("other"));
    const auto otherRoot = other->getRoot();
    const auto otherReader = readChanges(*other);
    otherRoot->setVisible(true);
    other.reset();
    otherReader->take();
    otherRoot->setVisible(true);
    EXPECT_TRUE(otherReader->take().nodes.empty());
}

TEST_F(SceneChangesTest, ANodeOfTwoScenesBelongsToTheLater)
{
    const auto later = makeScene(root);
    const auto laterReader = readChanges(*later);
    reader->take();
    child->setVisible(true);
    EXPECT_TRUE(reader->take().nodes.empty());
    EXPECT_EQ(changesByID(laterReader->take()), (Changes{{"child", SceneChanges::Layers}}));
    manager->setRoot({}); // takes nothing away from the later scene
    child->setVisible(true);
    EXPECT_EQ(changesByID(laterReader->take()), (Changes{{"child", SceneChanges::Layers}}));
}

TEST_F(SceneChangesTest, AReaderThatNeverTakesStaysSmall)
{
    const auto churn = [&](int rounds) {
        for (int i = 0; i < rounds; ++i) {
            const auto node = makeNode("a node that comes and goes");
            root->addChildNode(node);
            node->setVisible(true);
            root->removeChildNode(node);
        }
    };
    churn(1000);
    const size_t before = getHeapInUse();
    churn(20000);
    EXPECT_LT(getHeapInUse(), before + 64 * 1024);
}

TEST_F(SceneChangesTest, NoChangeIsLostBetweenThreeWritersAndAReader)
{
    std::vector<boost::shared_ptr<Node>> nodes;
    for (int i = 0; i < 3; ++i) {
        nodes.push_back(makeNode(std::to_string(i)));
        root->addChildNode(nodes.back());
    }
    reader->take();
    constexpr int Rounds = 5000;
    std::atomic<int> running{3};
    std::vector<float> seen(3, 0);
    const auto read = [&] {
        for (const auto& entry : reader->take().nodes) {
            for (size_t i = 0; i < nodes.size(); ++i) {
                if (entry.node == nodes[i].get())
                    seen[i] = nodes[i]->getTranslation().x();
            }
        }
    };
    runInThreads(4, [&](unsigned thread) {
        if (thread < 3) {
            for (int i = 1; i <= Rounds; ++i)
                nodes[thread]->setTranslation(Eigen::Translation3f(static_cast<float>(i), 0, 0));
            --running;
            return;
        }
        while (running > 0)
            read();
    });
    read();
    EXPECT_EQ(seen, std::vector<float>(3, Rounds));
}

} // namespace
