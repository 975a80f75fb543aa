#include "engine/fx/FXAnnotation.h"
#include "engine/scene/Effect.h"
#include "tests/engine/FXStage.h"

#include <boost/make_shared.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

using namespace halvern;
using namespace halvern::test;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using Clock = std::chrono::steady_clock;

namespace {

const std::string red = objectEffect("vec4(1.0, 0.0, 0.0, 1.0)");
const std::string green = objectEffect("vec4(0.0, 1.0, 0.0, 1.0)");
const std::string broken = objectEffect("vec4(nothing)");

/// A cube with a material of an effect, red at first.
struct Shown : FXStage
{
    explicit Shown(const std::string& text = red) : file(text)
    {
        material = makeMaterial(file.path());
        scene.add("cube", boxMesh(), material);
        draw();
    }

    bool reload() { return manager()->reloadEffect(fxMaterial(material)->getFXEffect()); }

    /// Draws, with the scene's cycles between, until the middle has a colour or the time is up.
    bool waitForColor(const QColor& color, std::chrono::milliseconds limit = std::chrono::seconds(10))
    {
        const auto end = Clock::now() + limit;
        while (Clock::now() < end) {
            scene.manager->update();
            if (draw(0, 0) == color)
                return true;
        }
        return false;
    }

    std::vector<std::string> reloaded() const { return scene.events->getData("EffectReloaded"); }

    EffectFile file;
    MaterialPtr material;
};

} // namespace

TEST(FXReloadTest, TheNewTextIsDrawnAndAnnounced)
{
    Shown shown;
    shown.file.write(green);
    EXPECT_EQ(shown.draw(0, 0), QColor(Qt::red));
    EXPECT_TRUE(shown.reload());
    EXPECT_EQ(shown.draw(0, 0), QColor(Qt::green));
    EXPECT_THAT(shown.reloaded(), ElementsAre(shown.material->getEffectID()));
    EXPECT_EQ(shown.fxMaterial(shown.material)->getFXEffect()->getEffectCode(), green);
}

TEST(FXReloadTest, WithoutAContextTheNextFrameShowsIt)
{
    Shown shown;
    shown.file.write(green);
    shown.context.doneCurrent();
    EXPECT_TRUE(shown.reload());
    EXPECT_THAT(shown.reloaded(), SizeIs(1));
    shown.context.makeCurrent();
    EXPECT_EQ(shown.draw(0, 0), QColor(Qt::green));
}

TEST(FXReloadTest, AMistakeLeavesTheEffectAsItWas)
{
    for (const std::string& text : {broken, std::string("float a"), std::string()}) {
        Shown shown;
        shown.file.write(text);
        EXPECT_FALSE(shown.reload());
        EXPECT_EQ(shown.draw(0, 0), QColor(Qt::red));
        EXPECT_THAT(shown.reloaded(), IsEmpty());
        EXPECT_THAT(shown.messages(), SizeIs(1));
        EXPECT_EQ(shown.fxMaterial(shown.material)->getFXEffect()->getEffectCode(), red);
    }
}

TEST(FXReloadTest, ParametersThatStillExistKeepTheirValuesAndObjects)
{
    Shown shown(objectEffect("vec4(a, b, 0.0, 1.0)", "float a; float b; float gone; int other;"));
    const auto fxMaterial = shown.fxMaterial(shown.material);
    const auto a = fxMaterial->getParameterByName("a");
    shown.setFloats(shown.material, "a", {1});
    shown.setFloats(shown.material, "b", {0.6f});
    shown.setFloats(shown.material, "other", {7});
    shown.file.write(
        objectEffect("vec4(fresh, b, a, 1.0)",
                     "float fresh = 0.2; float b; float a < string UIName = \"A\"; >; float2 other;"));
    ASSERT_TRUE(shown.reload());
    EXPECT_EQ(shown.fxMaterial(shown.material), fxMaterial);
    EXPECT_EQ(fxMaterial->getParameterCount(), 4);
    EXPECT_EQ(fxMaterial->getParameterByName("a"), a);
    EXPECT_EQ(fxMaterial->getParameterAt(2), a);
    EXPECT_EQ(boost::any_cast<std::string>(a->getAnnotationByName("UIName")->getFirstValue()), "A");
    EXPECT_FALSE(fxMaterial->getParameterByName("gone"));
    // Of another type now, so another parameter.
    EXPECT_EQ(fxMaterial->getParameterByName("other")->getParameterValues().size(), 2u);
    EXPECT_TRUE(isNear(shown.draw(0, 0), QColor::fromRgbF(0.2, 0.6, 1)));
}

TEST(FXReloadTest, AParameterThatIsGoneCanStillBeHeld)
{
    Shown shown(objectEffect("vec4(a)", "float a < string UIName = \"A\"; > = 1;"));
    const auto a = shown.fxMaterial(shown.material)->getParameterByName("a");
    shown.file.write(red);
    ASSERT_TRUE(shown.reload());
    EXPECT_TRUE(a->setParameterValue(std::vector<boost::any>{0.5f}));
    EXPECT_EQ(boost::any_cast<std::string>(a->getAnnotationByName("UIName")->getFirstValue()), "A");
    EXPECT_EQ(shown.draw(0, 0), QColor(Qt::red));
}

