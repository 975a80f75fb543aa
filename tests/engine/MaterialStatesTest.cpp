#include "tests/engine/Stage.h"

#include <boost/make_shared.hpp>

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <optional>
#include <vector>

using namespace halvern;
using namespace halvern::test;
using scene::StandardMaterial;

namespace {

/// A picture whose rows, from the top, have these colours.
std::shared_ptr<const scene::Image> rows(std::vector<QColor> colors, int channels = 4)
{
    auto image = std::make_shared<scene::Image>();
    image->width = 4;
    image->height = colors.size();
    image->channels = channels;
    for (const QColor& color : colors)
        for (int x = 0; x < image->width; ++x) {
            const int rgba[] = {color.red(), color.green(), color.blue(), color.alpha()};
            if (channels < 3)
                image->pixels.push_back(color.red());
            if (channels == 2)
                image->pixels.push_back(color.alpha());
            for (int c = 0; channels > 2 && c < channels; ++c)
                image->pixels.push_back(rgba[c]);
        }
    return image;
}

/// A cube in the middle with a material of its own.
struct Shown : Stage
{
    Shown() : material(unlitMaterial(Qt::white)) { scene.add("cube", boxMesh(), material); }

    template <class Change>
    QImage drawWith(Change change)
    {
        changeMaterial(*material, change);
        return draw();
    }

    MaterialPtr material;
};

} // namespace

TEST(MaterialStatesTest, AnUnlitColourComesOutAsItIs)
{
    Shown shown;
    for (float value : {0.0f, 0.1f, 0.25f, 0.5f, 0.75f, 1.0f}) {
        const QImage image = shown.drawWith([&](auto& values) { values.baseColor = {value, 0, 1, 1}; });
        EXPECT_NEAR(pixel(image, 0, 0).red(), value * 255, 1.5);
        EXPECT_EQ(pixel(image, 0, 0).blue(), 255);
    }
}

TEST(MaterialStatesTest, TheFirstRowOfAMapIsAtTextureCoordinateZero)
{
    Shown shown;
    const QImage image = shown.drawWith([](auto& values) {
        values.baseColorMap = rows({Qt::red, Qt::red, Qt::blue, Qt::blue});
    });
    EXPECT_EQ(pixel(image, 0, 20), QColor(Qt::red));
    EXPECT_EQ(pixel(image, 0, -20), QColor(Qt::blue));
}

TEST(MaterialStatesTest, MapsOfOneToFourChannelsWork)
{
    Shown shown;
    for (int channels = 1; channels <= 4; ++channels) {
        const QImage image = shown.drawWith(
            [&](auto& values) { values.baseColorMap = rows({QColor(100, 100, 100)}, channels); });
        EXPECT_TRUE(isNear(pixel(image, 0, 0), QColor(100, 100, 100))) << channels;
    }
}

TEST(MaterialStatesTest, AMapMultipliesItsFactor)
{
    Shown shown;
    const QImage image = shown.drawWith([](auto& values) {
        values.baseColor = {0, 1, 1, 1};
        values.baseColorMap = rows({QColor(255, 255, 0)});
    });
    EXPECT_EQ(pixel(image, 0, 0), QColor(0, 255, 0));
}

TEST(MaterialStatesTest, ANewMapIsShownThoughItLiesWhereAnOldOneLay)
{
    Shown shown;
    const auto setMap = [&](std::shared_ptr<const scene::Image> map) {
        changeMaterial(*shown.material, [&](auto& values) { values.baseColorMap = std::move(map); });
    };
    std::optional<scene::Image> place;
    const auto put = [&](const QColor& color) -> std::shared_ptr<const scene::Image> {
        if (place)
            return rows({color}); // somebody still holds the old map
        place = *rows({color});
        return std::shared_ptr<const scene::Image>(&*place, [&](auto*) { place.reset(); });
    };
    for (int i = 0; i < 10; ++i) {
        const QColor color = QColor::fromHsv(i * 36, 255, 255);
        setMap(put(color));
        EXPECT_TRUE(isNear(shown.draw(0, 0), color)) << i;
        setMap({});
        shown.window->update();
    }
}

