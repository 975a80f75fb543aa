#include "engine/fx/FXRenderTarget.h"
#include "tests/engine/FXStage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <GL/gl.h>

using namespace halvern;
using namespace halvern::test;
using Values = std::vector<boost::any>;

namespace {

/// A cube in the middle with a material of an effect.
struct Shown : FXStage
{
    explicit Shown(const std::string& text) : file(text)
    {
        material = makeMaterial(file.path());
        node = scene.add("cube", boxMesh(), material);
    }

    void set(const std::string& name, Values values)
    {
        EXPECT_TRUE(fxMaterial(material)->getParameterByName(name)->setParameterValue(values));
    }

    EffectFile file;
    MaterialPtr material;
    NodePtr node;
};

QColor rgb(double r, double g, double b)
{
    return QColor::fromRgbF(r, g, b);
}

void savePicture(const std::filesystem::path& file, const QColor& color)
{
    QImage image(4, 4, QImage::Format_RGB888);
    image.fill(color);
    ASSERT_TRUE(image.save(QString::fromStdString(file.string())));
}

/// An effect of one technique whose states are given.
std::string effectWith(const std::string& states, const std::string& color = "vec4(1.0, 0.0, 0.0, 0.5)")
{
    return "technique t { " + states + " fragment { void main() { fragment = " + color + "; } } }";
}

} // namespace

TEST(FXObjectEffectTest, TheFragmentCodeColoursTheNode)
{
    Shown shown(objectEffect("vec4(0.2, 0.4, 0.6, 1.0)"));
    EXPECT_TRUE(shown.lastAdded);
    const QImage image = shown.draw();
    EXPECT_TRUE(isNear(pixel(image, 0, 0), rgb(0.2, 0.4, 0.6)));
    EXPECT_TRUE(isBackground(pixel(image, 45, 45)));
}

TEST(FXObjectEffectTest, AParameterReachesThePictureInTheNextFrame)
{
    Shown shown(objectEffect("vec4(tint * size, 1.0)", "float3 tint = {1, 1, 1}; float size = 0.5;"));
    EXPECT_TRUE(isNear(shown.draw(0, 0), rgb(0.5, 0.5, 0.5)));
    shown.set("size", {1.0f});
    EXPECT_TRUE(isNear(shown.draw(0, 0), rgb(1, 1, 1)));
    shown.set("tint", {1.0f, 0.5f, 0.0f});
    EXPECT_TRUE(isNear(shown.draw(0, 0), rgb(1, 0.5, 0)));
    shown.set("size", {0.5f}); // back to the default
    EXPECT_TRUE(isNear(shown.draw(0, 0), rgb(0.5, 0.25, 0)));
}

TEST(FXObjectEffectTest, EveryTypeOfParameterReachesThePicture)
{
    Shown shown(objectEffect("vec4(p.x, float(n) / 10.0, on ? c.w : 0.0, 1.0)",
                             "float2 p; int n; bool on; float4 c;"));
    EXPECT_TRUE(isNear(shown.draw(0, 0), rgb(0, 0, 0)));
    shown.set("p", {0.3f, 0.0f});
    shown.set("n", {6});
    shown.set("c", {0.0f, 0.0f, 0.0f, 0.9f});
    EXPECT_TRUE(isNear(shown.draw(0, 0), rgb(0.3, 0.6, 0)));
    shown.set("on", {true});
    EXPECT_TRUE(isNear(shown.draw(0, 0), rgb(0.3, 0.6, 0.9)));
}

TEST(FXObjectEffectTest, AnEventChangesThePicture)
{
    Shown shown(objectEffect("vec4(tint, 1.0)", "float3 tint;"));
    shown.draw();
    shown.scene.events->triggerEvent("ChangeMaterialParameter",
                                     shown.material->getMaterialID() + ", tint, 0.2, 0.4, 0.6, 1");
    EXPECT_TRUE(isNear(shown.draw(0, 0), rgb(0.2, 0.4, 0.6)));
}

