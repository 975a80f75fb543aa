#include "engine/scene/Effect.h"
#include "reference/engine/fx/EffectSyntax.h"
#include "tests/engine/FXStage.h"

#include <boost/make_shared.hpp>

#include <QImage>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

using namespace halvern;
using namespace halvern::test;
using engine::fx::FXManager;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

/// A manager without a window and without OpenGL.
struct Plain : Scene
{
    boost::shared_ptr<scene::Effect> addEffect(const std::string& file)
    {
        const auto effect = boost::make_shared<scene::Effect>(manager->generateID(), file, "");
        manager->addEffect(effect);
        added = fx.addEffect(effect);
        return effect;
    }

    FXManager fx{manager, events};
    bool added = false;
};

} // namespace

TEST(FXManagerTest, AnEffectThatCannotBeReadIsNotAdded)
{
    Scene scene;
    FXManager manager(scene.manager, scene.events);
    EXPECT_FALSE(manager.addEffect({}));
    EXPECT_FALSE(manager.addEffect(boost::make_shared<scene::Effect>("id", "/does/not/exist", "")));
    EXPECT_FALSE(manager.addEffect(boost::make_shared<scene::Effect>("id", "/dev/zero", "")));
    EXPECT_FALSE(manager.addEffect(boost::make_shared<scene::Effect>("id", "/tmp", "")));
    EXPECT_FALSE(manager.addEffect(boost::make_shared<scene::Effect>("id", "", "")));
    EXPECT_FALSE(manager.getFXEffect("id"));
    EXPECT_FALSE(manager.reloadEffect({}));
}

TEST(FXManagerTest, WithoutASceneEffectsWorkAllTheSame)
{
    const EffectFile file(objectEffect("vec4(1.0)"));
    FXManager manager({}, {});
    EXPECT_TRUE(manager.addEffect(boost::make_shared<scene::Effect>("id", file.path(), "")));
    EXPECT_TRUE(manager.addMaterial(boost::make_shared<scene::Material>("material", "id")));
    EXPECT_TRUE(manager.getFXMaterial("material"));
    EXPECT_FALSE(manager.getFXMaterial("other"));
}

TEST(FXManagerTest, AnEffectTellsItsNameClassCodeAndTechniques)
{
    const std::string text = "string ScriptClass = \"Scene\";\nfragment { void main() { } }\n"
                             "technique one { }\ntechnique two { }\n";
    const EffectFile file(text);
    Plain plain;
    const auto effect = plain.addEffect(file.path());
    EXPECT_TRUE(plain.added);
    const auto fxEffect = plain.fx.getFXEffect(effect->getID());
    ASSERT_TRUE(fxEffect);
    EXPECT_EQ(fxEffect->getID(), effect->getID());
    EXPECT_EQ(fxEffect->getScriptClass(), "Scene");
    EXPECT_EQ(fxEffect->getEffectCode(), text);
    EXPECT_EQ(fxEffect->getTechniqueCount(), 2u);
    EXPECT_EQ(fxEffect->getTechniqueNameAt(1), "two");
    EXPECT_EQ(fxEffect->getTechniqueNameAt(2), "");
    EXPECT_EQ(plain.fx.getFXEffect(effect->getID()), fxEffect);
}

TEST(FXManagerTest, EffectsOfTheLibraryAreFoundByTheirFileName)
{
    Plain plain;
    plain.addEffect("toon.fx");
    EXPECT_TRUE(plain.added);
}

TEST(FXManagerTest, ImportedMaterialsAreTaken)
{
    Plain plain;
    const MaterialPtr material = litMaterial(Qt::red);
    EXPECT_TRUE(plain.fx.addMaterial(material));
    EXPECT_FALSE(plain.fx.addMaterial({}));
    EXPECT_FALSE(plain.fx.addMaterial(boost::make_shared<scene::Material>("id", "unknown effect")));
    EXPECT_FALSE(plain.fx.getFXMaterial("id"));
    EXPECT_EQ(plain.fx.getFXMaterial(material->getMaterialID())->getFXEffect()->getID(), "standard");
}

TEST(FXManagerTest, AMaterialOfTheSceneIsKnownWithoutBeingAdded)
{
    Plain plain;
    const MaterialPtr material = litMaterial(Qt::red);
    plain.manager->addMaterial(material);
    const auto fxMaterial = plain.fx.getFXMaterial(material->getMaterialID());
    ASSERT_TRUE(fxMaterial);
    EXPECT_EQ(plain.fx.getFXMaterial(material->getMaterialID()), fxMaterial);
}

