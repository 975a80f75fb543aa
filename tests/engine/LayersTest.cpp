#include "tests/engine/Stage.h"

#include <gtest/gtest.h>

using namespace halvern;
using namespace halvern::test;

namespace {

constexpr int half = 20; // pixels, well within a cube in the middle

} // namespace

TEST(LayersTest, AHiddenNodeIsNotDrawnAndNeitherIsWhatIsBelowIt)
{
    Stage stage;
    const NodePtr top = stage.scene.add("top");
    top->addChildNode(makeNode("cube", boxMesh(), unlitMaterial(Qt::red)));
    EXPECT_EQ(stage.draw(0, 0), QColor(Qt::red));
    top->addToLayer("hidden");
    EXPECT_TRUE(isBackground(stage.draw(0, 0)));
    top->removeFromLayer("hidden");
    EXPECT_EQ(stage.draw(0, 0), QColor(Qt::red));
}

TEST(LayersTest, TheVisibleFlagHidesANodeAndWhatIsBelowIt)
{
    Stage stage;
    const NodePtr top = stage.scene.add("top");
    top->addChildNode(makeNode("cube", boxMesh(), unlitMaterial(Qt::red)));
    top->setVisible(false);
    EXPECT_TRUE(isBackground(stage.draw(0, 0)));
    top->setVisible(true);
    EXPECT_EQ(stage.draw(0, 0), QColor(Qt::red));
}

TEST(LayersTest, FlagAndLayerAreTwoReasonsToHide)
{
    Stage stage;
    const NodePtr cube = stage.scene.add("cube", boxMesh(), unlitMaterial(Qt::red));
    cube->setVisible(false);
    cube->addToLayer("hidden");
    cube->setVisible(true);
    EXPECT_TRUE(isBackground(stage.draw(0, 0)));
    cube->removeFromLayer("hidden");
    EXPECT_EQ(stage.draw(0, 0), QColor(Qt::red));
}

TEST(LayersTest, ATransparentNodeLetsShineThroughWhatIsBehindIt)
{
    Stage stage;
    const NodePtr back = stage.scene.add("back", boxMesh(), unlitMaterial(Qt::blue));
    moveTo(*back, 0, 0, -4);
    const NodePtr top = stage.scene.add("top");
    top->addChildNode(makeNode("front", boxMesh(0.5f), unlitMaterial(Qt::red)));
    EXPECT_EQ(stage.draw(0, 0), QColor(Qt::red));
    top->addToLayer("transparent");
    const QColor mixed = stage.draw(0, 0);
    EXPECT_GT(mixed.red(), 60);
    EXPECT_GT(mixed.blue(), 20);
    EXPECT_EQ(mixed.green(), 0);
    EXPECT_EQ(mixed.alpha(), 255);
}

TEST(LayersTest, TransparentNodesAreDrawnFromBackToFront)
{
    Stage stage;
    const NodePtr near = stage.scene.add("near", groundMesh(1), unlitMaterial(Qt::red));
    const NodePtr far = stage.scene.add("far", groundMesh(1), unlitMaterial(Qt::green));
    for (const NodePtr& node : {near, far}) {
        node->setRotation(Eigen::Affine3f(Eigen::AngleAxisf(float(M_PI_2), Eigen::Vector3f::UnitX())));
        node->addToLayer("transparent");
    }
    moveTo(*far, 0, 0, -1);
    const QColor redFirst = stage.draw(0, 0);
    moveTo(*far, 0, 0, 1);
    const QColor greenFirst = stage.draw(0, 0);
    EXPECT_GT(redFirst.red(), redFirst.green());
    EXPECT_GT(greenFirst.green(), greenFirst.red());
}

TEST(LayersTest, OpaqueThingsCoverTransparentOnesBehindThem)
{
    Stage stage;
    stage.scene.add("front", boxMesh(0.5f), unlitMaterial(Qt::red));
    const NodePtr back = stage.scene.add("back", boxMesh(), unlitMaterial(Qt::blue));
    moveTo(*back, 0, 0, -4);
    back->addToLayer("transparent");
    EXPECT_EQ(stage.draw(0, 0), QColor(Qt::red));
}

TEST(LayersTest, AMaterialThatBlendsIsSortedToo)
{
    Stage stage;
    const NodePtr front = stage.scene.add("front", boxMesh(0.5f), unlitMaterial(QColor(255, 0, 0, 128)));
    changeMaterial(*front->getMaterial(0, 0),
                   [](auto& values) { values.alpha = scene::StandardMaterial::Alpha::Blend; });
    const NodePtr back = stage.scene.add("back", boxMesh(), unlitMaterial(Qt::blue));
    moveTo(*back, 0, 0, -4);
    const QColor mixed = stage.draw(0, 0);
    EXPECT_GT(mixed.red(), 100);
    EXPECT_GT(mixed.blue(), 20);
}

TEST(LayersTest, PostRenderIsDrawnOverTheRest)
{
    Stage stage;
    stage.scene.add("front", boxMesh(), unlitMaterial(Qt::red));
    const NodePtr top = stage.scene.add("top");
    const NodePtr back = makeNode("back", boxMesh(), unlitMaterial(Qt::blue));
    top->addChildNode(back);
    moveTo(*back, 0, 0, -4);
    EXPECT_EQ(stage.draw(0, 0), QColor(Qt::red));
    top->addToLayer("post_render");
    EXPECT_EQ(stage.draw(0, 0), QColor(Qt::blue));
    EXPECT_EQ(stage.draw(half, half), QColor(Qt::red));
}

TEST(LayersTest, PostRenderCoversItselfByDepth)
{
    Stage stage;
    const NodePtr top = stage.scene.add("top");
    top->addToLayer("post_render");
    const NodePtr front = makeNode("front", boxMesh(0.5f), unlitMaterial(Qt::green));
    const NodePtr back = makeNode("back", boxMesh(), unlitMaterial(Qt::blue));
    top->addChildNode(front);
    top->addChildNode(back);
    moveTo(*front, 0, 0, 1);
    moveTo(*back, 0, 0, -2);
    EXPECT_EQ(stage.draw(0, 0), QColor(Qt::green));
}

TEST(LayersTest, PostRenderIsDrawnOverTransparentThings)
{
    Stage stage;
    const NodePtr front = stage.scene.add("front", boxMesh(), unlitMaterial(Qt::red));
    front->addToLayer("transparent");
    const NodePtr back = stage.scene.add("back", boxMesh(), unlitMaterial(Qt::blue));
    back->addToLayer("post_render");
    moveTo(*back, 0, 0, -4);
    EXPECT_EQ(stage.draw(0, 0), QColor(Qt::blue));
}

TEST(LayersTest, UnknownLayersChangeNothing)
{
    Stage stage;
    const NodePtr cube = stage.scene.add("cube", boxMesh(), unlitMaterial(Qt::red));
    cube->addToLayer("Hidden");
    cube->addToLayer("anything");
    EXPECT_EQ(stage.draw(0, 0), QColor(Qt::red));
}