TEST(FXObjectEffectTest, TexturesAreReadBesideTheEffectAndReplaced)
{
    Shown shown(
        "texture map = \"red.png\";\nfragment { void main() {\n#ifdef MAP\n"
        "fragment = texture(map, texCoord);\n#else\nfragment = vec4(0.0, 0.0, 1.0, 1.0);\n#endif\n} }\n"
        "technique t { }");
    EXPECT_EQ(shown.draw(0, 0), QColor(Qt::blue)); // there is no such file yet
    savePicture(shown.file.folder / "red.png", Qt::red);
    savePicture(shown.file.folder / "green.png", Qt::green);
    shown.set("map", {std::string("red.png")});
    EXPECT_EQ(shown.draw(0, 0), QColor(Qt::red));
    shown.set("map", {(shown.file.folder / "green.png").string()});
    EXPECT_EQ(shown.draw(0, 0), QColor(Qt::green));
    shown.set("map", {std::string("missing.png")});
    EXPECT_EQ(shown.draw(0, 0), QColor(Qt::blue));
    shown.set("map", {std::string("test.fx")}); // no picture
    EXPECT_EQ(shown.draw(0, 0), QColor(Qt::blue));
    const MaterialPtr other = shown.makeMaterial(shown.file.path());
    shown.node->setMaterial(other, 0, 0);
    EXPECT_EQ(shown.draw(0, 0), QColor(Qt::red)); // the default
}

TEST(FXObjectEffectTest, EightTexturesWorkAtATime)
{
    std::string declarations;
    std::string sum = "vec4(0.0)";
    for (const char* name : {"a", "b", "c", "d", "e", "f", "g", "h"}) {
        declarations += std::string("texture ") + name + ";\n";
        sum += std::string(" + texture(") + name + ", texCoord) / 8.0";
    }
    Shown shown(objectEffect(sum, declarations));
    // So that there are shadow maps as well.
    scene::LightSource sun;
    sun.kind = scene::LightSource::Kind::Directional;
    shown.scene.addLight("sun", sun);
    shown.node->addToLayer("cast_shadow");
    int i = 0;
    for (const char* name : {"a", "b", "c", "d", "e", "f", "g", "h"}) {
        savePicture(shown.file.folder / (name + std::string(".png")), QColor(i % 2 ? 255 : 0, 0, 40 * i / 2));
        shown.set(name, {name + std::string(".png")});
        ++i;
    }
    EXPECT_TRUE(isNear(shown.draw(0, 0), QColor(128, 0, 70)));
}

TEST(FXObjectEffectTest, TwoMaterialsOfOneEffectDiffer)
{
    Shown shown(objectEffect("vec4(tint, 1.0)", "float3 tint;"));
    const MaterialPtr other = shown.makeMaterial(shown.file.path());
    moveTo(*shown.scene.add("second", boxMesh(0.5f), other), 1.7f, 0, 0);
    shown.set("tint", {1.0f, 0.0f, 0.0f});
    shown.setFloats(other, "tint", {0, 1, 0});
    const QImage image = shown.draw();
    EXPECT_EQ(pixel(image, 0, 0), QColor(Qt::red));
    EXPECT_EQ(pixel(image, 42, 0), QColor(Qt::green));
}

TEST(FXObjectEffectTest, ASlotOfANodeHasItsOwnMaterial)
{
    Shown shown(objectEffect("vec4(0.0, 1.0, 0.0, 1.0)"));
    setGeometries(*shown.node, {boxMesh(0.4f), boxMesh(1)});
    shown.node->setMaterial(unlitMaterial(Qt::red), 0, 0);
    shown.node->setMaterial(shown.material, 1, 0);
    EXPECT_EQ(shown.draw(0, 0), QColor(Qt::green));
    shown.node->setMaterial(unlitMaterial(Qt::blue), 1, 0);
    EXPECT_EQ(shown.draw(0, 0), QColor(Qt::blue));
}

TEST(FXObjectEffectTest, TheTechniqueSwitchesInTheNextFrame)
{
    Shown shown(
        "fragment { void main() {\n#ifdef TECHNIQUE_RED\nfragment = vec4(1.0, 0.0, 0.0, 1.0);\n#else\n"
        "fragment = vec4(0.0, 1.0, 0.0, 1.0);\n#endif\n} }\ntechnique red { }\ntechnique green { }");
    EXPECT_EQ(shown.draw(0, 0), QColor(Qt::red));
    shown.fxMaterial(shown.material)->setTechnique(1);
    EXPECT_EQ(shown.draw(0, 0), QColor(Qt::green));
    shown.fxMaterial(shown.material)->setTechnique(0);
    EXPECT_EQ(shown.draw(0, 0), QColor(Qt::red));
}

TEST(FXObjectEffectTest, VertexCodeMovesVertices)
{
    Shown shown("float by;\nvertex { void main() { placeVertex(gl_Vertex + vec4(by, 0.0, 0.0, 0.0), "
                "gl_Normal); } }\n" +
                objectEffect("vec4(1.0)"));
    EXPECT_EQ(shown.draw(0, 0), QColor(Qt::white));
    shown.set("by", {1.5f});
    const QImage image = shown.draw();
    EXPECT_TRUE(isBackground(pixel(image, 0, 0)));
    EXPECT_EQ(pixel(image, 35, 0), QColor(Qt::white));
}