TEST(FXManagerTest, OnlyMaterialsOfSceneEffectsAreStages)
{
    const EffectFile object(objectEffect("vec4(1.0)"));
    const EffectFile scene(sceneEffect("vec4(1.0)"));
    Plain plain;
    const auto objectID = plain.addEffect(object.path())->getID();
    const auto sceneID = plain.addEffect(scene.path())->getID();
    EXPECT_FALSE(plain.fx.addSceneEffectInstance({}));
    EXPECT_FALSE(plain.fx.addSceneEffectInstance(litMaterial(Qt::red)));
    EXPECT_FALSE(plain.fx.addSceneEffectInstance(boost::make_shared<scene::Material>("a", objectID)));
    EXPECT_FALSE(plain.fx.addSceneEffectInstance(boost::make_shared<scene::Material>("b", "unknown")));
    EXPECT_TRUE(plain.fx.addSceneEffectInstance(boost::make_shared<scene::Material>("c", sceneID)));
}

TEST(FXManagerTest, APipelineIgnoresEmptyStages)
{
    Stage stage;
    stage.window->getFXPipeline()->pushBack({});
    EXPECT_TRUE(isBackground(stage.draw(0, 0)));
}

TEST(FXManagerTest, AMistakeIsShownWithFileLineAndColumn)
{
    const EffectFile file("float a = 1;\nfloat b = {1, 2};\n");
    FXStage stage;
    stage.makeMaterial(file.path());
    EXPECT_FALSE(stage.lastAdded);
    // Commas would end the text of the message.
    EXPECT_THAT(stage.messages(), ElementsAre("test.fx:2:12: float has 1 number; not 2"));
}

TEST(FXManagerTest, AMistakeInTheCodeIsShownWithThePlaceInTheFile)
{
    const EffectFile file("float amount = 1;\nfragment { void main()\n{\n  fragment = vec4(nothing); } }\n"
                          "technique t { }\n");
    FXStage stage;
    stage.makeMaterial(file.path());
    EXPECT_FALSE(stage.lastAdded);
    ASSERT_THAT(stage.messages(), SizeIs(1));
    EXPECT_THAT(stage.messages()[0], HasSubstr("test.fx:4:"));
    EXPECT_THAT(stage.messages()[0], HasSubstr("nothing"));
}

TEST(FXManagerTest, AMistakeInTheSharedAndInTheOwnCodeIsFound)
{
    const EffectFile file("fragment { float f() { return 1.0; } }\ntechnique good { fragment {\n"
                          "void main() { fragment = vec4(f()); } } }\ntechnique bad { fragment {\n"
                          "void main() { fragment = vec4(g()); } } }\n");
    FXStage stage;
    stage.makeMaterial(file.path());
    ASSERT_THAT(stage.messages(), SizeIs(1));
    EXPECT_THAT(stage.messages()[0], HasSubstr("test.fx:5:"));
}

TEST(FXManagerTest, ANameOfTheEnginesIsNoNameForAParameter)
{
    const EffectFile file(objectEffect("vec4(1.0)", "float a;\nfloat position;"));
    FXStage stage;
    stage.makeMaterial(file.path());
    EXPECT_FALSE(stage.lastAdded);
    ASSERT_THAT(stage.messages(), SizeIs(1));
    EXPECT_THAT(stage.messages()[0], HasSubstr("test.fx:2:7:"));
}

TEST(FXManagerTest, NoFileOfTheCorpusIsAddedAndNoneHurts)
{
    FXStage stage;
    const NodePtr node = stage.scene.add("cube", boxMesh());
    for (const auto& entry : std::filesystem::directory_iterator("tests/corpus/effects")) {
        const MaterialPtr material = stage.makeMaterial(entry.path().string());
        EXPECT_FALSE(stage.lastAdded) << entry.path();
        EXPECT_FALSE(stage.manager()->getFXEffect(material->getEffectID())) << entry.path();
        ASSERT_FALSE(stage.messages().empty()) << entry.path();
        EXPECT_THAT(stage.messages().back(), HasSubstr(entry.path().filename().string() + ":"));
        node->setMaterial(material, 0, 0);
        stage.draw();
        stage.scene.events->clear();
    }
}

TEST(FXManagerTest, ANodeWhoseEffectCannotBeUsedIsPlain)
{
    const EffectFile file(objectEffect("vec4(nothing)"));
    FXStage stage;
    const NodePtr node = stage.scene.add("cube", boxMesh());
    const QColor plain = stage.draw(0, 0);
    node->setMaterial(stage.makeMaterial(file.path()), 0, 0);
    EXPECT_EQ(stage.draw(0, 0), plain);
    EXPECT_FALSE(isBackground(plain));
}

TEST(FXManagerTest, CodeThatIsTriedOnlyWhenItIsDrawnFallsBackToPlain)
{
    const EffectFile file(objectEffect("vec4(nothing)"));
    FXStage stage;
    const NodePtr node = stage.scene.add("cube", boxMesh());
    const QColor plain = stage.draw(0, 0);
    stage.context.doneCurrent();
    const MaterialPtr material = stage.makeMaterial(file.path());
    EXPECT_TRUE(stage.lastAdded); // without a context nobody can tell
    node->setMaterial(material, 0, 0);
    stage.context.makeCurrent();
    EXPECT_EQ(stage.draw(0, 0), plain);
    EXPECT_THAT(stage.messages(), SizeIs(1));
    stage.draw();
    EXPECT_THAT(stage.messages(), SizeIs(1));
}

