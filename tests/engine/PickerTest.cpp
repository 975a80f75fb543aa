#include "engine/window/ILayout.h"
#include "tests/engine/Stage.h"

#include <boost/make_shared.hpp>

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

using namespace halvern;
using namespace halvern::test;

namespace {

/// The answers to a pick in the next frame.
std::vector<std::string> pickAt(Stage& stage, int x, int y, const std::string& tag)
{
    stage.scene.events->clear();
    stage.window->getLayout()->requestPick(x, y, tag);
    stage.window->update();
    return stage.scene.events->getData("ObjectPicked");
}

using Answers = std::vector<std::string>;

MeshPtr lineMesh(scene::Mesh::Primitive primitive)
{
    auto mesh = std::make_shared<scene::Mesh>();
    mesh->primitive = primitive;
    mesh->positions = {{-1, 0, 0}, {1, 0, 0}};
    mesh->indices = {0, 1};
    for (const Eigen::Vector3f& position : mesh->positions)
        mesh->bounds.extend(position);
    return mesh;
}

} // namespace

TEST(PickerTest, AHitNamesNodeGeometrySlotPlaceAndTag)
{
    Stage stage;
    const NodePtr node = stage.scene.add("node");
    setGeometries(*node, {boxMesh(0.1f), boxMesh(1)});
    EXPECT_EQ(pickAt(stage, 50, 50, "TAG"), Answers{"node, 1, 0, 50, 50, TAG"});
}

TEST(PickerTest, AMissHasThreeEmptyPieces)
{
    Stage stage;
    stage.scene.add("node", boxMesh());
    EXPECT_EQ(pickAt(stage, 5, 6, "TAG"), Answers{", , , 5, 6, TAG"});
    EXPECT_EQ(pickAt(stage, -100, 5000, "TAG"), Answers{", , , -100, 5000, TAG"});
}

TEST(PickerTest, AnswersComeInOrderFromUpdateAndNotFromTheRequest)
{
    Stage stage;
    stage.scene.add("node", boxMesh());
    stage.window->getLayout()->requestPick(50, 50, "first");
    stage.window->getLayout()->requestPick(0, 0, "second");
    EXPECT_EQ(stage.scene.events->getCount("ObjectPicked"), 0u);
    EXPECT_EQ(stage.scene.events->getCount("SyncScene"), 2u);
    stage.window->update();
    EXPECT_EQ(stage.scene.events->getData("ObjectPicked"),
              (Answers{"node, 0, 0, 50, 50, first", ", , , 0, 0, second"}));
    stage.window->update();
    EXPECT_EQ(stage.scene.events->getCount("ObjectPicked"), 2u);
    EXPECT_EQ(stage.scene.events->getCount("SyncScene"), 2u);
}

TEST(PickerTest, AWindowWithoutASceneAnswersWithAMiss)
{
    const auto events = boost::make_shared<SynchronousEventManager>();
    engine::window::Window window(events, "window");
    window.getLayout()->requestPick(1, 2, "TAG");
    window.update();
    EXPECT_EQ(events->getData("ObjectPicked"), Answers{", , , 1, 2, TAG"});
}

TEST(PickerTest, ThePixelIsTheOneThatIsPainted)
{
    Stage stage;
    const NodePtr node = stage.scene.add("node", boxMesh(0.3f), unlitMaterial(Qt::red));
    moveTo(*node, 0.7f, -0.4f, 0);
    const QImage image = stage.draw();
    // Hosts send the height less the distance from the top.
    for (int row = 0; row < 100; row += 3)
        for (int column = 0; column < 100; column += 3) {
            const bool painted = image.pixelColor(column, row) == QColor(Qt::red);
            const bool picked = pickAt(stage, column, 100 - row, "TAG").front()[0] == 'n';
            EXPECT_EQ(picked, painted) << column << ' ' << row;
        }
}

TEST(PickerTest, TheNearestIsHit)
{
    Stage stage;
    moveTo(*stage.scene.add("far", boxMesh()), 0, 0, -3);
    stage.scene.add("near", boxMesh(0.5f));
    EXPECT_EQ(pickAt(stage, 50, 50, "T"), Answers{"near, 0, 0, 50, 50, T"});
}

