#include "engine/fx/FXAnnotation.h"
#include "tests/engine/FXStage.h"

#include <boost/make_shared.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <limits>
#include <thread>

using namespace halvern;
using namespace halvern::test;
using testing::ElementsAre;
using Values = std::vector<boost::any>;

namespace {

const char* const declarations = R"(
float size < string UIName = "Size"; string UIWidget = "slider"; float UIMin = 1; int UIMax = 5; bool UIStep = true; > = 2;
float2 place = {1, 2};
float3 tint = {0.1, 0.2, 0.3};
float4 color = {0.1, 0.2, 0.3, 0.4};
int count = 3;
bool on = true;
texture map = "nothing.png";
float sas < string SasUiControl = "Slider"; string SasUiLabel = "Label"; float SasUiMin = 2; float SasUiMax = 3; float SasUiStride = 0.5; >;
)";

/// A material of an effect with a parameter of each type. Needs no OpenGL.
struct Shelf : FXStage
{
    Shelf() :
        file(objectEffect("vec4(1.0)", std::string("string Other = \"x\";") + declarations) +
             "technique second { }\n")
    {
        context.doneCurrent();
        material = fxMaterial(makeMaterial(file.path()));
    }

    boost::shared_ptr<engine::fx::FXMaterialParameter> parameter(const std::string& name)
    {
        return material->getParameterByName(name);
    }

    std::vector<float> numbers(const std::string& name)
    {
        std::vector<float> found;
        for (const auto& value : parameter(name)->getParameterValues())
            found.push_back(boost::any_cast<float>(value));
        return found;
    }

    std::string text(const std::string& name)
    {
        return boost::any_cast<std::string>(parameter(name)->getParameterValues().at(0));
    }

    boost::any annotation(const std::string& name, const std::string& annotation)
    {
        const auto found = parameter(name)->getAnnotationByName(annotation);
        return found ? found->getFirstValue() : boost::any();
    }

    EffectFile file;
    boost::shared_ptr<engine::fx::FXMaterial> material;
};

} // namespace

TEST(FXMaterialTest, ParametersAreTheSameObjectsEachTime)
{
    Shelf shelf;
    ASSERT_EQ(shelf.material->getParameterCount(), 8);
    for (int i = 0; i < 8; ++i) {
        const auto parameter = shelf.material->getParameterAt(i);
        EXPECT_EQ(shelf.material->getParameterAt(i), parameter);
        EXPECT_EQ(shelf.material->getParameterByName(parameter->getParameterName()), parameter);
    }
    EXPECT_FALSE(shelf.material->getParameterAt(8));
    EXPECT_FALSE(shelf.material->getParameterAt(~0u));
    EXPECT_FALSE(shelf.material->getParameterByName("other"));
    EXPECT_FALSE(shelf.material->getParameterByName("Size"));
}

TEST(FXMaterialTest, TypesAreCalledAsInTheFile)
{
    Shelf shelf;
    const char* const types[] = {"float", "float2", "float3", "float4", "int", "bool", "texture", "float"};
    for (int i = 0; i < 8; ++i)
        EXPECT_EQ(shelf.material->getParameterAt(i)->getParameterType(), types[i]);
}

TEST(FXMaterialTest, ValuesBeginAsTheDefaults)
{
    Shelf shelf;
    EXPECT_THAT(shelf.numbers("size"), ElementsAre(2));
    EXPECT_THAT(shelf.numbers("place"), ElementsAre(1, 2));
    EXPECT_THAT(shelf.numbers("color"), ElementsAre(0.1f, 0.2f, 0.3f, 0.4f));
    EXPECT_THAT(shelf.numbers("count"), ElementsAre(3));
    EXPECT_THAT(shelf.numbers("on"), ElementsAre(1));
    EXPECT_EQ(shelf.text("map"), "nothing.png");
    EXPECT_THAT(shelf.numbers("sas"), ElementsAre(0));
}

TEST(FXMaterialTest, ValuesOfAnotherNumberOrTypeChangeNothing)
{
    Shelf shelf;
    EXPECT_FALSE(shelf.parameter("size")->setParameterValue(Values{}));
    EXPECT_FALSE(shelf.parameter("size")->setParameterValue(Values{1.0f, 2.0f}));
    EXPECT_FALSE(shelf.parameter("size")->setParameterValue(Values{std::string("1")}));
    EXPECT_FALSE(shelf.parameter("size")->setParameterValue(Values{boost::any()}));
    EXPECT_FALSE(shelf.parameter("size")->setParameterValue(Values{std::numeric_limits<float>::quiet_NaN()}));
    EXPECT_FALSE(shelf.parameter("size")->setParameterValue(std::string("1")));
    EXPECT_FALSE(shelf.parameter("color")->setParameterValue(Values{1.0f, 2.0f, 3.0f}));
    EXPECT_FALSE(shelf.parameter("map")->setParameterValue(Values{1.0f}));
    EXPECT_FALSE(shelf.parameter("map")->setParameterValue(Values{}));
    EXPECT_THAT(shelf.numbers("size"), ElementsAre(2));
    EXPECT_EQ(shelf.text("map"), "nothing.png");
}

