#include "engine/scene/Material.h"
#include "reference/scene/Importer.h"
#include "reference/scene/Mesh.h"
#include "reference/scene/StandardMaterial.h"
#include "tests/scene/ModelFiles.h"
#include "tests/scene/SceneHelpers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

namespace {

using namespace halvern::scene;
using namespace halvern::test;
using testing::HasSubstr;

constexpr char Triangle[] = "v 0 0 0\nv 1 0 0\nv 0 1 0\nvt 0 0\nvt 1 0\nvt 0 1\n";

/// Imports with a decoder of "pictures" that hold their own name: one grey pixel, the first byte.
struct ImportMaterialTest : testing::Test
{
    ImportMaterialTest()
    {
        options.decodeImage = [this](const std::vector<uint8_t>& encoded, const std::string& hint) {
            decoded.push_back({std::string(encoded.begin(), encoded.end()), hint});
            if (encoded.empty() || encoded.front() == '!')
                return Image();
            return Image{"", 1, 1, 1, {encoded.front()}};
        };
    }

    ImportedScene import(const std::string& name, const std::string& bytes)
    {
        return importScene(folder.write(name, bytes), options);
    }

    /// The material of the triangle of an OBJ file with that material file.
    std::shared_ptr<const StandardMaterial> importMtl(const std::string& mtl)
    {
        folder.write("a.mtl", "newmtl m\n" + mtl);
        imported = import("a.obj", "mtllib a.mtl\n" + std::string(Triangle) + "usemtl m\nf 1/1 2/2 3/3\n");
        return materialOf("m");
    }

    /// The material of the triangle of a glTF file with that material.
    std::shared_ptr<const StandardMaterial> importGltf(const std::string& material,
                                                       const std::string& more = "")
    {
        Gltf gltf;
        gltf.triangle("0");
        const std::string materials = "\"materials\":[" + material + "]";
        imported = import("a.gltf", gltf.text(R"({"name":"n","mesh":0})", "0",
                                              materials + (more.empty() ? "" : "," + more)));
        return getStandardMaterial(*imported.sceneManager->getMaterialList().at(0));
    }

    std::shared_ptr<const StandardMaterial> materialOf(const std::string& id)
    {
        const auto material = imported.sceneManager->getMaterialWithID(id);
        EXPECT_TRUE(material) << id;
        return material ? getStandardMaterial(*material) : std::make_shared<StandardMaterial>();
    }

    struct Decoded
    {
        std::string bytes;
        std::string hint;
    };

    const TemporaryFolder folder;
    ImportOptions options;
    std::vector<Decoded> decoded;
    ImportedScene imported;
};

TEST_F(ImportMaterialTest, MaterialsThatDifferOnlyInNameAreOne)
{
    std::string mtl;
    std::string obj = "mtllib a.mtl\n" + std::string(Triangle);
    for (int i = 0; i < 35; ++i) {
        const std::string name = "m" + std::to_string(i);
        mtl += "newmtl " + name + "\nKd 0." + std::to_string(i % 7 + 1) + " 0 0\n";
        obj += "o o" + std::to_string(i) + "\nusemtl " + name + "\nf 1 2 3\n";
    }
    folder.write("a.mtl", mtl);
    imported = import("a.obj", obj);
    EXPECT_EQ(imported.counts.materials, 7u);
    EXPECT_EQ(imported.sceneManager->getMaterialList().size(), 7u);
}

TEST_F(ImportMaterialTest, IDsAreUniqueWithoutCommasAndNamesStay)
{
    Gltf gltf;
    for (int i = 0; i < 3; ++i)
        gltf.triangle(std::to_string(i));
    imported = import(
        "a.gltf",
        gltf.text(
            R"({"children":[1,2,3]},{"mesh":0},{"mesh":1},{"mesh":2})", "0",
            R"("materials":[{"name":"a, b","alphaCutoff":0.1},{"name":"a_ b","alphaCutoff":0.2},{"alphaCutoff":0.3}])"));
    std::set<std::string> ids;
    for (const auto& material : imported.sceneManager->getMaterialList()) {
        EXPECT_TRUE(ids.insert(material->getMaterialID()).second);
        EXPECT_EQ(material->getEffectID(), StandardEffectID);
    }
    EXPECT_EQ(ids, (std::set<std::string>{"a_ b", "a_ b-2", "material"}));
    EXPECT_EQ(materialOf("a_ b")->name, "a, b");
}

TEST_F(ImportMaterialTest, EachGeometryWearsItsMaterialInSlotZero)
{
    folder.write("a.mtl", "newmtl red\nKd 1 0 0\nnewmtl green\nKd 0 1 0\n");
    imported = import("a.obj", "mtllib a.mtl\n" + std::string(Triangle) +
                                   "usemtl red\nf 1 2 3\nusemtl green\nf 3 2 1\n");
    unsigned found = 0;
    for (const auto& node : imported.sceneManager->getNodeArray()) {
        for (unsigned i = 0; i < getGeometries(*node).size(); ++i, ++found)
            EXPECT_EQ(node->getMaterial(i, 0)->getMaterialID(), i == 0 ? "red" : "green");
    }
    EXPECT_EQ(found, 2u);
}

TEST_F(ImportMaterialTest, MetallicRoughnessValuesAreTaken)
{
    const auto values = importGltf(R"({"name":"m","doubleSided":true,"alphaMode":"MASK","alphaCutoff":0.25,
        "emissiveFactor":[1,0,0],"pbrMetallicRoughness":{"baseColorFactor":[0.2158605,1,0,0.5],
        "metallicFactor":0.75,"roughnessFactor":0.125}})");
    EXPECT_EQ(values->name, "m");
    EXPECT_TRUE(values->baseColor.isApprox(Eigen::Vector4f(0.5029f, 1, 0, 0.5f), 1e-3f)); // in sRGB
    EXPECT_EQ(values->metalness, 0.75f);
    EXPECT_EQ(values->roughness, 0.125f);
    EXPECT_TRUE(values->emissive.isApprox(Eigen::Vector3f(1, 0, 0), 1e-3f));
    EXPECT_TRUE(values->twoSided);
    EXPECT_EQ(values->alpha, StandardMaterial::Alpha::Mask);
    EXPECT_EQ(values->alphaCutoff, 0.25f);
    EXPECT_FALSE(values->unlit);
}

