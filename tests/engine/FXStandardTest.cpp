#include "engine/fx/FXAnnotation.h"
#include "tests/engine/FXStage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

using namespace halvern;
using namespace halvern::test;
using scene::StandardMaterial;
using testing::ElementsAre;
using Values = std::vector<boost::any>;

namespace {

/// A cube with an imported material, unlit and orange.
struct Shown : FXStage
{
    Shown() : material(unlitMaterial(QColor(255, 128, 0)))
    {
        scene.manager->addMaterial(material);
        scene.add("cube", boxMesh(), material);
        fxMaterial = FXStage::fxMaterial(material);
    }

    std::vector<float> numbers(const std::string& name)
    {
        std::vector<float> found;
        for (const auto& value : fxMaterial->getParameterByName(name)->getParameterValues())
            found.push_back(boost::any_cast<float>(value));
        return found;
    }

    void set(const std::string& name, Values values)
    {
        EXPECT_TRUE(fxMaterial->getParameterByName(name)->setParameterValue(values)) << name;
    }

    MaterialPtr material;
    boost::shared_ptr<engine::fx::FXMaterial> fxMaterial;
};

} // namespace

TEST(FXStandardTest, ImportedMaterialsShowTheirValues)
{
    Shown shown;
    changeMaterial(*shown.material, [](StandardMaterial& values) {
        values.metalness = 0.25f;
        values.roughness = 0.75f;
        values.emissive = {0.1f, 0.2f, 0.3f};
        auto image = std::make_shared<scene::Image>();
        image->name = "wood.png";
        values.baseColorMap = image;
    });
    EXPECT_THAT(shown.numbers("baseColor"), ElementsAre(1, testing::FloatNear(0.5f, 0.01f), 0, 1));
    EXPECT_THAT(shown.numbers("metalness"), ElementsAre(0.25f));
    EXPECT_THAT(shown.numbers("roughness"), ElementsAre(0.75f));
    EXPECT_THAT(shown.numbers("emissive"), ElementsAre(0.1f, 0.2f, 0.3f));
    EXPECT_THAT(shown.numbers("unlit"), ElementsAre(1));
    const auto map = shown.fxMaterial->getParameterByName("baseColorMap")->getParameterValues();
    EXPECT_EQ(boost::any_cast<std::string>(map.at(0)), "wood.png");
    EXPECT_EQ(shown.fxMaterial->getFXEffect()->getScriptClass(), "object");
}

TEST(FXStandardTest, TheirParametersHaveEditors)
{
    Shown shown;
    const auto annotation = [&](const char* name, const char* annotation) {
        const auto found = shown.fxMaterial->getParameterByName(name)->getAnnotationByName(annotation);
        return boost::any_cast<std::string>(found->getFirstValue());
    };
    EXPECT_EQ(annotation("baseColor", "UIWidget"), "color");
    EXPECT_EQ(annotation("roughness", "UIWidget"), "slider");
    EXPECT_EQ(shown.fxMaterial->getParameterByName("normalMap")->getParameterType(), "texture");
    EXPECT_FALSE(shown.fxMaterial->getParameterByName("normalMap")->getAnnotationByName("UIWidget"));
}

TEST(FXStandardTest, AChangeReachesThePictureAndTheScene)
{
    Shown shown;
    EXPECT_TRUE(isNear(shown.draw(0, 0), QColor(255, 128, 0)));
    shown.set("baseColor", {0.0f, 0.5f, 1.0f, 1.0f});
    EXPECT_TRUE(isNear(shown.draw(0, 0), QColor(0, 128, 255)));
    EXPECT_EQ(getStandardMaterial(*shown.material)->baseColor, Eigen::Vector4f(0, 0.5f, 1, 1));
    EXPECT_TRUE(getStandardMaterial(*shown.material)->unlit);
    shown.set("unlit", {false});
    EXPECT_NE(shown.draw(0, 0), QColor(0, 128, 255));
    shown.set("emissive", {1.0f, 1.0f, 1.0f, 1.0f});
    EXPECT_GT(shown.draw(0, 0).red(), 200);
}