TEST(MaterialStatesTest, BrokenMapsCountAsWhite)
{
    Shown shown;
    auto empty = std::make_shared<scene::Image>();
    auto tooShort = std::make_shared<scene::Image>(*rows({Qt::red, Qt::red}));
    tooShort->pixels.resize(3);
    auto tooManyChannels = std::make_shared<scene::Image>(*rows({Qt::red}));
    tooManyChannels->channels = 7;
    for (const auto& image : {empty, tooShort, tooManyChannels}) {
        const QImage picture = shown.drawWith([&](auto& values) { values.baseColorMap = image; });
        EXPECT_EQ(pixel(picture, 0, 0), QColor(Qt::white));
    }
}

TEST(MaterialStatesTest, MaskCutsOutWhatIsBelowTheCutoff)
{
    Shown shown;
    const auto image =
        rows({QColor(255, 0, 0, 255), QColor(255, 0, 0, 255), QColor(255, 0, 0, 60), QColor(255, 0, 0, 60)});
    const QImage picture = shown.drawWith([&](auto& values) {
        values.baseColorMap = image;
        values.alpha = StandardMaterial::Alpha::Mask;
    });
    EXPECT_EQ(pixel(picture, 0, 20), QColor(Qt::red));
    EXPECT_TRUE(isBackground(pixel(picture, 0, -22)));
}

TEST(MaterialStatesTest, AnOpaqueMaterialIgnoresItsAlpha)
{
    Shown shown;
    const QImage picture = shown.drawWith([](auto& values) { values.baseColor = {1, 0, 0, 0.2f}; });
    EXPECT_EQ(pixel(picture, 0, 0), QColor(Qt::red));
    EXPECT_EQ(pixel(picture, 0, 0).alpha(), 255);
}

TEST(MaterialStatesTest, BlendMixesByAlpha)
{
    Shown shown;
    const QImage picture = shown.drawWith([](auto& values) {
        values.baseColor = {1, 1, 1, 0};
        values.alpha = StandardMaterial::Alpha::Blend;
    });
    EXPECT_TRUE(isBackground(pixel(picture, 0, 0)));
    EXPECT_EQ(pixel(picture, 0, 0).alpha(), 255);
}

TEST(MaterialStatesTest, EmissionShinesWithoutLight)
{
    Shown shown;
    const QImage dark = shown.drawWith([](auto& values) {
        values.unlit = false;
        values.baseColor = {0, 0, 0, 1};
    });
    const QImage bright = shown.drawWith([](auto& values) { values.emissive = {0, 0.8f, 0}; });
    EXPECT_GT(pixel(bright, 0, 0).green(), pixel(dark, 0, 0).green() + 100);
    EXPECT_LT(pixel(bright, 0, 0).red(), pixel(dark, 0, 0).red() + 30);
    const QImage mapped = shown.drawWith([](auto& values) { values.emissiveMap = rows({Qt::black}); });
    EXPECT_TRUE(isNear(pixel(mapped, 0, 0), pixel(dark, 0, 0)));
}

TEST(MaterialStatesTest, EveryMapChangesALitPicture)
{
    Shown shown;
    shown.scene.addLight("light", {});
    moveTo(*shown.scene.manager->getNodeByID("light.node"), 1, 1, 3);
    const QImage plain = shown.drawWith([](auto& values) {
        values.unlit = false;
        values.baseColor = {0.8f, 0.5f, 0.3f, 1};
        values.metalness = 1;
        values.roughness = 1;
    });
    const auto changed = [&](auto change) {
        const QImage image = shown.drawWith(change);
        changeMaterial(*shown.material, [](auto& values) {
            values.metalRoughMap = values.normalMap = values.occlusionMap = nullptr;
        });
        return image != plain;
    };
    EXPECT_TRUE(changed([](auto& values) { values.metalRoughMap = rows({QColor(255, 100, 100)}); }));
    EXPECT_TRUE(changed([](auto& values) { values.normalMap = rows({QColor(200, 128, 200)}); }));
    EXPECT_TRUE(changed([](auto& values) { values.occlusionMap = rows({QColor(50, 50, 50)}); }));
    EXPECT_TRUE(changed(
        [](auto& values) { values.occlusionMap = values.metalRoughMap = rows({QColor(50, 255, 255)}); }));
    EXPECT_FALSE(changed([](auto& values) { values.metalRoughMap = rows({Qt::white}); }));
}

