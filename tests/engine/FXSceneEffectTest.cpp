#include "engine/fx/FXRenderTarget.h"
#include "tests/engine/FXStage.h"

#include <gtest/gtest.h>

#include <GL/gl.h>
#include <GL/glext.h>

using namespace halvern;
using namespace halvern::test;

namespace {

/// A cube of one colour in the middle.
struct Shown : FXStage
{
    explicit Shown(const QColor& color = QColor(100, 50, 200), Eigen::Vector2i size = {100, 100}) :
        FXStage(size)
    {
        node = scene.add("cube", boxMesh(), unlitMaterial(color));
    }

    NodePtr node;
};

} // namespace

TEST(FXSceneEffectTest, ItIsDrawnOverThePicture)
{
    Shown shown;
    const EffectFile swap(sceneEffect("texture(sceneColor, place).gbra"));
    shown.addSceneEffect(swap.path());
    EXPECT_TRUE(shown.lastAdded);
    const QImage image = shown.draw();
    EXPECT_TRUE(isNear(pixel(image, 0, 0), QColor(50, 200, 100)));
    EXPECT_TRUE(isNear(pixel(image, 45, 45), QColor::fromRgbF(0.17, 0.19, 0.16), 1));
}

TEST(FXSceneEffectTest, StagesAreDrawnInTheirOrder)
{
    const EffectFile half(sceneEffect("texture(sceneColor, place) * vec4(0.5, 0.5, 0.5, 1.0)"));
    const EffectFile less(sceneEffect("texture(sceneColor, place) - vec4(0.2, 0.2, 0.2, 0.0)"));
    Shown halved(QColor(204, 204, 204));
    halved.addSceneEffect(half.path());
    halved.addSceneEffect(less.path());
    EXPECT_TRUE(isNear(halved.draw(0, 0), QColor::fromRgbF(0.2, 0.2, 0.2)));
    Shown lessened(QColor(204, 204, 204));
    lessened.addSceneEffect(less.path());
    lessened.addSceneEffect(half.path());
    EXPECT_TRUE(isNear(lessened.draw(0, 0), QColor::fromRgbF(0.3, 0.3, 0.3)));
    lessened.addSceneEffect(less.path()); // a third, and the first effect again
    EXPECT_TRUE(isNear(lessened.draw(0, 0), QColor::fromRgbF(0.1, 0.1, 0.1)));
}

TEST(FXSceneEffectTest, AStageReadsThePictureBeforeItAndNotItsOwn)
{
    const EffectFile mirror(sceneEffect("texture(sceneColor, vec2(1.0 - place.x, place.y))"));
    Shown shown(Qt::red);
    moveTo(*shown.node, -1.5f, 0, 0);
    for (bool isMirrored : {true, false, true, false}) {
        shown.addSceneEffect(mirror.path());
        const QImage image = shown.draw();
        EXPECT_EQ(pixel(image, isMirrored ? 35 : -35, 0), QColor(Qt::red));
        EXPECT_TRUE(isBackground(pixel(image, isMirrored ? -35 : 35, 0)));
    }
}

TEST(FXSceneEffectTest, AParameterReachesThePictureInTheNextFrame)
{
    const EffectFile file(sceneEffect("vec4(tint, 1.0)", "float3 tint = {1, 0, 0};"));
    Shown shown;
    const MaterialPtr first = shown.addSceneEffect(file.path());
    EXPECT_EQ(shown.draw(0, 0), QColor(Qt::red));
    shown.setFloats(first, "tint", {0, 1, 0});
    EXPECT_EQ(shown.draw(0, 0), QColor(Qt::green));
    shown.addSceneEffect(file.path()); // another material, with the default
    EXPECT_EQ(shown.draw(0, 0), QColor(Qt::red));
}