TEST_F(ImportMaterialTest, MetallicRoughnessDefaultsAreThoseOfTheFormat)
{
    const auto values = importGltf("{}");
    EXPECT_TRUE(values->baseColor.isApprox(Eigen::Vector4f::Ones(), 1e-3f));
    EXPECT_EQ(values->metalness, 1);
    EXPECT_EQ(values->roughness, 1);
    EXPECT_FALSE(values->twoSided);
    EXPECT_EQ(values->alpha, StandardMaterial::Alpha::Opaque);
    EXPECT_EQ(values->normalScale, 1);
}

TEST_F(ImportMaterialTest, UnlitIsKept)
{
    EXPECT_TRUE(importGltf(R"({"extensions":{"KHR_materials_unlit":{}}})",
                           R"("extensionsUsed":["KHR_materials_unlit"])")
                    ->unlit);
}

TEST_F(ImportMaterialTest, SpecularGlossinessIsReadAsMetallicRoughness)
{
    const auto values = importGltf(
        R"({"extensions":{"KHR_materials_pbrSpecularGlossiness":{"diffuseFactor":[1,0,0,1],"glossinessFactor":0.75}}})",
        R"("extensionsUsed":["KHR_materials_pbrSpecularGlossiness"])");
    EXPECT_TRUE(values->baseColor.isApprox(Eigen::Vector4f(1, 0, 0, 1), 1e-3f));
    EXPECT_EQ(values->metalness, 0);
    EXPECT_FLOAT_EQ(values->roughness, 0.25f);
}

TEST_F(ImportMaterialTest, ClassicMaterialsAreEstimated)
{
    const auto values = importMtl("Kd 0.25 0.5 0.75\nKs 1 1 1\nKe 0 0.5 0\nNs 98\nd 0.5\n");
    EXPECT_TRUE(values->baseColor.isApprox(Eigen::Vector4f(0.25f, 0.5f, 0.75f, 0.5f)));
    EXPECT_TRUE(values->emissive.isApprox(Eigen::Vector3f(0, 0.5f, 0)));
    EXPECT_EQ(values->metalness, 0);
    EXPECT_NEAR(values->roughness, std::sqrt(2.0 / 100), 1e-4);
    EXPECT_EQ(values->alpha, StandardMaterial::Alpha::Blend);
    EXPECT_TRUE(values->twoSided);
}

TEST_F(ImportMaterialTest, ASurfaceWithoutAHighlightIsRough)
{
    EXPECT_FLOAT_EQ(importMtl("Ks 0 0 0\nNs 98\n")->roughness, 0.9f);
}