TEST(FXManagerTest, AParameterIsChangedByAnEvent)
{
    const EffectFile file(objectEffect("color4", "float4 color4; float size = 1; texture map; int n;"));
    Plain plain;
    const auto effect = plain.addEffect(file.path());
    const auto material = boost::make_shared<scene::Material>("m", effect->getID());
    plain.manager->addMaterial(material);
    const auto fxMaterial = plain.fx.getFXMaterial("m");
    const auto valuesOf = [&](const std::string& name) {
        std::vector<float> numbers;
        for (const auto& value : fxMaterial->getParameterByName(name)->getParameterValues())
            numbers.push_back(boost::any_cast<float>(value));
        return numbers;
    };
    plain.events->triggerEvent("ChangeMaterialParameter", "m, color4, 1, 0.5, 0.25, 1");
    EXPECT_THAT(valuesOf("color4"), ElementsAre(1, 0.5f, 0.25f, 1));
    plain.events->triggerEvent("ChangeMaterialParameter", "m, size, 0.75");
    EXPECT_THAT(valuesOf("size"), ElementsAre(0.75f));
    plain.events->triggerEvent("ChangeMaterialParameter", "m, map, a, b.png");
    EXPECT_EQ(boost::any_cast<std::string>(fxMaterial->getParameterByName("map")->getParameterValues().at(0)),
              "a, b.png");
    EXPECT_THAT(plain.events->getData("MaterialParameterUpdated"),
                ElementsAre("m, color4", "m, size", "m, map"));
}

TEST(FXManagerTest, ATextureThatCannotBeReadIsShownWithItsFile)
{
    const EffectFile file(objectEffect("vec4(1.0)", "texture map;"));
    Plain plain;
    const auto effect = plain.addEffect(file.path());
    plain.manager->addMaterial(boost::make_shared<scene::Material>("m", effect->getID()));
    QImage image(4, 4, QImage::Format_RGB888);
    image.fill(Qt::blue);
    const std::string picture = (file.folder / "a.png").string();
    ASSERT_TRUE(image.save(QString::fromStdString(picture)));
    for (const std::string& readable : {picture, std::string()})
        plain.events->triggerEvent("ChangeMaterialParameter", "m, map, " + readable);
    EXPECT_THAT(plain.events->getData("DisplayMessageAt"), IsEmpty());
    plain.events->triggerEvent("ChangeMaterialParameter", "m, map, /no, where.png");
    EXPECT_THAT(plain.events->getData("DisplayMessageAt"),
                ElementsAre("no; where.png: expected a picture that can be read, 20, 40"));
}

TEST(FXManagerTest, AnEventThatMakesNoSenseChangesNothing)
{
    const EffectFile file(objectEffect("vec4(size)", "float size = 1;"));
    Plain plain;
    const auto effect = plain.addEffect(file.path());
    plain.manager->addMaterial(boost::make_shared<scene::Material>("m", effect->getID()));
    for (const char* data : {"", "m", "m, size", "m, size, ", "m, size, x", "m, size, 1, 2", "m, other, 1",
                             "other, size, 1", "m, size, nan", ", , ,"})
        plain.events->triggerEvent("ChangeMaterialParameter", data);
    const auto values = plain.fx.getFXMaterial("m")->getParameterByName("size")->getParameterValues();
    EXPECT_EQ(boost::any_cast<float>(values.at(0)), 1);
    EXPECT_THAT(plain.events->getData("MaterialParameterUpdated"), IsEmpty());
}

TEST(FXManagerTest, AnEventDoesNotRoundAValueThatIsSetAlready)
{
    const EffectFile file(objectEffect("vec4(size)", "float size = 1;"));
    Plain plain;
    const auto effect = plain.addEffect(file.path());
    plain.manager->addMaterial(boost::make_shared<scene::Material>("m", effect->getID()));
    const auto size = plain.fx.getFXMaterial("m")->getParameterByName("size");
    const float precise = 0.123456789f;
    size->setParameterValue(std::vector<boost::any>{precise});
    plain.events->triggerEvent("ChangeMaterialParameter", "m, size, 0.123457");
    EXPECT_EQ(boost::any_cast<float>(size->getParameterValues().at(0)), precise);
    EXPECT_THAT(plain.events->getData("MaterialParameterUpdated"), ElementsAre("m, size"));
    plain.events->triggerEvent("ChangeMaterialParameter", "m, size, 0.12346");
    EXPECT_EQ(boost::any_cast<float>(size->getParameterValues().at(0)), 0.12346f);
}

TEST(FXManagerTest, EffectsStayWhenTheWindowChangesItsEventManager)
{
    const EffectFile file(objectEffect("vec4(1.0)"));
    FXStage stage;
    const MaterialPtr material = stage.makeMaterial(file.path());
    const auto known = stage.fxMaterial(material);
    stage.window->setEventManager(boost::make_shared<SynchronousEventManager>());
    EXPECT_EQ(stage.fxMaterial(material), known);
}
