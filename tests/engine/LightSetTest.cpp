#include "engine/light/LightManager.h"
#include "engine/light/RenderLight.h"
#include "engine/scenegraph/RenderSceneGraph.h"
#include "tests/engine/Stage.h"

#include <gtest/gtest.h>

#include <limits>

using namespace halvern;
using namespace halvern::test;
using Kind = scene::LightSource::Kind;

namespace {

boost::shared_ptr<engine::light::LightManager> lightsOf(Stage& stage)
{
    return boost::dynamic_pointer_cast<engine::scenegraph::RenderSceneGraph>(stage.window->getRenderScene())
        ->getLightManager();
}

scene::LightSource sourceOf(Kind kind)
{
    scene::LightSource source;
    source.kind = kind;
    return source;
}

int brightness(const QColor& color)
{
    return color.red() + color.green() + color.blue();
}

/// A camera before a white wall that a light of the kind shines on from the camera's side.
struct Wall : Stage
{
    explicit Wall(Kind kind)
    {
        wall = scene.add("wall", boxMesh(3), litMaterial(Qt::white));
        moveTo(*wall, 0, 0, -3);
        dark = draw();
        light = scene.addLight("light", sourceOf(kind));
        lightNode = scene.manager->getNodeByID("light.node");
        moveTo(*lightNode, 0, 0, 2);
    }

    NodePtr wall;
    NodePtr lightNode;
    QImage dark;
    boost::shared_ptr<scene::Light> light;
};

} // namespace

TEST(LightSetTest, CountsTheLightsInUse)
{
    Stage stage;
    stage.draw();
    const auto lights = lightsOf(stage);
    ASSERT_TRUE(lights);
    EXPECT_EQ(lights->getLightCount(), 0u);
    EXPECT_FALSE(lights->getLightAt(0));
    stage.scene.addLight("first", {});
    stage.scene.addLight("second", {});
    stage.draw();
    EXPECT_EQ(lights->getLightCount(), 2u);
    EXPECT_TRUE(lights->getLightAt(1));
    EXPECT_FALSE(lights->getLightAt(2));
    EXPECT_FALSE(lights->getLightAt(0xFFFFFFFF));
}

TEST(LightSetTest, KeepsTheObjectOfALightThatStays)
{
    Stage stage;
    stage.scene.addLight("first", {});
    stage.draw();
    const auto before = lightsOf(stage)->getLightAt(0);
    stage.scene.addLight("second", {});
    stage.draw();
    EXPECT_EQ(lightsOf(stage)->getLightAt(0), before);
}

TEST(LightSetTest, UsesTheFirstSixteenLights)
{
    Stage stage;
    stage.scene.add("cube", boxMesh(), litMaterial(Qt::white))->addToLayer("cast_shadow");
    for (int i = 0; i < 20; ++i)
        stage.scene.addLight("light" + std::to_string(i), {});
    EXPECT_FALSE(isBackground(stage.draw(0, 0)));
    EXPECT_EQ(lightsOf(stage)->getLightCount(), 16u);
}

TEST(LightSetTest, EveryKindOfLightShines)
{
    for (Kind kind : {Kind::Point, Kind::Directional, Kind::Spot, Kind::Head}) {
        Wall wall(kind);
        EXPECT_GT(brightness(wall.draw(0, 0)), brightness(pixel(wall.dark, 0, 0)) + 100) << int(kind);
    }
}

TEST(LightSetTest, ASpotLightShinesInItsConeOnly)
{
    Wall wall(Kind::Spot);
    auto source = sourceOf(Kind::Spot);
    source.innerCone = 0.1f;
    source.outerCone = 0.2f;
    setLightSource(*wall.light, source);
    const QImage image = wall.draw();
    EXPECT_GT(brightness(pixel(image, 0, 0)), brightness(pixel(wall.dark, 0, 0)) + 100);
    EXPECT_TRUE(isNear(pixel(image, 45, 45), pixel(wall.dark, 45, 45)));
}

TEST(LightSetTest, AttenuationDarkensWithTheDistance)
{
    Wall wall(Kind::Point);
    const int full = brightness(wall.draw(0, 0));
    auto source = sourceOf(Kind::Point);
    source.attenuation = {1, 0, 1};
    setLightSource(*wall.light, source);
    EXPECT_LT(brightness(wall.draw(0, 0)), full - 50);
}