TEST(FXObjectEffectTest, LightsShineIntoTheCode)
{
    Shown shown(objectEffect("vec4(1.0)"));
    const EffectFile lit("fragment { vec3 sum = vec3(0.0);\n"
                         "void shine(vec3 l, vec3 c, float lit, float loss) { sum += dot(l, findNormal()) * "
                         "c * lit / loss; }\n"
                         "void main() { shineAll(); fragment = vec4(sum, 1.0); } }\ntechnique t { }");
    shown.node->setMaterial(shown.makeMaterial(lit.path()), 0, 0);
    EXPECT_TRUE(shown.lastAdded);
    EXPECT_EQ(shown.draw(0, 0), QColor(Qt::black));
    scene::LightSource head;
    head.kind = scene::LightSource::Kind::Head;
    head.intensity = 0.5f;
    shown.scene.addLight("head", head)->setColor(1, 0.5f, 0);
    EXPECT_TRUE(isNear(shown.draw(0, 0), rgb(0.5, 0.25, 0)));
}

TEST(FXObjectEffectTest, TheEngineProvidesThePlaceOfThings)
{
    Shown shown(objectEffect("vec4((eyeToWorld * vec4(position, 1.0)).xyz * 0.5 + 0.5, 1.0)"));
    EXPECT_TRUE(isNear(shown.draw(0, 0), rgb(0.5, 0.5, 1)));
    const EffectFile other(
        objectEffect("vec4(-position.z / 8.0, viewSize.x / 200.0, (mat3(eyeToWorld) * up).y, 1.0)"));
    shown.node->setMaterial(shown.makeMaterial(other.path()), 0, 0);
    EXPECT_TRUE(isNear(shown.draw(0, 0), rgb(0.5, 0.5, 1)));
}

TEST(FXObjectEffectTest, BlendingMixesAddsAndMultiplies)
{
    const QColor behind(100, 200, 100);
    const std::pair<const char*, QColor> cases[] = {{"blend = none;", QColor(255, 0, 0)},
                                                    {"blend = alpha;", QColor(178, 100, 50)},
                                                    {"blend = add;", QColor(228, 200, 100)},
                                                    {"blend = multiply;", QColor(100, 0, 0)}};
    for (const auto& [states, expected] : cases) {
        Shown shown(effectWith(std::string(states) + "cull = back;"));
        const NodePtr wall = shown.scene.add("wall", boxMesh(2), unlitMaterial(behind));
        moveTo(*wall, 0, 0, -4);
        EXPECT_TRUE(isNear(shown.draw(0, 0), expected)) << states;
    }
}

TEST(FXObjectEffectTest, DepthSaysWhatIsSeen)
{
    const std::pair<const char*, bool> hidden[] = {
        {"depth = on;", false}, {"depth = test;", false}, {"depth = off;", true}, {"depth = behind;", true}};
    for (const auto& [states, isSeen] : hidden) {
        // In a later pass, so that what hides it is there already.
        Shown shown("technique t { pass { depth = off; blend = add; fragment { void main() { fragment = "
                    "vec4(0.0); } } }\n"
                    "pass { " +
                    std::string(states) +
                    " blend = alpha; fragment { void main() { fragment = vec4(1.0, 0.0, 0.0, 1.0); } } } }");
        moveTo(*shown.scene.add("front", boxMesh(0.2f), unlitMaterial(Qt::green)), 0, 0, 2);
        const QImage image = shown.draw();
        EXPECT_EQ(pixel(image, 0, 0), isSeen ? QColor(Qt::red) : QColor(Qt::green)) << states;
        EXPECT_EQ(isBackground(pixel(image, 20, 0)), std::string(states) == "depth = behind;") << states;
    }
}

TEST(FXObjectEffectTest, CullingLeavesOneSideOut)
{
    const std::pair<const char*, double> sides[] = {
        {"cull = none;", 1}, {"cull = back;", 1}, {"cull = front;", -1}};
    for (const auto& [states, z] : sides) {
        Shown shown("technique t { " + std::string(states) +
                    " fragment { void main() {\n"
                    "fragment = vec4(vec3((eyeToWorld * vec4(position, 1.0)).z * 0.5 + 0.5), 1.0); } } }");
        EXPECT_TRUE(isNear(shown.draw(0, 0), rgb(z * 0.5 + 0.5, z * 0.5 + 0.5, z * 0.5 + 0.5))) << states;
    }
}