TEST(FXSceneEffectTest, TheTechniqueSwitches)
{
    const EffectFile file(
        "string ScriptClass = \"scene\";\n"
        "technique red { fragment { void main() { fragment = vec4(1.0, 0.0, 0.0, 1.0); } } }\n"
        "technique green { pass a { fragment { void main() { fragment = vec4(0.0, 1.0, 0.0, 1.0); } } }\n"
        "pass { fragment { void main() { fragment = texture(a, place); } } } }\n");
    Shown shown;
    const MaterialPtr material = shown.addSceneEffect(file.path());
    EXPECT_EQ(shown.draw(0, 0), QColor(Qt::red));
    shown.fxMaterial(material)->setTechnique(1);
    EXPECT_EQ(shown.draw(0, 0), QColor(Qt::green));
    EXPECT_TRUE(shown.messages().empty());
}

TEST(FXSceneEffectTest, ThePassesReadWhatTheEarlierOnesDrew)
{
    const EffectFile file(
        "string ScriptClass = \"scene\";\ntechnique t {\n"
        "pass small { size = 0.1; fragment { void main() { fragment = vec4(texture(sceneColor, place).r, "
        "0.5, 0.0, 1.0); } } }\n"
        "pass other { fragment { void main() { fragment = vec4(texture(small, place).rg, 1.0, 1.0); } } }\n"
        "pass { fragment { void main() { fragment = vec4(texture(other, place).r, texture(small, place).g,\n"
        "float(textureSize(small, 0).x) / 100.0, 1.0); } } } }");
    Shown shown(QColor(204, 0, 0));
    shown.addSceneEffect(file.path());
    EXPECT_TRUE(isNear(shown.draw(0, 0), QColor::fromRgbF(0.8, 0.5, 0.1)));
}

TEST(FXSceneEffectTest, ThePlaceOfEachPixelIsKnown)
{
    // The front of the cube is at a distance of 4, the middle of the picture on the axis.
    const EffectFile file(sceneEffect("vec4(depthAt(place) / 8.0, positionAt(place).xy + 0.5, 1.0)"));
    Shown shown;
    shown.addSceneEffect(file.path());
    EXPECT_TRUE(isNear(shown.draw(0, 0), QColor(128, 130, 126), 4));
    const EffectFile background(sceneEffect("vec4(vec3(isBackground(place)), 1.0)"));
    shown.addSceneEffect(background.path());
    const QImage image = shown.draw();
    EXPECT_EQ(pixel(image, 0, 0), QColor(Qt::black));
    EXPECT_EQ(pixel(image, 45, 45), QColor(Qt::white));
}

TEST(FXSceneEffectTest, AResizeKeepsItRight)
{
    const EffectFile cross(
        "string ScriptClass = \"scene\";\ntechnique t {\n"
        "pass small { size = 0.5; fragment { void main() { fragment = texture(sceneColor, place); } } }\n"
        "pass { fragment { void main() { fragment = vec4(texture(small, place).rg, viewSize.x / 400.0, 1.0); "
        "} } } }");
    const EffectFile same(sceneEffect("texture(sceneColor, place)"));
    Shown shown(QColor(255, 255, 0));
    shown.addSceneEffect(cross.path());
    shown.addSceneEffect(same.path());
    for (const Eigen::Vector2i& size : {Eigen::Vector2i(100, 100), Eigen::Vector2i(200, 150),
                                        Eigen::Vector2i(1, 1), Eigen::Vector2i(333, 77)}) {
        shown.window->resize(size);
        const QImage image = shown.draw();
        EXPECT_EQ(image.size(), QSize(size.x(), size.y()));
        EXPECT_TRUE(
            isNear(image.pixelColor(size.x() / 2, size.y() / 2), QColor::fromRgbF(1, 1, size.x() / 400.0)))
            << size.transpose();
    }
}

TEST(FXSceneEffectTest, ItWorksWithoutAScene)
{
    const EffectFile file(sceneEffect("vec4(0.0, 1.0, 0.0, 1.0)"));
    Shown shown;
    shown.addSceneEffect(file.path());
    shown.draw();
    shown.window->attach({});
    EXPECT_EQ(shown.draw(0, 0), QColor(Qt::green));
}