TEST(FXMaterialTest, NumbersOfAnyKindAreTaken)
{
    Shelf shelf;
    EXPECT_TRUE(shelf.parameter("size")->setParameterValue(Values{4}));
    EXPECT_THAT(shelf.numbers("size"), ElementsAre(4));
    EXPECT_TRUE(shelf.parameter("size")->setParameterValue(Values{0.25}));
    EXPECT_THAT(shelf.numbers("size"), ElementsAre(0.25f));
    EXPECT_TRUE(shelf.parameter("count")->setParameterValue(Values{2.75f}));
    EXPECT_THAT(shelf.numbers("count"), ElementsAre(2));
    EXPECT_TRUE(shelf.parameter("on")->setParameterValue(Values{false}));
    EXPECT_THAT(shelf.numbers("on"), ElementsAre(0));
    EXPECT_TRUE(shelf.parameter("map")->setParameterValue(Values{std::string("a.png")}));
    EXPECT_EQ(shelf.text("map"), "a.png");
}

TEST(FXMaterialTest, AColourWithoutOpacityTakesOneWithIt)
{
    Shelf shelf;
    EXPECT_TRUE(shelf.parameter("tint")->setParameterValue(Values{1.0f, 0.5f, 0.0f, 1.0f}));
    EXPECT_THAT(shelf.numbers("tint"), ElementsAre(1, 0.5f, 0));
}

TEST(FXMaterialTest, AnnotationsAreFoundWithoutCaseAndByTheirAliases)
{
    Shelf shelf;
    EXPECT_EQ(boost::any_cast<std::string>(shelf.annotation("size", "UIName")), "Size");
    EXPECT_EQ(boost::any_cast<std::string>(shelf.annotation("size", "uiwidget")), "slider");
    EXPECT_EQ(boost::any_cast<float>(shelf.annotation("size", "UIMin")), 1);
    EXPECT_EQ(boost::any_cast<float>(shelf.annotation("size", "UIMax")), 5);
    EXPECT_EQ(boost::any_cast<float>(shelf.annotation("size", "UIStep")), 1);
    EXPECT_EQ(boost::any_cast<std::string>(shelf.annotation("sas", "UIWidget")), "Slider");
    EXPECT_EQ(boost::any_cast<std::string>(shelf.annotation("sas", "UIName")), "Label");
    EXPECT_EQ(boost::any_cast<float>(shelf.annotation("sas", "UIMin")), 2);
    EXPECT_EQ(boost::any_cast<float>(shelf.annotation("sas", "UIMax")), 3);
    EXPECT_EQ(boost::any_cast<float>(shelf.annotation("sas", "UIStep")), 0.5f);
    EXPECT_EQ(boost::any_cast<float>(shelf.annotation("sas", "SasUiStride")), 0.5f);
    EXPECT_FALSE(shelf.parameter("place")->getAnnotationByName("UIName"));
    EXPECT_FALSE(shelf.parameter("size")->getAnnotationByName(""));
}

TEST(FXMaterialTest, OnlyTechniquesThatThereAreCanBeSet)
{
    Shelf shelf;
    EXPECT_EQ(shelf.material->getTechnique(), 0u);
    shelf.material->setTechnique(1);
    EXPECT_EQ(shelf.material->getTechnique(), 1u);
    shelf.material->setTechnique(2);
    shelf.material->setTechnique(~0u);
    EXPECT_EQ(shelf.material->getTechnique(), 1u);
}

TEST(FXMaterialTest, MaterialsOfOneEffectHaveTheirOwnValues)
{
    Shelf shelf;
    const auto other = shelf.fxMaterial(shelf.makeMaterial(shelf.file.path()));
    shelf.parameter("size")->setParameterValue(Values{5.0f});
    EXPECT_EQ(boost::any_cast<float>(other->getParameterByName("size")->getParameterValues().at(0)), 2);
    EXPECT_EQ(other->getFXEffect(), shelf.material->getFXEffect());
}

TEST(FXMaterialTest, AChangeAsksForAFrame)
{
    Shelf shelf;
    shelf.scene.manager->update();
    shelf.scene.events->clear();
    shelf.parameter("size")->setParameterValue(Values{5.0f});
    EXPECT_EQ(shelf.scene.events->getCount("SyncScene"), 0u); // not for each, but once a cycle
    shelf.scene.manager->update();
    EXPECT_EQ(shelf.scene.events->getCount("SyncScene"), 1u);
}

TEST(FXMaterialTest, SeveralThreadsMaySetAndRead)
{
    FXStage stage;
    const EffectFile file(objectEffect("color4", "float4 color4; float3 tint; bool lit;"));
    const MaterialPtr material = stage.makeMaterial(file.path());
    stage.scene.add("cube", boxMesh(), material);
    const auto fxMaterial = stage.fxMaterial(material);
    std::atomic<bool> stop{false};
    std::thread writer([&] {
        for (int i = 0; !stop; ++i) {
            const float value = (i % 100) / 100.0f;
            fxMaterial->getParameterByName("color4")->setParameterValue(Values{value, value, value, 1.0f});
            fxMaterial->getParameterByName("lit")->setParameterValue(Values{i % 2 == 0});
        }
    });
    std::thread sender([&] {
        while (!stop)
            stage.scene.events->triggerEvent("ChangeMaterialParameter",
                                             material->getMaterialID() + ", tint, 1, 0.5, 0.25");
    });
    for (int i = 0; i < 30; ++i) {
        const QColor color = stage.draw(0, 0);
        EXPECT_TRUE(color.red() == color.green() && color.green() == color.blue());
        EXPECT_EQ(fxMaterial->getParameterByName("color4")->getParameterValues().size(), 4u);
    }
    stop = true;
    writer.join();
    sender.join();
    EXPECT_TRUE(stage.messages().empty());
}