TEST(FXStandardTest, AMapIsReadFromAFileAndTakenAway)
{
    Shown shown;
    const EffectFile file("");
    QImage image(4, 4, QImage::Format_RGB888);
    image.fill(Qt::blue);
    const std::string name = (file.folder / "blue.png").string();
    ASSERT_TRUE(image.save(QString::fromStdString(name)));
    shown.set("baseColor", {1.0f, 1.0f, 1.0f, 1.0f});
    shown.set("baseColorMap", {name});
    EXPECT_EQ(shown.draw(0, 0), QColor(Qt::blue));
    const auto map = shown.fxMaterial->getParameterByName("baseColorMap");
    EXPECT_EQ(boost::any_cast<std::string>(map->getParameterValues().at(0)), name);
    shown.set("baseColorMap", {std::string()});
    EXPECT_EQ(shown.draw(0, 0), QColor(Qt::white));
}

TEST(FXStandardTest, TheTechniqueIsHowAlphaIsTreated)
{
    Shown shown;
    const auto effect = shown.fxMaterial->getFXEffect();
    ASSERT_EQ(effect->getTechniqueCount(), 3u);
    EXPECT_EQ(effect->getTechniqueNameAt(0), "opaque");
    EXPECT_EQ(effect->getTechniqueNameAt(1), "mask");
    EXPECT_EQ(effect->getTechniqueNameAt(2), "blend");
    EXPECT_EQ(shown.fxMaterial->getTechnique(), 0u);
    shown.set("baseColor", {1.0f, 0.0f, 0.0f, 0.25f});
    EXPECT_EQ(shown.draw(0, 0), QColor(Qt::red));
    shown.fxMaterial->setTechnique(1);
    EXPECT_EQ(getStandardMaterial(*shown.material)->alpha, StandardMaterial::Alpha::Mask);
    EXPECT_TRUE(isBackground(shown.draw(0, 0)));
    shown.fxMaterial->setTechnique(2);
    const QColor blended = shown.draw(0, 0);
    EXPECT_FALSE(isBackground(blended));
    EXPECT_LT(blended.red(), 200);
    shown.fxMaterial->setTechnique(3);
    EXPECT_EQ(shown.fxMaterial->getTechnique(), 2u);
}

TEST(FXStandardTest, AnEventChangesAnImportedMaterial)
{
    Shown shown;
    shown.draw();
    const std::string id = shown.material->getMaterialID();
    shown.scene.events->triggerEvent("ChangeMaterialParameter", id + ", baseColor, 0, 1, 0, 1");
    EXPECT_EQ(shown.draw(0, 0), QColor(Qt::green));
    EXPECT_THAT(shown.scene.events->getData("MaterialParameterUpdated"), ElementsAre(id + ", baseColor"));
}

TEST(FXStandardTest, AMaterialOfTheFileLooksAsTheImportedOneDoes)
{
    FXStage stage;
    scene::LightSource sun;
    sun.kind = scene::LightSource::Kind::Directional;
    sun.direction = {-1, -1, -1};
    stage.scene.addLight("sun", sun);
    const MaterialPtr imported = litMaterial(QColor(204, 204, 204));
    const NodePtr ball = stage.scene.add("ball", ballMesh(), imported);
    const QImage expected = stage.draw();
    const MaterialPtr loaded = stage.makeMaterial("standard.fx");
    ball->setMaterial(loaded, 0, 0);
    EXPECT_EQ(stage.draw(), expected);
    stage.setFloats(loaded, "metalness", {1});
    EXPECT_NE(stage.draw(), expected);
}

TEST(FXStandardTest, TheCodeIsThatOfTheFile)
{
    Shown shown;
    std::ifstream stream("data/effects/standard.fx");
    const std::string text(std::istreambuf_iterator<char>(stream), {});
    EXPECT_EQ(shown.fxMaterial->getFXEffect()->getEffectCode(), text);
    EXPECT_TRUE(shown.manager()->reloadEffect(shown.fxMaterial->getFXEffect()));
    EXPECT_TRUE(isNear(shown.draw(0, 0), QColor(255, 128, 0)));
}