TEST(FXObjectEffectTest, WireframeDrawsLinesOnly)
{
    Shown shown(effectWith("wireframe = on;", "vec4(1.0, 0.0, 0.0, 1.0)"));
    const QImage image = shown.draw();
    int lines = 0;
    for (int y = 0; y < 100; ++y)
        for (int x = 0; x < 100; ++x)
            lines += image.pixelColor(x, y) == QColor(Qt::red);
    EXPECT_GT(lines, 100);
    EXPECT_LT(lines, 1500);
    EXPECT_TRUE(isBackground(pixel(image, -10, 20)));
}

TEST(FXObjectEffectTest, PassesAreDrawnInTheirOrder)
{
    Shown shown("technique t {\npass { fragment { void main() { fragment = vec4(0.5, 0.0, 0.0, 1.0); } } }\n"
                "pass { blend = add; depth = test; fragment { void main() { fragment = vec4(0.0, 0.5, 0.0, "
                "1.0); } } }\n"
                "pass { blend = multiply; depth = test; fragment { void main() { fragment = vec4(1.0, 0.5, "
                "1.0, 1.0); } } } }");
    EXPECT_TRUE(isNear(shown.draw(0, 0), rgb(0.5, 0.25, 0)));
}

TEST(FXObjectEffectTest, InTheLayerTransparentItLetsShineThrough)
{
    Shown shown(objectEffect("vec4(1.0, 0.0, 0.0, toOpacity(1.0))"));
    moveTo(*shown.scene.add("wall", boxMesh(2), unlitMaterial(Qt::blue)), 0, 0, -4);
    EXPECT_EQ(shown.draw(0, 0), QColor(Qt::red));
    shown.node->addToLayer("transparent");
    const QColor mixed = shown.draw(0, 0);
    EXPECT_GT(mixed.red(), 90);
    EXPECT_GT(mixed.blue(), 60);
}

TEST(FXObjectEffectTest, MeshesWithoutNormalsOrCoordinatesWork)
{
    Shown shown(objectEffect("vec4(findNormal() * 0.5 + 0.5, 1.0 + texCoord.x)"));
    auto bare = std::make_shared<scene::Mesh>(*boxMesh());
    bare->normals.clear();
    bare->texCoords.clear();
    setGeometries(*shown.node, {bare});
    EXPECT_TRUE(isNear(shown.draw(0, 0), rgb(0.5, 0.5, 1)));
    auto lines = std::make_shared<scene::Mesh>(*bare);
    lines->primitive = scene::Mesh::Primitive::Lines;
    setGeometries(*shown.node, {lines});
    shown.draw();
    EXPECT_TRUE(shown.messages().empty());
}

TEST(FXObjectEffectTest, ItMovesWithTheViewToAnotherContext)
{
    Shown shown(objectEffect("vec4(0.2, 0.4, 0.6, 1.0)"));
    shown.draw();
    OffscreenContext other;
    EXPECT_TRUE(isNear(shown.draw(0, 0), rgb(0.2, 0.4, 0.6)));
}

TEST(FXObjectEffectTest, TheStateOfOpenGLIsLeftAsItWas)
{
    Shown shown("technique t { blend = add; depth = behind; cull = front; wireframe = on;\n"
                "fragment { void main() { fragment = vec4(1.0); } } }");
    shown.draw();
    glEnable(GL_SCISSOR_TEST);
    glBlendFunc(GL_ONE, GL_SRC_COLOR);
    glDepthFunc(GL_GEQUAL);
    glCullFace(GL_BACK);
    shown.window->update();
    shown.window->render();
    int mode[2] = {0, 0};
    int value = 0;
    glGetIntegerv(GL_POLYGON_MODE, mode);
    EXPECT_EQ(mode[0], GL_FILL);
    glGetIntegerv(GL_DEPTH_FUNC, &value);
    EXPECT_EQ(value, GL_GEQUAL);
    glGetIntegerv(GL_BLEND_DST, &value);
    EXPECT_EQ(value, GL_SRC_COLOR);
    glGetIntegerv(GL_CURRENT_PROGRAM, &value);
    EXPECT_EQ(value, 0);
    EXPECT_TRUE(glIsEnabled(GL_SCISSOR_TEST));
    EXPECT_FALSE(glIsEnabled(GL_BLEND));
    EXPECT_FALSE(glIsEnabled(GL_CULL_FACE));
    EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR));
    // And a second frame is as the first, with what the first has left.
    glDisable(GL_SCISSOR_TEST);
    const QImage again = shown.draw();
    EXPECT_EQ(again, shown.draw());
}