TEST(FXSceneEffectTest, ItStaysWhenAnotherSceneIsAttached)
{
    const EffectFile file(sceneEffect("texture(sceneColor, place).brga"));
    Shown shown;
    shown.addSceneEffect(file.path());
    shown.draw();
    Scene other;
    other.add("cube", boxMesh(), unlitMaterial(QColor(10, 20, 30)));
    shown.window->attach(other.manager);
    EXPECT_TRUE(isNear(shown.draw(0, 0), QColor(30, 10, 20)));
}

TEST(FXSceneEffectTest, WhatIsRenderedOverTheRestIsOverTheEffects)
{
    const EffectFile file(sceneEffect("vec4(0.0, 0.0, 1.0, 1.0)"));
    Shown shown(Qt::red);
    shown.addSceneEffect(file.path());
    EXPECT_EQ(shown.draw(0, 0), QColor(Qt::blue));
    shown.node->addToLayer("post_render");
    const QImage image = shown.draw();
    EXPECT_EQ(pixel(image, 0, 0), QColor(Qt::red));
    EXPECT_EQ(pixel(image, 45, 0), QColor(Qt::blue));
}

TEST(FXSceneEffectTest, TheSelectionIsOutlinedOverTheEffects)
{
    const EffectFile file(sceneEffect("vec4(0.0, 0.0, 0.0, 1.0)"));
    Shown shown;
    shown.addSceneEffect(file.path());
    shown.scene.events->triggerEvent("ObjectSelected", "cube");
    const QImage image = shown.draw();
    int lit = 0;
    for (int y = 0; y < 100; ++y)
        for (int x = 0; x < 100; ++x)
            lit += image.pixelColor(x, y).red() > 100;
    EXPECT_GT(lit, 50);
}

TEST(FXSceneEffectTest, CodeThatDoesNotCompileIsLeftOut)
{
    const EffectFile bad(sceneEffect("vec4(nothing)"));
    const EffectFile good(sceneEffect("vec4(0.0, 1.0, 0.0, 1.0)"));
    Shown shown;
    shown.context.doneCurrent(); // so that it is found out only when it is drawn
    shown.addSceneEffect(good.path());
    shown.addSceneEffect(bad.path());
    shown.context.makeCurrent();
    EXPECT_EQ(shown.draw(0, 0), QColor(Qt::green));
    EXPECT_EQ(shown.messages().size(), 1u);
    shown.draw();
    EXPECT_EQ(shown.messages().size(), 1u);
}

TEST(FXSceneEffectTest, ItMovesWithTheViewToAnotherContext)
{
    const EffectFile file(sceneEffect("texture(sceneColor, place).brga"));
    Shown shown(QColor(10, 20, 30));
    shown.addSceneEffect(file.path());
    shown.draw();
    OffscreenContext other;
    EXPECT_TRUE(isNear(shown.draw(0, 0), QColor(30, 10, 20)));
}

TEST(FXSceneEffectTest, TheStateOfOpenGLIsLeftAsItWas)
{
    const EffectFile file(sceneEffect("texture(sceneColor, place)"));
    Shown shown;
    shown.addSceneEffect(file.path());
    shown.addSceneEffect(file.path());
    shown.draw();
    unsigned int texture = 0;
    glGenTextures(1, &texture);
    glBindTexture(GL_TEXTURE_2D, texture);
    glViewport(1, 2, 3, 4);
    shown.window->update();
    shown.window->render();
    int value = 0;
    glGetIntegerv(GL_TEXTURE_BINDING_2D, &value);
    EXPECT_EQ(value, int(texture));
    glGetIntegerv(GL_ACTIVE_TEXTURE, &value);
    EXPECT_EQ(value, GL_TEXTURE0);
    glGetIntegerv(GL_CURRENT_PROGRAM, &value);
    EXPECT_EQ(value, 0);
    int viewport[4];
    glGetIntegerv(GL_VIEWPORT, viewport);
    EXPECT_EQ(viewport[3], 4);
    EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR));
    glDeleteTextures(1, &texture);
}
