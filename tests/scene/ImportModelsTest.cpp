// The importer on the models of the package assimp-testmodels.

#include "engine/scene/Camera.h"
#include "engine/scene/CameraInstance.h"
#include "engine/scene/Light.h"
#include "reference/scene/CameraPose.h"
#include "reference/scene/Importer.h"
#include "reference/scene/LightSource.h"
#include "reference/scene/Mesh.h"
#include "reference/scene/Skin.h"
#include "tests/scene/SceneHelpers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace {

using namespace halvern::scene;
using namespace halvern::test;
namespace fs = std::filesystem;

const std::string Models = HALVERN_TEST_MODELS;

struct ImportModelsTest : testing::Test
{
    void SetUp() override
    {
        if (!fs::is_directory(Models))
            GTEST_SKIP() << Models << " is not installed";
    }
};

/// Every skin fits its mesh, and its bones are nodes of the scene.
void expectSkinned(const ImportedScene& imported, const Node& node)
{
    const auto meshes = getGeometries(node);
    const auto skins = getSkins(node);
    for (size_t i = 0; i < skins.size(); ++i) {
        if (!skins[i])
            continue;
        EXPECT_TRUE(fits(*skins[i], *meshes.at(i)));
        for (const auto& bone : skins[i]->bones)
            EXPECT_TRUE(bone.node.lock() && imported.sceneManager->getNodeByID(bone.node.lock()->getID()));
    }
}

/// No index out of range, no array of the wrong length, no number that is none.
void expectDrawable(const ImportedScene& imported)
{
    for (const auto& node : imported.sceneManager->getNodeArray()) {
        EXPECT_EQ(node->getID().find(','), std::string::npos);
        for (const auto& mesh : getGeometries(*node)) {
            const size_t count = mesh->positions.size();
            EXPECT_FALSE(mesh->indices.empty());
            for (const uint32_t index : mesh->indices)
                ASSERT_LT(index, count);
            EXPECT_TRUE(mesh->normals.empty() || mesh->normals.size() == count);
            EXPECT_TRUE(mesh->texCoords.empty() || mesh->texCoords.size() == count);
            EXPECT_TRUE(mesh->colors.empty() || mesh->colors.size() == count);
            EXPECT_TRUE(mesh->bounds.min().allFinite() && mesh->bounds.max().allFinite());
        }
        expectSkinned(imported, *node);
    }
}

TEST_F(ImportModelsTest, CountsAreThoseOfTheFile)
{
    struct Expected
    {
        const char* file;
        unsigned nodes, materials, cameras, lights, animations;
    };
    // As the program `assimp` reports them.
    for (const Expected& expected : {
             Expected{"glTF2/2CylinderEngine-glTF-Binary/2CylinderEngine.glb", 83, 7, 1, 0, 0},
             Expected{"OBJ/spider.obj", 20, 4, 0, 0, 0},
             Expected{"FBX/huesitos.fbx", 16, 1, 1, 1, 1},
             Expected{"Collada/duck.dae", 4, 1, 1, 1, 0},
             Expected{"IFC/AC14-FZK-Haus.ifc", 216, 11, 0, 0, 0},
         }) {
        const auto imported = importScene(Models + "/" + expected.file, {});
        EXPECT_EQ(imported.counts.nodes, expected.nodes) << expected.file;
        EXPECT_EQ(imported.counts.materials, expected.materials) << expected.file;
        EXPECT_EQ(imported.counts.cameras, expected.cameras) << expected.file;
        EXPECT_EQ(imported.counts.lights, expected.lights) << expected.file;
        EXPECT_EQ(imported.counts.animations, expected.animations) << expected.file;
        EXPECT_EQ(imported.sceneManager->getMaterialList().size(), expected.materials);
        expectDrawable(imported);
    }
}

TEST_F(ImportModelsTest, BrokenFilesAreRefusedWithTheirNameAndAReason)
{
    unsigned refused = 0;
    for (const char* folder : {"invalid", "glTF2/wrongTypes", "glTF2/RecursiveNodes", "glTF2/MissingBin"}) {
        for (const auto& entry : fs::directory_iterator(Models + "/" + folder)) {
            try {
                expectDrawable(importScene(entry.path().string(), {}));
            } catch (const ImportError& error) {
                EXPECT_THAT(error.what(), testing::StartsWith(entry.path().string() + ": "));
                EXPECT_GT(std::string(error.what()).size(), entry.path().string().size() + 5);
                ++refused;
            }
        }
    }
    EXPECT_GT(refused, 15u);
}

TEST_F(ImportModelsTest, BadIndicesAreShownWithoutReadingOutOfBounds)
{
    unsigned shown = 0;
    for (const char* folder : {"glTF2/IndexOutOfRange", "glTF2/IncorrectVertexArrays"}) {
        for (const auto& entry : fs::recursive_directory_iterator(Models + "/" + folder)) {
            const auto extension = entry.path().extension();
            if (extension != ".gltf" && extension != ".glb")
                continue;
            try {
                expectDrawable(importScene(entry.path().string(), {}));
                ++shown;
            } catch (const ImportError& error) {
                EXPECT_THAT(error.what(), testing::HasSubstr("has no faces")); // not one good index
            }
        }
    }
    EXPECT_GT(shown, 1u);
}