TEST(FXReloadTest, TheTechniqueIsKeptByItsName)
{
    const std::string code = "fragment { void main() { fragment = vec4(1.0); } }\n";
    Shown shown(code + "technique a { } technique b { }");
    const auto fxMaterial = shown.fxMaterial(shown.material);
    fxMaterial->setTechnique(1);
    shown.file.write(code + "technique b { } technique a { }");
    ASSERT_TRUE(shown.reload());
    EXPECT_EQ(fxMaterial->getTechnique(), 0u);
    shown.file.write(code + "technique c { }");
    ASSERT_TRUE(shown.reload());
    EXPECT_EQ(fxMaterial->getTechnique(), 0u);
    EXPECT_EQ(shown.draw(0, 0), QColor(Qt::white));
}

TEST(FXReloadTest, AChangedFileIsReadAgainByItself)
{
    Shown shown;
    shown.file.write(green);
    EXPECT_TRUE(shown.waitForColor(Qt::green));
    EXPECT_THAT(shown.reloaded(), ElementsAre(shown.material->getEffectID()));
}

TEST(FXReloadTest, AChangedFileAsksForAFrameWithinASecond)
{
    Shown shown;
    shown.scene.manager->update();
    shown.scene.events->clear();
    shown.file.write(green);
    const auto start = Clock::now();
    shown.scene.manager->start();
    EXPECT_TRUE(shown.scene.events->waitForCount("SyncScene", 1));
    const auto taken = Clock::now() - start;
    shown.scene.manager->stop();
    EXPECT_EQ(shown.draw(0, 0), QColor(Qt::green));
    EXPECT_LT(taken, std::chrono::seconds(1));
}

TEST(FXReloadTest, AFileThatChangesToAMistakeIsReportedOnceAndMendedLater)
{
    Shown shown;
    shown.file.write(broken);
    const auto end = Clock::now() + std::chrono::seconds(10);
    while (shown.messages().empty() && Clock::now() < end) {
        shown.scene.manager->update();
        EXPECT_EQ(shown.draw(0, 0), QColor(Qt::red));
    }
    EXPECT_THAT(shown.messages(), SizeIs(1));
    shown.file.write(green);
    EXPECT_TRUE(shown.waitForColor(Qt::green));
    EXPECT_THAT(shown.messages(), SizeIs(1));
    EXPECT_THAT(shown.reloaded(), SizeIs(1));
}

TEST(FXReloadTest, AnEffectThatCouldNotBeAddedComesInWhenItIsMended)
{
    Shown shown(broken);
    EXPECT_FALSE(shown.lastAdded);
    EXPECT_FALSE(shown.fxMaterial(shown.material));
    shown.file.write(green);
    EXPECT_TRUE(shown.waitForColor(Qt::green));
    EXPECT_TRUE(shown.fxMaterial(shown.material));
}

TEST(FXReloadTest, AFileThatGoesAwayLeavesTheEffect)
{
    Shown shown;
    std::filesystem::remove(shown.file.path());
    EXPECT_FALSE(shown.waitForColor(Qt::green, std::chrono::milliseconds(700)));
    EXPECT_EQ(shown.draw(0, 0), QColor(Qt::red));
    EXPECT_THAT(shown.messages(), IsEmpty());
    shown.file.write(green);
    EXPECT_TRUE(shown.waitForColor(Qt::green));
}

TEST(FXReloadTest, SceneEffectsReloadToo)
{
    EffectFile file(sceneEffect("vec4(1.0, 0.0, 0.0, 1.0)"));
    FXStage stage;
    const MaterialPtr material = stage.addSceneEffect(file.path());
    EXPECT_EQ(stage.draw(0, 0), QColor(Qt::red));
    file.write(sceneEffect("vec4(0.0, 1.0, 0.0, 1.0)"));
    EXPECT_TRUE(stage.manager()->reloadEffect(stage.fxMaterial(material)->getFXEffect()));
    EXPECT_EQ(stage.draw(0, 0), QColor(Qt::green));
}

TEST(FXReloadTest, TwoWindowsOfASceneShareItsEffects)
{
    Shown shown;
    engine::window::Window second(shown.scene.events, "second");
    second.resize({100, 100});
    second.attach(shown.scene.manager);
    second.init();
    EXPECT_EQ(second.getFXManager()->getFXMaterial(shown.material->getMaterialID()),
              shown.fxMaterial(shown.material));
    second.update();
    second.render();
    shown.file.write(green);
    EXPECT_TRUE(second.getFXManager()->reloadEffect(shown.fxMaterial(shown.material)->getFXEffect()));
    EXPECT_EQ(shown.draw(0, 0), QColor(Qt::green));
}
