#include "engine/scene/Node.h"

#include "engine/scene/Camera.h"
#include "engine/scene/Light.h"
#include "engine/scene/Material.h"
#include "reference/scene/Mesh.h"
#include "tests/scene/SceneHelpers.h"

#include <gtest/gtest.h>

#include <atomic>
#include <limits>

namespace {

using namespace halvern::scene;
using namespace halvern::test;

constexpr unsigned int Last = std::numeric_limits<unsigned int>::max();

TEST(NodeTest, ANewNodeIsVisibleInNoLayerAndUnmoved)
{
    const Node node("id", "a name, with a comma");
    EXPECT_EQ(node.getID(), "id");
    EXPECT_EQ(node.getName(), "a name, with a comma");
    EXPECT_EQ(node.getChildCount(), 0u);
    EXPECT_TRUE(node.isVisible());
    EXPECT_FALSE(node.inLayer("hidden"));
    EXPECT_TRUE(node.getTranslation().translation().isZero());
    EXPECT_TRUE(node.getRotation().isIdentity(0));
    EXPECT_EQ(node.getScale(), Eigen::Vector3f::Ones());
    EXPECT_EQ(node.getInstanceLightCount(), 0u);
    EXPECT_EQ(node.getInstanceCameraCount(), 0u);
}

TEST(NodeTest, WhatWasSetComesBack)
{
    Node node("id", "");
    node.setTranslation(Eigen::Translation3f(1, -2, 3e30f));
    node.setScale({0, -1, 1e-30f});
    EXPECT_EQ(node.getTranslation().translation(), Eigen::Vector3f(1, -2, 3e30f));
    EXPECT_EQ(node.getScale(), Eigen::Vector3f(0, -1, 1e-30f));
}

TEST(NodeTest, RotationTakesTheLinearPartOnly)
{
    Node node("id", "");
    Eigen::Affine3f rotation(Eigen::AngleAxisf(0.5f, Eigen::Vector3f::UnitY()));
    rotation.pretranslate(Eigen::Vector3f(7, 8, 9));
    node.setRotation(rotation);
    Eigen::Matrix4f expected = Eigen::Matrix4f::Identity();
    expected.topLeftCorner<3, 3>() = rotation.linear();
    EXPECT_EQ(node.getRotation(), expected);
}

TEST(NodeTest, LayersAreFreeNamesComparedExactly)
{
    Node node("id", "");
    node.addToLayer("cast_shadow");
    node.addToLayer("cast_shadow");
    node.addToLayer("");
    EXPECT_TRUE(node.inLayer("cast_shadow"));
    EXPECT_TRUE(node.inLayer(""));
    EXPECT_FALSE(node.inLayer("Cast_Shadow"));
    node.removeFromLayer("cast_shadow");
    node.removeFromLayer("never added");
    EXPECT_FALSE(node.inLayer("cast_shadow"));
}

TEST(NodeTest, TheLayerHiddenAndTheVisibleFlagAreIndependent)
{
    Node node("id", "");
    node.addToLayer("hidden");
    EXPECT_TRUE(node.isVisible());
    node.setVisible(false);
    node.removeFromLayer("hidden");
    EXPECT_FALSE(node.isVisible());
    EXPECT_FALSE(node.inLayer("hidden"));
}

TEST(NodeTest, IndicesOutOfRangeGiveEmptyPointers)
{
    Node node("id", "");
    node.addChildNode(makeNode("child"));
    node.addInstanceLight(boost::make_shared<Light>("light"));
    node.addInstanceCamera(boost::make_shared<Camera>("camera"));
    for (const unsigned int index : {1u, 1000u, Last}) {
        EXPECT_FALSE(node.getChildNode(index));
        EXPECT_FALSE(node.getInstanceLight(index));
        EXPECT_FALSE(node.getInstanceCamera(index));
        EXPECT_FALSE(node.getMaterial(index, index));
    }
}

TEST(NodeTest, LightsAndCamerasKeepTheOrderOfAdding)
{
    Node node("id", "");
    node.addInstanceLight(boost::make_shared<Light>("a"));
    node.addInstanceLight({});
    node.addInstanceLight(boost::make_shared<Light>("b"));
    node.addInstanceCamera({});
    node.addInstanceCamera(boost::make_shared<Camera>("c"));
    ASSERT_EQ(node.getInstanceLightCount(), 2u);
    EXPECT_EQ(node.getInstanceLight(0)->getID(), "a");
    EXPECT_EQ(node.getInstanceLight(1)->getID(), "b");
    ASSERT_EQ(node.getInstanceCameraCount(), 1u);
    EXPECT_EQ(node.getInstanceCamera(0)->getID(), "c");
}

TEST(NodeTest, AMaterialSitsInTheSlotOfBothNumbers)
{
    Node node("id", "");
    const auto material = boost::make_shared<Material>("m", "e");
    node.setMaterial(material, 1, 2);
    node.setMaterial(material, Last, Last);
    EXPECT_EQ(node.getMaterial(1, 2), material);
    EXPECT_EQ(node.getMaterial(Last, Last), material);
    EXPECT_FALSE(node.getMaterial(2, 1));
    node.setMaterial({}, 1, 2);
    EXPECT_FALSE(node.getMaterial(1, 2));
    EXPECT_TRUE(node.getMaterial(Last, Last));
}

TEST(NodeTest, AReplacedMaterialIsReleased)
{
    Node node("id", "");
    boost::weak_ptr<Material> before;
    {
        const auto material = boost::make_shared<Material>("before", "");
        before = material;
        node.setMaterial(material, 0, 0);
    }
    EXPECT_FALSE(before.expired());
    node.setMaterial(boost::make_shared<Material>("after", ""), 0, 0);
    EXPECT_TRUE(before.expired());
}

TEST(NodeTest, GeometriesAreShared)
{
    Node node("id", "");
    EXPECT_TRUE(getGeometries(node).empty());
    const auto mesh = std::make_shared<const Mesh>();
    setGeometries(node, {mesh, mesh});
    ASSERT_EQ(getGeometries(node).size(), 2u);
    EXPECT_EQ(getGeometries(node)[1], mesh);
}

TEST(NodeTest, ChildrenKeepTheOrderOfAdding)
{
    const auto node = makeNode("node", {makeNode("a"), makeNode("b"), makeNode("c")});
    ASSERT_EQ(node->getChildCount(), 3u);
    EXPECT_EQ(node->getChildNode(0)->getID(), "a");
    EXPECT_EQ(node->getChildNode(2)->getID(), "c");
}

TEST(NodeTest, EmptyPointersAndCyclesAreNotAdded)
{
    const auto leaf = makeNode("leaf");
    const auto middle = makeNode("middle", {leaf});
    const auto top = makeNode("top", {middle});
    top->addChildNode({});
    top->addChildNode(top);
    middle->addChildNode(top);
    leaf->addChildNode(top);
    leaf->addChildNode(middle);
    leaf->addChildNode(leaf);
    EXPECT_EQ(top->getChildCount(), 1u);
    EXPECT_EQ(middle->getChildCount(), 1u);
    EXPECT_EQ(leaf->getChildCount(), 0u);
}

TEST(NodeTest, ANodeThatWasAnAncestorMayBecomeAChild)
{
    const auto leaf = makeNode("leaf");
    const auto top = makeNode("top", {leaf});
    top->removeChildNode(leaf);
    leaf->addChildNode(top);
    EXPECT_EQ(leaf->getChildNode(0), top);
}

TEST(NodeTest, RemovingTakesTheFirstEqualEntry)
{
    const auto twice = makeNode("twice");
    const auto node = makeNode("node", {twice, makeNode("other"), twice});
    node->removeChildNode({});
    node->removeChildNode(makeNode("twice"));
    EXPECT_EQ(node->getChildCount(), 3u);
    node->removeChildNode(twice);
    ASSERT_EQ(node->getChildCount(), 2u);
    EXPECT_EQ(node->getChildNode(0)->getID(), "other");
    EXPECT_EQ(node->getChildNode(1), twice);
}

TEST(NodeTest, AChainOfAHundredThousandNodesIsDestroyed)
{
    auto chain = makeChain(100000);
    boost::weak_ptr<Node> second = chain->getChildNode(0);
    chain.reset();
    EXPECT_TRUE(second.expired());
}

TEST(NodeTest, ADestroyedTreeLeavesWhatOthersHold)
{
    auto kept = makeNode("kept", {makeNode("below")});
    auto top = makeNode("top", {makeNode("middle", {kept})});
    top.reset();
    EXPECT_EQ(kept->getChildNode(0)->getID(), "below");
    const auto other = makeNode("other");
    kept->getChildNode(0)->addChildNode(other); // no longer below anything
    other->addChildNode(kept);
    EXPECT_EQ(other->getChildCount(), 0u);
}

TEST(NodeTest, ChainsGrowUpwardsAndDownwardsInLinearTime)
{
    auto top = makeNode("0");
    for (int i = 1; i < 100000; ++i)
        top = makeNode(std::to_string(i), {top});
    EXPECT_EQ(top->getChildCount(), 1u);
    EXPECT_EQ(makeChain(100000)->getChildCount(), 1u);
}

TEST(NodeTest, ADiamondOfManyPathsIsWalkedOnce)
{
    auto top = makeNode("bottom");
    for (int i = 0; i < 64; ++i)
        top = makeNode(std::to_string(i), {top, top}); // 2^64 paths
    const auto manager = makeScene(top);
    EXPECT_EQ(manager->getNodeArray().size(), 65u);
    const auto above = makeNode("above", {makeNode("beside")});
    above->getChildNode(0)->addChildNode(top);
    top->addChildNode(above);
    EXPECT_EQ(top->getChildCount(), 2u);
}

TEST(NodeTest, ValuesAreWholeWhileThreeThreadsSetThem)
{
    const auto node = makeNode("node");
    const auto manager = makeScene(node);
    runInThreads(3, [&](unsigned thread) {
        for (int i = 0; i < 3000; ++i) {
            const auto value = static_cast<float>(i * 3 + thread);
            node->setTranslation(Eigen::Translation3f(value, value, value));
            node->setScale(Eigen::Vector3f::Constant(value));
            node->setVisible(i % 2 == 0);
            node->addToLayer("cast_shadow");
            node->removeFromLayer("cast_shadow");
            node->setMaterial(boost::make_shared<Material>("m", ""), 0, 0);
            const Eigen::Vector3f translation = node->getTranslation().translation();
            const Eigen::Vector3f scale = node->getScale();
            ASSERT_TRUE((translation.array() == translation.x()).all());
            ASSERT_TRUE((scale.array() == scale.x()).all());
        }
    });
}

TEST(NodeTest, TheTreeStaysATreeWhileThreeThreadsRearrangeIt)
{
    const auto top = makeNode("top");
    const auto manager = makeScene(top);
    std::vector<boost::shared_ptr<Node>> nodes;
    for (int i = 0; i < 8; ++i)
        nodes.push_back(makeNode(std::to_string(i)));
    runInThreads(3, [&](unsigned thread) {
        for (unsigned i = 0; i < 3000; ++i) {
            const auto& parent = nodes[(i * 7 + thread) % 8];
            const auto& child = nodes[(i * 3 + thread * 5) % 8];
            parent->addChildNode(child);
            top->addChildNode(parent);
            manager->getNodeArray();
            manager->getNodeByID("3");
            child->setVisible(true);
            parent->removeChildNode(child);
            top->removeChildNode(parent);
        }
    });
    EXPECT_EQ(top->getChildCount(), 0u);
    EXPECT_EQ(manager->getNodeArray().size(), 1u);
    EXPECT_FALSE(manager->getNodeByID("3"));
    for (const auto& node : nodes)
        EXPECT_EQ(node->getChildCount(), 0u);
}

} // namespace