TEST_F(ImportModelsTest, FilesThatBringAssimpDownAreSurvived)
{
    // A tree with gaps, a mesh without faces, no root at all.
    EXPECT_EQ(importScene(Models + "/RAW/WithColor.raw", {}).counts.triangles, 2u);
    EXPECT_EQ(importScene(Models + "/STL/triangle_with_empty_solid.stl", {}).counts.triangles, 1u);
    EXPECT_EQ(importScene(Models + "/OpenGEX/empty_camera.ogex", {}).counts.nodes, 0u);
    EXPECT_THROW(importScene(Models + "/invalid/OutOfMemory.off", {}), ImportError);
}

TEST_F(ImportModelsTest, FiguresHaveSkins)
{
    for (const char* file :
         {"FBX/huesitos.fbx", "FBX/animation_with_skeleton.fbx", "glTF2/simple_skin/simple_skin.gltf",
          "MD5/SimpleCube.md5mesh", "X/Testwuson.X", "X/anim_test.x", "SMD/WusonSMD.smd"}) {
        const auto imported = importScene(Models + "/" + file, {});
        unsigned skins = 0;
        for (const auto& node : imported.sceneManager->getNodeArray())
            skins += getSkins(*node).size();
        EXPECT_EQ(skins, imported.counts.meshes) << file;
        expectDrawable(imported);
    }
}

TEST_F(ImportModelsTest, BonesThatAFileListsSideBySideHangTogether)
{
    const auto imported = importScene(Models + "/MDL/MDL (HL1)/man.mdl", {});
    const auto parent = imported.sceneManager->getNodeByID("Pelvis");
    ASSERT_TRUE(parent);
    ASSERT_EQ(parent->getChildCount(), 3u);
    EXPECT_EQ(parent->getChildNode(0)->getName(), "RightLeg");
    EXPECT_EQ(parent->getChildNode(2)->getName(), "Spine");
    EXPECT_EQ(imported.sceneManager->getNodeByID("Root")->getChildNode(0), parent);
}

TEST_F(ImportModelsTest, ADistanceIsInTheUnitOfTheScene)
{
    // The file's unit is the centimetre.
    const auto imported = importScene(Models + "/Collada/COLLADA.dae", {});
    const auto camera = imported.sceneManager->getCameraInstanceAt(0)->getCamera();
    EXPECT_FLOAT_EQ(camera->getZNear(), 0.1f);
    EXPECT_FLOAT_EQ(camera->getZFar(), 10);
}

TEST_F(ImportModelsTest, CamerasLookWhereTheirFormatLooks)
{
    const Eigen::Matrix3f none = Eigen::Matrix3f::Identity();
    for (const char* file : {"ASE/TargetCameraAnim.ase", "LWS/move_x_post_linear.lws", "Collada/duck.dae"}) {
        const auto imported = importScene(Models + "/" + file, {});
        const auto camera = imported.sceneManager->getCameraInstanceAt(0)->getCamera();
        EXPECT_TRUE(getCameraPose(*camera).linear().isApprox(none)) << file;
    }
    const auto imported = importScene(Models + "/FBX/huesitos.fbx", {});
    const auto camera = imported.sceneManager->getCameraInstanceAt(0)->getCamera();
    EXPECT_TRUE((-getCameraPose(*camera).linear().col(2)).isApprox(Eigen::Vector3f::UnitX()));
}

TEST_F(ImportModelsTest, LightsOfWhichTheFileDoesNotSayHowTheyFadeDoNotFade)
{
    const auto imported = importScene(Models + "/ASE/anim2.ASE", {});
    const auto light = imported.sceneManager->getNodeByID("Sky01")->getInstanceLight(0);
    ASSERT_TRUE(light);
    EXPECT_EQ(getLightSource(*light).attenuation, Eigen::Vector3f(1, 0, 0));
}

TEST_F(ImportModelsTest, LightsThatNoNodeCarriesAreLeftOutWithAWarning)
{
    const auto imported = importScene(Models + "/OpenGEX/light_issue1262.ogex", {});
    EXPECT_EQ(imported.counts.lights, 3u);
    EXPECT_THAT(imported.warnings, testing::Contains(testing::HasSubstr("no node carries it")));
    const auto root = imported.sceneManager->getRoot();
    EXPECT_EQ(root->getChildNode(root->getChildCount() - 1)->getName(), "Key light");
}

TEST_F(ImportModelsTest, OneModelOfEveryFormatIsDrawable)
{
    for (const auto& format : fs::directory_iterator(Models)) {
        if (!format.is_directory())
            continue;
        for (const auto& entry : fs::directory_iterator(format.path())) {
            if (!entry.is_regular_file())
                continue;
            try {
                expectDrawable(importScene(entry.path().string(), {}));
                break;
            } catch (const ImportError&) {
                continue; // a texture, a text, or a format that Assimp does not know
            }
        }
    }
}

} // namespace
