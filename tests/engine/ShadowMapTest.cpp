#include "engine/fx/FXRenderTarget.h"
#include "engine/light/LightManager.h"
#include "engine/light/RenderLight.h"
#include "engine/scenegraph/RenderSceneGraph.h"
#include "tests/engine/Stage.h"

#include <gtest/gtest.h>

using namespace halvern;
using namespace halvern::test;
using Kind = scene::LightSource::Kind;

namespace {

boost::shared_ptr<engine::light::RenderLight> lightAt(Stage& stage, unsigned int index)
{
    return boost::dynamic_pointer_cast<engine::scenegraph::RenderSceneGraph>(stage.window->getRenderScene())
        ->getLightManager()
        ->getLightAt(index);
}

int brightness(const QColor& color)
{
    return color.red() + color.green() + color.blue();
}

/// A box over the ground, seen from above, with a light above the box. The box is on the left of the
/// picture's middle, and the light shines slantwise, so that its shadow falls into the middle.
struct Ground : Stage
{
    explicit Ground(Kind kind)
    {
        lookFrom(*scene.manager->getNodeByID("camera"), {0, 8, 0}, {0, 0, 0});
        scene.add("ground", groundMesh(4), litMaterial(Qt::white));
        box = scene.add("box", boxMesh(0.4f), litMaterial(Qt::white));
        moveTo(*box, -1.5f, 1.5f, 0);
        scene::LightSource source;
        source.kind = kind;
        source.innerCone = 0.6f;
        source.outerCone = 0.8f;
        light = scene.addLight("light", source);
        lookFrom(*scene.manager->getNodeByID("light.node"), {-3, 3, 0}, {0, 0, 0});
    }

    int middle() { return brightness(draw(0, 0)); }

    NodePtr box;
    boost::shared_ptr<scene::Light> light;
};

} // namespace

TEST(ShadowMapTest, ACasterDarkensTheGround)
{
    for (Kind kind : {Kind::Point, Kind::Directional, Kind::Spot}) {
        Ground ground(kind);
        const int lit = ground.middle();
        ground.box->addToLayer("cast_shadow");
        EXPECT_LT(ground.middle(), lit - 80) << int(kind);
        ground.box->removeFromLayer("cast_shadow");
        EXPECT_EQ(ground.middle(), lit) << int(kind);
    }
}

TEST(ShadowMapTest, GroundBesideTheShadowStaysLit)
{
    for (Kind kind : {Kind::Point, Kind::Directional, Kind::Spot}) {
        Ground ground(kind);
        const QImage lit = ground.draw();
        ground.box->addToLayer("cast_shadow");
        const QImage shadowed = ground.draw();
        for (const QPoint place : {QPoint(0, 20), QPoint(0, -20), QPoint(45, 0), QPoint(-40, -40)})
            EXPECT_TRUE(isNear(pixel(shadowed, place.x(), place.y()), pixel(lit, place.x(), place.y())))
                << int(kind);
    }
}

TEST(ShadowMapTest, ACasterBelowACastingNodeCasts)
{
    Ground ground(Kind::Directional);
    const int lit = ground.middle();
    ground.scene.root->addToLayer("cast_shadow");
    EXPECT_LT(ground.middle(), lit - 80);
}

TEST(ShadowMapTest, ASurfaceDoesNotShadowItself)
{
    for (Kind kind : {Kind::Point, Kind::Directional, Kind::Spot}) {
        Ground ground(kind);
        ground.scene.root->removeChildNode(ground.box);
        const QImage lit = ground.draw();
        ground.scene.root->addToLayer("cast_shadow");
        const QImage casting = ground.draw();
        for (int x = -25; x <= 25; x += 5)
            for (int y = -25; y <= 25; y += 5)
                EXPECT_TRUE(isNear(pixel(casting, x, y), pixel(lit, x, y))) << int(kind) << x << ' ' << y;
    }
}

TEST(ShadowMapTest, TheShadowFollowsTheCasterAndTheLight)
{
    Ground ground(Kind::Directional);
    ground.box->addToLayer("cast_shadow");
    const int dark = ground.middle();
    moveTo(*ground.box, -1.5f, 1.5f, 2);
    EXPECT_GT(ground.middle(), dark + 80);
    moveTo(*ground.box, -1.5f, 1.5f, 0);
    EXPECT_EQ(ground.middle(), dark);
    lookFrom(*ground.scene.manager->getNodeByID("light.node"), {3, 3, 0}, {0, 0, 0});
    EXPECT_GT(ground.middle(), dark + 80);
}

TEST(ShadowMapTest, AHiddenCasterThrowsNoShadow)
{
    Ground ground(Kind::Directional);
    ground.box->addToLayer("cast_shadow");
    const int dark = ground.middle();
    ground.box->setVisible(false);
    EXPECT_GT(ground.middle(), dark + 80);
}

TEST(ShadowMapTest, AMapIsADepthTextureForComparison)
{
    Ground ground(Kind::Directional);
    ground.draw();
    EXPECT_FALSE(lightAt(ground, 0)->isInited());
    ground.box->addToLayer("cast_shadow");
    ground.draw();
    const auto light = lightAt(ground, 0);
    EXPECT_TRUE(light->isInited());
    ASSERT_TRUE(light->getShadowMap());
    const unsigned int name = light->getShadowMap()->getTextureID();
    ASSERT_TRUE(glIsTexture(name));
    int format = 0;
    int mode = 0;
    int width = 0;
    glBindTexture(GL_TEXTURE_2D, name);
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_INTERNAL_FORMAT, &format);
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_WIDTH, &width);
    glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_COMPARE_MODE, &mode);
    EXPECT_EQ(format, GL_DEPTH_COMPONENT24);
    EXPECT_EQ(width, 1024);
    EXPECT_EQ(mode, GL_COMPARE_R_TO_TEXTURE);
}

TEST(ShadowMapTest, TheFirstEightLightsHaveAMap)
{
    Ground ground(Kind::Directional);
    ground.box->addToLayer("cast_shadow");
    scene::LightSource source;
    source.kind = Kind::Directional;
    for (int i = 1; i < 10; ++i)
        ground.scene.addLight("light" + std::to_string(i), source);
    ground.draw();
    for (unsigned int i = 0; i < 10; ++i)
        EXPECT_EQ(lightAt(ground, i)->isInited(), i < 8) << i;
}

TEST(ShadowMapTest, AHeadLightHasNone)
{
    Ground ground(Kind::Head);
    ground.box->addToLayer("cast_shadow");
    ground.draw();
    EXPECT_FALSE(lightAt(ground, 0)->isInited());
    EXPECT_FALSE(lightAt(ground, 0)->getShadowMap());
}

TEST(ShadowMapTest, TheMapOfALightThatIsGoneNamesNothing)
{
    Ground ground(Kind::Directional);
    ground.box->addToLayer("cast_shadow");
    ground.draw();
    const auto map = lightAt(ground, 0)->getShadowMap();
    ground.scene.root->removeChildNode(ground.scene.manager->getNodeByID("light.node"));
    ground.draw();
    EXPECT_EQ(map->getTextureID(), 0u);
}
