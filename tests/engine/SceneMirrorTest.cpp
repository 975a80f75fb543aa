#include "engine/renderer/IRenderer.h"
#include "engine/window/ILayout.h"
#include "engine/window/Viewport.h"
#include "tests/engine/Stage.h"

#include <boost/make_shared.hpp>

#include <gtest/gtest.h>

#include <atomic>
#include <limits>
#include <thread>
#include <vector>

using namespace halvern;
using namespace halvern::test;

namespace {

unsigned int trianglesOf(Stage& stage)
{
    return stage.window->getLayout()->getViewport()->getSceneRenderer()->getTriangleCount();
}

unsigned int verticesOf(Stage& stage)
{
    return stage.window->getLayout()->getViewport()->getSceneRenderer()->getVertexCount();
}

} // namespace

TEST(SceneMirrorTest, FollowsTheTransformsOfNodesAndTheirParents)
{
    Stage stage;
    const NodePtr top = stage.scene.add("top");
    const NodePtr cube = makeNode("cube", boxMesh(0.4f), unlitMaterial(Qt::red));
    top->addChildNode(cube);
    EXPECT_EQ(stage.draw(0, 0), QColor(Qt::red));
    moveTo(*cube, 1, 0, 0);
    EXPECT_TRUE(isBackground(stage.draw(0, 0)));
    moveTo(*top, -1, 0, 0);
    EXPECT_EQ(stage.draw(0, 0), QColor(Qt::red));
    moveTo(*top, 0, 0, 0);
    top->setRotation(Eigen::Affine3f(Eigen::AngleAxisf(float(M_PI_2), Eigen::Vector3f::UnitZ())));
    EXPECT_EQ(stage.draw(0, 24), QColor(Qt::red));
}

TEST(SceneMirrorTest, MovesParentsAndChildrenInOneFrame)
{
    Stage stage;
    const NodePtr top = stage.scene.add("top");
    const NodePtr cube = makeNode("cube", boxMesh(0.4f), unlitMaterial(Qt::red));
    top->addChildNode(cube);
    stage.draw();
    moveTo(*cube, 5, 0, 0);
    moveTo(*top, -5, 0, 0);
    EXPECT_EQ(stage.draw(0, 0), QColor(Qt::red));
    moveTo(*top, 7, 0, 0);
    moveTo(*cube, -7, 0, 0);
    EXPECT_EQ(stage.draw(0, 0), QColor(Qt::red));
}

TEST(SceneMirrorTest, FollowsChildren)
{
    Stage stage;
    stage.draw();
    const NodePtr top = makeNode("top");
    top->addChildNode(makeNode("cube", boxMesh(), unlitMaterial(Qt::red)));
    stage.scene.root->addChildNode(top);
    EXPECT_EQ(stage.draw(0, 0), QColor(Qt::red));
    stage.scene.root->removeChildNode(top);
    EXPECT_TRUE(isBackground(stage.draw(0, 0)));
    top->getChildNode(0)->setMaterial(unlitMaterial(Qt::blue), 0, 0);
    stage.scene.root->addChildNode(top);
    EXPECT_EQ(stage.draw(0, 0), QColor(Qt::blue));
}

TEST(SceneMirrorTest, FollowsTheRoot)
{
    Stage stage;
    stage.scene.add("cube", boxMesh(), unlitMaterial(Qt::red));
    stage.draw();
    const NodePtr other = makeNode("other", boxMesh(), unlitMaterial(Qt::blue));
    stage.scene.manager->setRoot(other);
    EXPECT_EQ(stage.draw(0, 0), QColor(Qt::blue));
    stage.scene.manager->setRoot({});
    EXPECT_TRUE(isBackground(stage.draw(0, 0)));
}

TEST(SceneMirrorTest, WhatChangedOutsideOfTheSceneIsSeenWhenItIsBack)
{
    Stage stage;
    const NodePtr top = stage.scene.add("top");
    const NodePtr cube = makeNode("cube", boxMesh(0.4f), unlitMaterial(Qt::red));
    top->addChildNode(cube);
    EXPECT_EQ(stage.draw(0, 0), QColor(Qt::red));
    // Away, changed and back between two frames.
    stage.scene.root->removeChildNode(top);
    moveTo(*top, 1, 0, 0);
    moveTo(*cube, 0, 1, 0);
    cube->setMaterial(unlitMaterial(Qt::blue), 0, 0);
    stage.scene.root->addChildNode(top);
    EXPECT_EQ(stage.draw(24, 24), QColor(Qt::blue));
    // Back below a new parent.
    stage.scene.root->removeChildNode(top);
    moveTo(*cube, 0, -1, 0);
    const NodePtr parent = makeNode("parent");
    parent->addChildNode(top);
    stage.scene.root->addChildNode(parent);
    EXPECT_EQ(stage.draw(24, -24), QColor(Qt::blue));
}

TEST(SceneMirrorTest, ARootThatIsSetAgainIsReadAgain)
{
    Stage stage;
    const NodePtr cube = stage.scene.add("cube", boxMesh(0.4f), unlitMaterial(Qt::red));
    EXPECT_EQ(stage.draw(0, 0), QColor(Qt::red));
    stage.scene.manager->setRoot({});
    moveTo(*cube, 1, 0, 0);
    stage.scene.manager->setRoot(stage.scene.root);
    EXPECT_EQ(stage.draw(24, 0), QColor(Qt::red));
}

