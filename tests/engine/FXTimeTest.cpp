#include "engine/scene/Node.h"
#include "tests/engine/FXStage.h"

#include <gtest/gtest.h>

using namespace halvern;
using namespace halvern::test;

namespace {

const std::string ofTime = objectEffect("vec4(fract(time), 0.0, 0.0, 1.0)");

/// How many frames the scene asks for in its next cycle.
size_t requests(FXStage& stage)
{
    stage.scene.manager->update(); // reports what was changed before
    stage.draw();
    stage.scene.events->clear();
    stage.scene.manager->update();
    return stage.scene.events->getData("SyncScene").size();
}

/// A stage with a cube of an effect.
struct Shown : FXStage
{
    explicit Shown(const std::string& text) : file(text)
    {
        material = makeMaterial(file.path());
        cube = scene.add("cube", boxMesh(), material);
    }

    EffectFile file;
    MaterialPtr material;
    NodePtr cube;
};

} // namespace

TEST(FXTimeTest, AnEffectThatReadsTheTimeAsksForAFrameInEachCycle)
{
    Shown shown(ofTime);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(requests(shown), 1u);
}

TEST(FXTimeTest, OtherEffectsAskForNone)
{
    for (const char* color : {"vec4(1.0)", "vec4(1.0 /* time */)", "vec4(float(timely))"}) {
        Shown shown(objectEffect(color, "int timely; // time\n"));
        EXPECT_TRUE(shown.lastAdded);
        EXPECT_EQ(requests(shown), 0u) << color;
    }
    FXStage imported;
    imported.scene.add("cube", boxMesh(), litMaterial(Qt::red));
    EXPECT_EQ(requests(imported), 0u);
}

TEST(FXTimeTest, VerticesMayReadTheTimeToo)
{
    Shown shown("vertex { void main() { placeVertex(gl_Vertex + vec4(sin(time)), gl_Normal); } }\n" +
                objectEffect("vec4(1.0)"));
    EXPECT_TRUE(shown.lastAdded);
    EXPECT_EQ(requests(shown), 1u);
}

TEST(FXTimeTest, OnlyTheTechniqueThatIsShownCounts)
{
    Shown shown("technique still { fragment { void main() { fragment = vec4(1.0); } } }\n"
                "technique moving { fragment { void main() { fragment = vec4(sin(time)); } } }");
    EXPECT_EQ(requests(shown), 0u);
    shown.fxMaterial(shown.material)->setTechnique(1);
    EXPECT_EQ(requests(shown), 1u);
    shown.fxMaterial(shown.material)->setTechnique(0);
    EXPECT_EQ(requests(shown), 0u);
}

TEST(FXTimeTest, WhatIsNotShownAsksForNoFrame)
{
    Shown shown(ofTime);
    EXPECT_EQ(requests(shown), 1u);
    shown.scene.events->clear();
    shown.scene.manager->update(); // without a frame before it
    EXPECT_TRUE(shown.scene.events->getData("SyncScene").empty());
    moveTo(*shown.cube, 0, 0, 100); // behind the camera
    EXPECT_EQ(requests(shown), 0u);
    moveTo(*shown.cube, 0, 0, 0);
    EXPECT_EQ(requests(shown), 1u);
    shown.cube->setMaterial(litMaterial(Qt::red), 0, 0);
    EXPECT_EQ(requests(shown), 0u);
}

TEST(FXTimeTest, AnEffectOfTheSceneAsksForFramesToo)
{
    const EffectFile still(sceneEffect("texture(sceneColor, place)"));
    const EffectFile moving(sceneEffect("texture(sceneColor, place) * fract(time)"));
    FXStage stage;
    stage.addSceneEffect(still.path());
    EXPECT_EQ(requests(stage), 0u);
    stage.addSceneEffect(moving.path());
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(requests(stage), 1u);
}

TEST(FXTimeTest, TheEffectsThatMoveInTheLibraryAskForFrames)
{
    for (const char* file : {"bloom.fx", "ink.fx", "depthoffield.fx", "ambientocclusion.fx"}) {
        FXStage stage;
        stage.scene.add("cube", boxMesh());
        stage.addSceneEffect(file);
        EXPECT_EQ(requests(stage), 0u) << file;
    }
}