TEST(PickerTest, WhatIsDrawnOverTheRestIsHitFirst)
{
    Stage stage;
    moveTo(*stage.scene.add("over", boxMesh()), 0, 0, -3);
    stage.scene.add("near", boxMesh(0.5f));
    stage.scene.manager->getNodeByID("over")->addToLayer("post_render");
    EXPECT_EQ(pickAt(stage, 50, 50, "T"), Answers{"over, 0, 0, 50, 50, T"});
}

TEST(PickerTest, HiddenNodesAreNotHit)
{
    Stage stage;
    const NodePtr top = stage.scene.add("top");
    top->addChildNode(makeNode("node", boxMesh()));
    EXPECT_EQ(pickAt(stage, 50, 50, "T"), Answers{"node, 0, 0, 50, 50, T"});
    top->addToLayer("hidden");
    EXPECT_EQ(pickAt(stage, 50, 50, "T"), Answers{", , , 50, 50, T"});
    top->removeFromLayer("hidden");
    top->setVisible(false);
    EXPECT_EQ(pickAt(stage, 50, 50, "T"), Answers{", , , 50, 50, T"});
}

TEST(PickerTest, WhatTheNearPlaneCutsOffIsNotHit)
{
    Stage stage;
    moveTo(*stage.scene.add("far", boxMesh()), 0, 0, -3);
    stage.scene.add("near", boxMesh(0.5f));
    stage.scene.manager->getCameraInstanceAt(0)->getCamera()->setZNear(5.6f);
    EXPECT_EQ(pickAt(stage, 50, 50, "T"), Answers{"far, 0, 0, 50, 50, T"});
}

TEST(PickerTest, TheTransformsOfTheParentsCount)
{
    Stage stage;
    const NodePtr top = stage.scene.add("top");
    top->addChildNode(makeNode("node", boxMesh(0.1f)));
    EXPECT_EQ(pickAt(stage, 80, 50, "T"), Answers{", , , 80, 50, T"});
    top->setScale({20, 1, 1});
    EXPECT_EQ(pickAt(stage, 80, 50, "T"), Answers{"node, 0, 0, 80, 50, T"});
}

TEST(PickerTest, PointsAndLinesAreHitWithinAFewPixels)
{
    Stage stage;
    const NodePtr node = stage.scene.add("node", lineMesh(scene::Mesh::Primitive::Lines));
    EXPECT_EQ(pickAt(stage, 50, 52, "T"), Answers{"node, 0, 0, 50, 52, T"});
    EXPECT_EQ(pickAt(stage, 50, 60, "T"), Answers{", , , 50, 60, T"});
    setGeometries(*node, {lineMesh(scene::Mesh::Primitive::Points)});
    EXPECT_EQ(pickAt(stage, 50, 50, "T"), Answers{", , , 50, 50, T"});
    EXPECT_EQ(pickAt(stage, 74, 51, "T"), Answers{"node, 0, 0, 74, 51, T"});
}

TEST(PickerTest, AnyThreadMayAsk)
{
    Stage stage;
    stage.scene.add("node", boxMesh());
    const auto layout = stage.window->getLayout();
    std::vector<std::thread> threads;
    for (int t = 0; t < 3; ++t)
        threads.emplace_back([&] {
            for (int i = 0; i < 100; ++i)
                layout->requestPick(50, 50, "T");
        });
    for (int i = 0; i < 50; ++i)
        stage.window->update();
    for (std::thread& thread : threads)
        thread.join();
    stage.window->update();
    EXPECT_EQ(stage.scene.events->getCount("ObjectPicked"), 300u);
}

TEST(PickerTest, ALayoutOutlivesItsWindow)
{
    Scene scene;
    auto window = std::make_unique<engine::window::Window>(scene.events, "window");
    const auto layout = window->getLayout();
    window.reset();
    layout->requestPick(1, 2, "TAG");
    EXPECT_EQ(scene.events->getCount("SyncScene"), 0u);
}