TEST(SceneMirrorTest, FollowsMaterialsAndTheirValues)
{
    Stage stage;
    const NodePtr cube = stage.scene.add("cube", boxMesh(), unlitMaterial(Qt::red));
    EXPECT_EQ(stage.draw(0, 0), QColor(Qt::red));
    const MaterialPtr blue = unlitMaterial(Qt::blue);
    cube->setMaterial(blue, 0, 0);
    EXPECT_EQ(stage.draw(0, 0), QColor(Qt::blue));
    changeMaterial(*blue, [](auto& values) { values.baseColor = {0, 1, 0, 1}; });
    EXPECT_EQ(stage.draw(0, 0), QColor(Qt::green));
    cube->setMaterial({}, 0, 0);
    const QColor grey = stage.draw(0, 0);
    EXPECT_FALSE(isBackground(grey));
    EXPECT_LT(grey.red() - grey.green(), 20);
}

TEST(SceneMirrorTest, FollowsGeometries)
{
    Stage stage;
    const NodePtr cube = stage.scene.add("cube", boxMesh(0.2f), unlitMaterial(Qt::red));
    EXPECT_TRUE(isBackground(stage.draw(20, 20)));
    setGeometries(*cube, {boxMesh(1)});
    EXPECT_EQ(stage.draw(20, 20), QColor(Qt::red));
    setGeometries(*cube, {});
    EXPECT_TRUE(isBackground(stage.draw(0, 0)));
}

TEST(SceneMirrorTest, EachGeometryHasItsMaterial)
{
    Stage stage;
    auto left = std::make_shared<scene::Mesh>(*boxMesh(0.4f));
    for (Eigen::Vector3f& position : left->positions)
        position.x() -= 1;
    left->bounds.translate(Eigen::Vector3f(-1, 0, 0));
    const NodePtr node = stage.scene.add("node");
    setGeometries(*node, {left, boxMesh(0.4f)});
    node->setMaterial(unlitMaterial(Qt::red), 0, 0);
    node->setMaterial(unlitMaterial(Qt::green), 1, 0);
    const QImage image = stage.draw();
    EXPECT_EQ(pixel(image, -24, 0), QColor(Qt::red));
    EXPECT_EQ(pixel(image, 0, 0), QColor(Qt::green));
}

TEST(SceneMirrorTest, ANodeBelowTwoParentsIsDrawnTwice)
{
    Stage stage;
    const NodePtr left = stage.scene.add("left");
    const NodePtr right = stage.scene.add("right");
    const NodePtr cube = makeNode("cube", boxMesh(0.3f), unlitMaterial(Qt::red));
    left->addChildNode(cube);
    right->addChildNode(cube);
    moveTo(*left, -1, 0, 0);
    moveTo(*right, 1, 0, 0);
    QImage image = stage.draw();
    EXPECT_EQ(pixel(image, -24, 0), QColor(Qt::red));
    EXPECT_EQ(pixel(image, 24, 0), QColor(Qt::red));
    moveTo(*cube, 0, 1, 0);
    image = stage.draw();
    EXPECT_EQ(pixel(image, -24, 24), QColor(Qt::red));
    EXPECT_EQ(pixel(image, 24, 24), QColor(Qt::red));
    left->setVisible(false);
    image = stage.draw();
    EXPECT_TRUE(isBackground(pixel(image, -24, 24)));
    EXPECT_EQ(pixel(image, 24, 24), QColor(Qt::red));
}

TEST(SceneMirrorTest, CountsWhatWasDrawn)
{
    Stage stage;
    EXPECT_EQ(trianglesOf(stage), 0u);
    const NodePtr first = stage.scene.add("first", boxMesh());
    stage.draw();
    EXPECT_EQ(trianglesOf(stage), 12u);
    EXPECT_EQ(verticesOf(stage), 24u);
    const NodePtr second = stage.scene.add("second");
    setGeometries(*second, getGeometries(*first));
    stage.draw();
    EXPECT_EQ(trianglesOf(stage), 24u);
    moveTo(*second, 1000, 0, 0);
    stage.draw();
    EXPECT_EQ(trianglesOf(stage), 12u) << "what lies outside of the view is not drawn";
    first->setVisible(false);
    stage.draw();
    EXPECT_EQ(trianglesOf(stage), 0u);
    EXPECT_EQ(verticesOf(stage), 0u);
}

TEST(SceneMirrorTest, ShadowsCountInNoStatistics)
{
    Stage stage;
    stage.scene.add("cube", boxMesh(), litMaterial(Qt::red))->addToLayer("cast_shadow");
    stage.scene.addLight("light", {});
    stage.draw();
    EXPECT_EQ(trianglesOf(stage), 12u);
}