TEST(LightSetTest, AChangedColourShowsInTheNextFrame)
{
    Wall wall(Kind::Head);
    const QColor white = wall.draw(0, 0);
    EXPECT_LT(white.red() - white.green(), 10);
    wall.light->setColor(1, 0, 0);
    const QColor red = wall.draw(0, 0);
    EXPECT_GT(red.red() - red.green(), 50);
}

TEST(LightSetTest, IntensityMultipliesTheColour)
{
    Wall wall(Kind::Head);
    auto source = sourceOf(Kind::Head);
    source.intensity = 0;
    setLightSource(*wall.light, source);
    EXPECT_TRUE(isNear(wall.draw(0, 0), pixel(wall.dark, 0, 0)));
}

TEST(LightSetTest, ALightMovesWithItsNode)
{
    Wall wall(Kind::Directional);
    const int before = brightness(wall.draw(0, 0));
    lookFrom(*wall.lightNode, {0, 0, -8}, {0, 0, 0});
    EXPECT_LT(brightness(wall.draw(0, 0)), before - 100);
}

TEST(LightSetTest, AHeadLightFollowsTheEye)
{
    Wall wall(Kind::Head);
    const QColor front = wall.draw(0, 0);
    lookFrom(*wall.scene.manager->getNodeByID("camera"), {0, 0, -11}, {0, 0, -3});
    EXPECT_TRUE(isNear(wall.draw(0, 0), front, 12));
}

TEST(LightSetTest, TheLightOfAHiddenNodeIsOff)
{
    Wall wall(Kind::Head);
    wall.draw();
    wall.lightNode->setVisible(false);
    EXPECT_TRUE(isNear(wall.draw(0, 0), pixel(wall.dark, 0, 0)));
    EXPECT_EQ(lightsOf(wall)->getLightCount(), 0u);
}

TEST(LightSetTest, ASceneWithoutLightIsNotBlack)
{
    Stage stage;
    stage.scene.add("cube", boxMesh(), litMaterial(Qt::white));
    EXPECT_GT(brightness(stage.draw(0, 0)), 150);
}

TEST(LightSetTest, MetalIsNotBlack)
{
    Wall wall(Kind::Head);
    changeMaterial(*wall.wall->getMaterial(0, 0), [](auto& values) {
        values.metalness = 1;
        values.roughness = 0.3f;
    });
    EXPECT_GT(brightness(wall.draw(30, 30)), 100);
}

TEST(LightSetTest, BothSidesOfASurfaceAreLit)
{
    Stage stage;
    const NodePtr plane = stage.scene.add("plane", groundMesh(1), litMaterial(Qt::white));
    plane->setRotation(Eigen::Affine3f(Eigen::AngleAxisf(float(M_PI_2), Eigen::Vector3f::UnitX())));
    stage.scene.addLight("head", sourceOf(Kind::Head));
    const int front = brightness(stage.draw(0, 0));
    plane->setRotation(Eigen::Affine3f(Eigen::AngleAxisf(-float(M_PI_2), Eigen::Vector3f::UnitX())));
    EXPECT_NEAR(brightness(stage.draw(0, 0)), front, 20);
    EXPECT_GT(front, 300);
}

TEST(LightSetTest, AMeshWithoutNormalsIsShadedByItsFacets)
{
    Stage stage;
    auto bare = std::make_shared<scene::Mesh>(*boxMesh());
    bare->normals.clear();
    stage.scene.addLight("head", sourceOf(Kind::Head));
    const NodePtr node = stage.scene.add("cube", boxMesh(), litMaterial(Qt::white));
    const QImage withNormals = stage.draw();
    setGeometries(*node, {bare});
    EXPECT_TRUE(isNear(stage.draw(0, 0), pixel(withNormals, 0, 0), 6));
}

TEST(LightSetTest, NonsenseInALightBreaksNothing)
{
    Wall wall(Kind::Spot);
    const float nan = std::numeric_limits<float>::quiet_NaN();
    auto source = sourceOf(Kind::Spot);
    source.direction.setZero();
    source.position.fill(nan);
    source.intensity = nan;
    setLightSource(*wall.light, source);
    wall.light->setColor(nan, nan, nan);
    EXPECT_TRUE(isNear(wall.draw(0, 0), pixel(wall.dark, 0, 0)));
}