TEST_F(ImportMaterialTest, APictureThatIsSeeThroughMakesTheMaterialSo)
{
    using Alpha = StandardMaterial::Alpha;
    folder.write("a.png", "x");
    const std::vector<std::pair<std::vector<uint8_t>, Alpha>> pictures = {
        {{9, 255, 9, 250}, Alpha::Opaque}, {{9, 255, 9, 0}, Alpha::Mask}, {{9, 100, 9, 255}, Alpha::Blend}};
    for (const auto& [pixels, alpha] : pictures) {
        options.decodeImage = [&](auto&, auto&) { return Image{"", 2, 1, 2, pixels}; };
        EXPECT_EQ(importMtl("map_Kd a.png\n")->alpha, alpha);
    }
}

TEST_F(ImportMaterialTest, ABlackColorUnderAMapIsTakenForWhite)
{
    folder.write("a.png", "x");
    EXPECT_TRUE(importMtl("Kd 0 0 0\nmap_Kd a.png\n")->baseColor.isApprox(Eigen::Vector4f::Ones()));
    EXPECT_TRUE(importMtl("Kd 0 0 0\n")->baseColor.head<3>().isZero());
}

TEST_F(ImportMaterialTest, AGlowingSurfaceGlowsInTheColorsOfItsMap)
{
    folder.write("a.png", "x");
    const auto values = importMtl("Ke 1 1 1\nmap_Kd a.png\n");
    EXPECT_TRUE(values->baseColorMap);
    EXPECT_EQ(values->emissiveMap, values->baseColorMap);
}

TEST_F(ImportMaterialTest, AnInvisibleClassicMaterialCountsAsOpaque)
{
    const auto values = importMtl("Kd 1 1 1\nd 0\n");
    EXPECT_EQ(values->baseColor.w(), 1);
    EXPECT_EQ(values->alpha, StandardMaterial::Alpha::Opaque);
}

TEST_F(ImportMaterialTest, NumbersThatAreNoneDoNoHarm)
{
    const auto values = importMtl("Kd nan inf -inf\nNs nan\nd 1e39\nKe -5 7 nan\n");
    EXPECT_TRUE(values->baseColor.allFinite());
    EXPECT_TRUE(values->emissive.allFinite());
    EXPECT_GE(values->roughness, 0);
    EXPECT_LE(values->roughness, 1);
}

TEST_F(ImportMaterialTest, WithoutADecoderThereAreNoMaps)
{
    folder.write("map.png", "x");
    options.decodeImage = nullptr;
    EXPECT_FALSE(importMtl("map_Kd map.png\n")->baseColorMap);
    EXPECT_TRUE(imported.warnings.empty());
}

TEST_F(ImportMaterialTest, AMapIsFoundNextToTheModelHoweverItIsWritten)
{
    folder.write("textures/Red Map.PNG", "R");
    folder.write("beside.jpg", "B");
    for (const char* name :
         {"textures/Red Map.PNG", "textures\\Red Map.PNG", "./textures/red map.png", "TEXTURES/RED MAP.PNG",
          "textures/Red%20Map.PNG", "file://textures/Red Map.PNG"}) {
        const auto values = importMtl("map_Kd " + std::string(name) + "\n");
        ASSERT_TRUE(values->baseColorMap) << name;
        EXPECT_EQ(values->baseColorMap->pixels, std::vector<uint8_t>{'R'});
        EXPECT_EQ(decoded.back().hint, "png");
    }
    for (const char* name : {"beside.jpg", "C:\\work\\somebody\\beside.jpg", "/home/somebody/Beside.JPG",
                             "..\\..\\elsewhere\\beside.jpg"}) {
        const auto values = importMtl("map_Kd " + std::string(name) + "\n");
        ASSERT_TRUE(values->baseColorMap) << name;
        EXPECT_EQ(values->baseColorMap->pixels, std::vector<uint8_t>{'B'});
    }
}

TEST_F(ImportMaterialTest, AMissingOrBrokenMapIsAWarningThatNamesIt)
{
    EXPECT_FALSE(importMtl("map_Kd nowhere.png\n")->baseColorMap);
    EXPECT_THAT(imported.warnings, testing::ElementsAre(HasSubstr("nowhere.png")));
    folder.write("broken.png", "!");
    EXPECT_FALSE(importMtl("map_Kd broken.png\n")->baseColorMap);
    EXPECT_THAT(imported.warnings, testing::ElementsAre(HasSubstr("broken.png")));
    folder.path.string();
    std::filesystem::create_directories(folder.path / "folder.png");
    EXPECT_FALSE(importMtl("map_Kd folder.png\n")->baseColorMap);
    EXPECT_EQ(imported.warnings.size(), 1u);
}