TEST(SceneMirrorTest, TransformsThatAreNoNumbersBreakNothing)
{
    Stage stage;
    stage.scene.add("good", boxMesh(0.5f), unlitMaterial(Qt::red));
    const NodePtr bad = stage.scene.add("bad", boxMesh(), unlitMaterial(Qt::blue));
    bad->addToLayer("cast_shadow");
    stage.scene.addLight("light", {});
    for (float value :
         {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(), 1e38f}) {
        moveTo(*bad, value, value, value);
        bad->setScale({value, 1, value});
        EXPECT_EQ(stage.draw(0, 0), QColor(Qt::red)) << value;
        stage.window->getLayout()->requestPick(50, 50, "T");
        stage.scene.events->triggerEvent("ObjectSelected", "bad");
        EXPECT_EQ(stage.draw(0, 0), QColor(Qt::red)) << value;
    }
    bad->setScale({0, 0, 0});
    moveTo(*bad, 0, 0, 0);
    EXPECT_EQ(stage.draw(0, 0), QColor(Qt::red));
}

TEST(SceneMirrorTest, MeshesThatAreNoMeshesBreakNothing)
{
    Stage stage;
    const float nan = std::numeric_limits<float>::quiet_NaN();
    auto outOfRange = std::make_shared<scene::Mesh>(*boxMesh());
    outOfRange->indices[5] = 1000000;
    auto noNumbers = std::make_shared<scene::Mesh>(*boxMesh());
    noNumbers->positions.assign(24, {nan, nan, nan});
    noNumbers->bounds.setEmpty();
    auto someNumbers = std::make_shared<scene::Mesh>(*boxMesh());
    someNumbers->positions[0] = {nan, nan, nan};
    someNumbers->bounds.setEmpty();
    const NodePtr node = stage.scene.add("node");
    setGeometries(*node, {std::make_shared<scene::Mesh>(), outOfRange, noNumbers, someNumbers, nullptr});
    node->setMaterial(unlitMaterial(Qt::red), 3, 0);
    EXPECT_EQ(stage.draw(0, 0), QColor(Qt::red));
    EXPECT_EQ(trianglesOf(stage), 12u);
}

TEST(SceneMirrorTest, PointsAndLinesAreDrawn)
{
    Stage stage;
    for (auto primitive : {scene::Mesh::Primitive::Points, scene::Mesh::Primitive::Lines}) {
        auto mesh = std::make_shared<scene::Mesh>();
        mesh->primitive = primitive;
        mesh->positions = {{-0.1f, 0, 0}, {0.1f, 0, 0}};
        mesh->colors = {{0, 1, 0, 1}, {0, 1, 0, 1}};
        mesh->indices = {0, 1};
        const NodePtr node = stage.scene.add("node", mesh, litMaterial(Qt::white));
        const QImage image = stage.draw();
        int green = 0;
        for (int y = 45; y < 55; ++y)
            for (int x = 45; x < 55; ++x)
                green += image.pixelColor(x, y) == QColor(Qt::green);
        EXPECT_GT(green, 0) << int(primitive);
        EXPECT_EQ(trianglesOf(stage), 0u);
        stage.scene.root->removeChildNode(node);
    }
}

TEST(SceneMirrorTest, AVeryDeepGraphIsDrawn)
{
    Stage stage;
    NodePtr node = stage.scene.add("0");
    for (int i = 1; i < 20000; ++i) {
        const NodePtr child = makeNode(std::to_string(i));
        node->addChildNode(child);
        node = child;
    }
    setGeometries(*node, {boxMesh()});
    node->setMaterial(unlitMaterial(Qt::red), 0, 0);
    EXPECT_EQ(stage.draw(0, 0), QColor(Qt::red));
}

TEST(SceneMirrorTest, ChangesFromThreeThreadsAreTakenWhileFramesAreDrawn)
{
    Stage stage;
    std::vector<NodePtr> nodes;
    for (int i = 0; i < 30; ++i)
        nodes.push_back(stage.scene.add("node" + std::to_string(i), boxMesh(0.2f), litMaterial(Qt::red)));
    const auto light = stage.scene.addLight("light", {});
    std::atomic<bool> stop{false};
    std::vector<std::thread> threads;
    for (int t = 0; t < 3; ++t)
        threads.emplace_back([&, t] {
            for (int i = 0; !stop; ++i) {
                const NodePtr& node = nodes[(i * 7 + t) % nodes.size()];
                moveTo(*node, (i % 10) * 0.1f, t * 0.1f, 0);
                node->setVisible(i % 3);
                i % 2 ? node->addToLayer("transparent") : node->removeFromLayer("transparent");
                if (i % 5 == 0) {
                    const NodePtr child = makeNode("child", boxMesh(0.1f));
                    node->addChildNode(child);
                    node->removeChildNode(child);
                }
                node->setMaterial(litMaterial(Qt::blue), 0, 0);
                light->setColor(1, 0.5f, (i % 10) * 0.1f);
                std::this_thread::yield();
            }
        });
    for (int frame = 0; frame < 100; ++frame)
        stage.draw();
    stop = true;
    for (std::thread& thread : threads)
        thread.join();
    for (const NodePtr& node : nodes)
        node->setVisible(false);
    EXPECT_TRUE(isBackground(stage.draw(0, 0)));
}