TEST(MaterialStatesTest, AFlatNormalMapChangesNothing)
{
    Shown shown;
    scene::LightSource head;
    head.kind = scene::LightSource::Kind::Head;
    shown.scene.addLight("head", head);
    const QImage plain = shown.drawWith([](auto& values) { values.unlit = false; });
    const QImage mapped =
        shown.drawWith([](auto& values) { values.normalMap = rows({QColor(128, 128, 255)}); });
    EXPECT_TRUE(isNear(pixel(plain, 10, 10), pixel(mapped, 10, 10)));
}

TEST(MaterialStatesTest, ANormalMapTiltsTowardsTheMapsAxes)
{
    // A light from above: where the map's normal points upwards it gets brighter, y being upwards in maps.
    Shown shown;
    scene::LightSource source;
    source.kind = scene::LightSource::Kind::Directional;
    shown.scene.addLight("light", source);
    lookFrom(*shown.scene.manager->getNodeByID("light.node"), {0, 3, 3}, {0, 0, 0});
    const auto brightness = [&](QColor normal) {
        const QImage image = shown.drawWith([&](auto& values) {
            values.unlit = false;
            values.baseColor = {0.5f, 0.5f, 0.5f, 1};
            values.normalMap = rows({normal});
        });
        return pixel(image, 0, 0).green();
    };
    EXPECT_GT(brightness(QColor(128, 200, 220)), brightness(QColor(128, 55, 220)) + 20);
    lookFrom(*shown.scene.manager->getNodeByID("light.node"), {3, 0, 3}, {0, 0, 0});
    EXPECT_GT(brightness(QColor(200, 128, 220)), brightness(QColor(55, 128, 220)) + 20);
}

TEST(MaterialStatesTest, ARougherSurfaceHasAWiderHighlight)
{
    Stage stage;
    const NodePtr plane = stage.scene.add("plane", groundMesh(3), litMaterial(QColor(40, 40, 40)));
    plane->setRotation(Eigen::Affine3f(Eigen::AngleAxisf(float(M_PI_2), Eigen::Vector3f::UnitX())));
    stage.scene.addLight("light", {});
    moveTo(*stage.scene.manager->getNodeByID("light.node"), 0, 0, 3);
    const auto contrast = [&](float roughness) {
        changeMaterial(*plane->getMaterial(0, 0), [&](auto& values) { values.roughness = roughness; });
        const QImage image = stage.draw();
        return pixel(image, 0, 0).green() - pixel(image, 30, 0).green();
    };
    EXPECT_GT(contrast(0.2f), contrast(0.9f) + 30);
}

TEST(MaterialStatesTest, AMaterialOfAnotherEffectIsGrey)
{
    Stage stage;
    const auto material = boost::make_shared<scene::Material>("other", "effect");
    stage.scene.add("cube", boxMesh(), material);
    EXPECT_FALSE(isBackground(stage.draw(0, 0)));
}

TEST(MaterialStatesTest, VertexColoursTintTheMaterial)
{
    Shown shown;
    auto mesh = std::make_shared<scene::Mesh>(*boxMesh());
    mesh->colors.assign(mesh->positions.size(), Eigen::Vector4f(1, 0, 0, 1));
    setGeometries(*shown.scene.manager->getNodeByID("cube"), {mesh});
    EXPECT_EQ(shown.draw(0, 0), QColor(Qt::red));
}