TEST_F(ImportMaterialTest, ADecoderThatLiesIsNotBelieved)
{
    folder.write("a.png", "x");
    for (const Image& lie : {Image{"", 1000, 1000, 4, {1, 2, 3}}, Image{"", -1, -1, 1, {1}},
                             Image{"", 1, 1, 5, {1, 2, 3, 4, 5}}, Image{"", 1, 1, 0, {}}}) {
        options.decodeImage = [&](auto&, auto&) { return lie; };
        EXPECT_FALSE(importMtl("map_Kd a.png\n")->baseColorMap);
        EXPECT_EQ(imported.warnings.size(), 1u);
    }
}

TEST_F(ImportMaterialTest, EachPictureIsDecodedOnceAndShared)
{
    folder.write("a.png", "A");
    folder.write("a.mtl", "newmtl m\nmap_Kd a.png\nmap_Ke ./a.png\nnewmtl n\nKd 1 0 0\nmap_Kd A.PNG\n");
    imported = import("a.obj", "mtllib a.mtl\n" + std::string(Triangle) +
                                   "usemtl m\nf 1/1 2/2 3/3\nusemtl n\nf 3/3 2/2 1/1\n");
    EXPECT_EQ(decoded.size(), 1u);
    EXPECT_TRUE(materialOf("m")->baseColorMap);
    EXPECT_EQ(materialOf("m")->baseColorMap, materialOf("m")->emissiveMap);
    EXPECT_EQ(materialOf("m")->baseColorMap, materialOf("n")->baseColorMap);
}

TEST_F(ImportMaterialTest, EmbeddedPicturesAndAllMapsOfAMaterialAreRead)
{
    std::string images;
    std::string textures;
    for (int i = 0; i < 5; ++i) {
        images += std::string(i ? "," : "") + "{\"uri\":\"data:image/png;base64," +
                  base64(std::string(3, char('a' + i))) + "\"}";
        textures += std::string(i ? "," : "") + "{\"source\":" + std::to_string(i) + "}";
    }
    const auto values = importGltf(
        R"({"pbrMetallicRoughness":{"baseColorTexture":{"index":0},"metallicRoughnessTexture":{"index":1}},
            "normalTexture":{"index":2,"scale":0.5},"emissiveTexture":{"index":3},"occlusionTexture":{"index":4}})",
        "\"images\":[" + images + "],\"textures\":[" + textures + "]");
    ASSERT_TRUE(values->baseColorMap && values->metalRoughMap && values->normalMap && values->emissiveMap &&
                values->occlusionMap);
    EXPECT_EQ(values->baseColorMap->pixels.at(0), 'a');
    EXPECT_EQ(values->metalRoughMap->pixels.at(0), 'b');
    EXPECT_EQ(values->normalMap->pixels.at(0), 'c');
    EXPECT_EQ(values->emissiveMap->pixels.at(0), 'd');
    EXPECT_EQ(values->occlusionMap->pixels.at(0), 'e');
    EXPECT_EQ(values->normalScale, 0.5f);
    EXPECT_EQ(decoded.size(), 5u);
    EXPECT_EQ(decoded[0].hint, "png");
}

TEST_F(ImportMaterialTest, AMapWithOtherTexCoordsThanTheMeshKeepsIsLeftOut)
{
    folder.write("a.png", "A");
    const auto values = importGltf(
        R"({"pbrMetallicRoughness":{"baseColorTexture":{"index":0}},"occlusionTexture":{"index":0,"texCoord":1}})",
        R"("images":[{"uri":"a.png"}],"textures":[{"source":0}])");
    EXPECT_TRUE(values->baseColorMap);
    EXPECT_FALSE(values->occlusionMap);
}

TEST_F(ImportMaterialTest, TheTextureTransformMovesTheTexCoords)
{
    folder.write("a.png", "A");
    importGltf(
        R"({"pbrMetallicRoughness":{"baseColorTexture":{"index":0,"extensions":{"KHR_texture_transform":
            {"offset":[0.25,0.5],"rotation":1.5707963,"scale":[2,4]}}}}})",
        R"("images":[{"uri":"a.png"}],"textures":[{"source":0}],"extensionsUsed":["KHR_texture_transform"])");
    const auto mesh = getGeometries(*imported.sceneManager->getNodeByID("n")).at(0);
    // Counter-clockwise in the picture, whose rows run downwards: (u, v) becomes (4 v, -2 u) + offset.
    EXPECT_TRUE(mesh->texCoords.at(0).isApprox(Eigen::Vector2f(0.25f, 0.5f), 1e-4f));
    EXPECT_TRUE(mesh->texCoords.at(1).isApprox(Eigen::Vector2f(0.25f, -1.5f), 1e-4f));
    EXPECT_TRUE(mesh->texCoords.at(2).isApprox(Eigen::Vector2f(4.25f, 0.5f), 1e-4f));
}

} // namespace
