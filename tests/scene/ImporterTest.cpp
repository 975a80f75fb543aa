#include "reference/scene/Importer.h"

#include "engine/scene/Animation.h"
#include "engine/scene/Camera.h"
#include "engine/scene/CameraInstance.h"
#include "engine/scene/Light.h"
#include "engine/scene/Material.h"
#include "reference/scene/CameraPose.h"
#include "reference/scene/LightSource.h"
#include "reference/scene/Mesh.h"
#include "tests/scene/ModelFiles.h"
#include "tests/scene/SceneHelpers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <limits>
#include <set>

namespace {

using namespace halvern::scene;
using namespace halvern::test;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

constexpr char TwoTriangles[] =
    "o a\nv 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\no b\nv 0 0 5\nv 1 0 5\nv 0 1 5\nf 4 5 6\n";

struct ImporterTest : testing::Test
{
    ImportedScene import(const std::string& name, const std::string& bytes)
    {
        return importScene(folder.write(name, bytes), {});
    }

    /// The whole text of the error that the file gives.
    std::string errorOf(const std::string& file)
    {
        try {
            importScene(file, {});
        } catch (const ImportError& error) {
            return error.what();
        }
        return "no error";
    }

    const TemporaryFolder folder;
};

boost::shared_ptr<Node> findNode(const ImportedScene& imported, const std::string& id)
{
    const auto node = imported.sceneManager->getNodeByID(id);
    EXPECT_TRUE(node) << id;
    return node ? node : makeNode("missing");
}

std::vector<std::string> warningsOf(const ImportedScene& imported)
{
    return imported.warnings;
}

// ------------------------------------------------------------------------------------------ errors

TEST_F(ImporterTest, AnErrorNamesTheFileAndTheReason)
{
    const std::string folderName = folder.path.string();
    EXPECT_EQ(errorOf(folderName + "/nothing.obj"), folderName + "/nothing.obj: no such file");
    EXPECT_EQ(errorOf(folderName), folderName + ": is a folder");
    EXPECT_EQ(errorOf("/dev/null"), "/dev/null: is a device or a pipe, not a file");
    EXPECT_EQ(errorOf(""), ": no such file");
    EXPECT_EQ(errorOf(folder.write("empty.obj", "")), folderName + "/empty.obj: the file is empty");
    EXPECT_THAT(errorOf(folder.write("a.unknown", "nonsense")), StartsWith(folderName + "/a.unknown: "));
    EXPECT_THAT(errorOf(folder.write("a.gltf", "{\"asset\":")), StartsWith(folderName + "/a.gltf: "));
}

TEST_F(ImporterTest, AnErrorDoesNotQuoteTheWholeFile)
{
    const std::string text = "xof 0303txt 0032\nFrame A { FrameTransformMatrix { " + std::string(10000, 'x');
    const std::string error = errorOf(folder.write("a.x", text));
    EXPECT_THAT(error, HasSubstr("xxx..."));
    EXPECT_LT(error.size(), folder.path.string().size() + 400);
}

TEST_F(ImporterTest, AMissingBufferIsAnError)
{
    const std::string file =
        folder.write("a.gltf", R"({"asset":{"version":"2.0"},"scene":0,"scenes":[{"nodes":[0]}],
        "nodes":[{"mesh":0}],"meshes":[{"primitives":[{"attributes":{"POSITION":0}}]}],
        "buffers":[{"byteLength":36,"uri":"missing.bin"}],"bufferViews":[{"buffer":0,"byteLength":36}],
        "accessors":[{"bufferView":0,"componentType":5126,"count":3,"type":"VEC3"}]})");
    EXPECT_THAT(errorOf(file), StartsWith(file + ": "));
    EXPECT_THAT(errorOf(file), HasSubstr("missing.bin"));
}

TEST_F(ImporterTest, CountsBeyondTheFileAreRefusedBeforeMemoryIsTaken)
{
    for (const char* header :
         {"OFF\n353535235358 6 0\n", "# a comment\nOFF 8 99999999999 0\n", "STCN4nOFF 3\n1e12 1 0\n"})
        EXPECT_THAT(errorOf(folder.write("a.off", header)), HasSubstr("the header announces")) << header;
    EXPECT_EQ(errorOf(folder.write("good.off", "OFF\n3 1 0\n0 0 0\n1 0 0\n0 1 0\n3 0 1 2\n")), "no error");
}

TEST_F(ImporterTest, ASkinWithoutMatricesIsRefusedByName)
{
    const std::string json =
        R"({"asset":{"version":"2.0"},"nodes":[{"name":"bone"}],"skins":[{"joints":[0]}]})";
    EXPECT_THAT(errorOf(folder.write("a.gltf", json)),
                HasSubstr("a.gltf: skin 0 has no inverseBindMatrices"));

    std::string binary = std::string("glTF\2\0\0\0", 8) + std::string(4, '\0');
    binary += std::string{static_cast<char>(json.size()), 0, 0, 0} + "JSON" + json;
    EXPECT_THAT(errorOf(folder.write("b.glb", binary)),
                HasSubstr("b.glb: skin 0 has no inverseBindMatrices"));
}

// ------------------------------------------------------------------------------------------ progress

TEST_F(ImporterTest, ProgressRisesToOne)
{
    std::vector<float> shares;
    ImportOptions options;
    options.progress = [&](float share) {
        shares.push_back(share);
        return true;
    };
    importScene(folder.write("a.obj", TwoTriangles), options);
    ASSERT_FALSE(shares.empty());
    EXPECT_TRUE(std::is_sorted(shares.begin(), shares.end()));
    EXPECT_GE(shares.front(), 0);
    EXPECT_EQ(shares.back(), 1);
}

TEST_F(ImporterTest, AnImportIsCancelledAtEveryStep)
{
    const std::string file = folder.write("a.obj", TwoTriangles);
    int steps = 0;
    ImportOptions options;
    options.progress = [&](float) { return ++steps > 0; };
    importScene(file, options);
    ASSERT_GT(steps, 3);
    for (int last = 1; last <= steps; ++last) {
        int calls = 0;
        options.progress = [&](float) { return ++calls < last; };
        try {
            importScene(file, options);
            ADD_FAILURE() << "not cancelled by call " << last;
        } catch (const ImportCancelled& cancelled) {
            EXPECT_EQ(cancelled.what(), file + ": cancelled");
        }
        EXPECT_EQ(calls, last) << "asked again after it was cancelled";
    }
}

TEST_F(ImporterTest, SeveralFilesAreImportedAtOnce)
{
    const std::string obj = folder.write("a.obj", TwoTriangles);
    Gltf gltf;
    gltf.triangle();
    const std::string other = folder.write("a.gltf", gltf.text(R"({"mesh":0})"));
    runInThreads(4, [&](unsigned thread) {
        for (int i = 0; i < 10; ++i)
            EXPECT_GT(importScene(thread % 2 ? obj : other, {}).counts.triangles, 0u);
    });
}

// ------------------------------------------------------------------------------------------ nodes

TEST_F(ImporterTest, TheSceneIsCompleteAndNotStarted)
{
    const auto imported = import("my model.obj", TwoTriangles);
    ASSERT_TRUE(imported.sceneManager);
    EXPECT_EQ(imported.sceneManager->getSceneName(), "my model");
    EXPECT_FALSE(imported.sceneManager->getEventManager());
    EXPECT_EQ(imported.counts.nodes, 3u);
    EXPECT_EQ(imported.counts.meshes, 2u);
    EXPECT_EQ(imported.counts.triangles, 2u);
    EXPECT_EQ(imported.counts.vertices, 6u);
    EXPECT_TRUE(imported.warnings.empty());
}

TEST_F(ImporterTest, IDsAreUniqueAndWithoutCommasAndNamesStay)
{
    const auto imported = import(
        "a.gltf",
        Gltf().text(
            R"({"name":"a, b","children":[1,2,3,4]},{"name":"a_ b"},{"name":"same"},{"name":"same"},{"name":"same-2"})"));
    std::set<std::string> ids;
    for (const auto& node : imported.sceneManager->getNodeArray()) {
        EXPECT_TRUE(ids.insert(node->getID()).second) << node->getID();
        EXPECT_EQ(node->getID().find(','), std::string::npos);
        EXPECT_NE(node->getID(), "");
    }
    EXPECT_EQ(findNode(imported, "a_ b")->getName(), "a, b");
    EXPECT_EQ(findNode(imported, "a_ b-2")->getName(), "a_ b");
    EXPECT_EQ(findNode(imported, "same-2")->getName(), "same");
    EXPECT_EQ(findNode(imported, "same-2-2")->getName(), "same-2");
}

TEST_F(ImporterTest, ChildrenKeepTheirOrder)
{
    const auto imported = import(
        "a.gltf",
        Gltf().text(
            R"({"name":"r","children":[1,2]},{"name":"x","children":[3]},{"name":"y"},{"name":"x1"})"));
    EXPECT_EQ(imported.counts.nodes, 4u);
    const auto root = findNode(imported, "r");
    ASSERT_EQ(root->getChildCount(), 2u);
    EXPECT_EQ(root->getChildNode(0)->getID(), "x");
    EXPECT_EQ(root->getChildNode(0)->getChildNode(0)->getID(), "x1");
}

/// The local transform of a node as a matrix.
Eigen::Matrix4f matrixOf(const Node& node)
{
    Eigen::Affine3f matrix(node.getTranslation());
    matrix.linear() = node.getRotation().topLeftCorner<3, 3>() * node.getScale().asDiagonal();
    return matrix.matrix();
}

TEST_F(ImporterTest, TransformsAreTakenApartWithoutLoss)
{
    // A mirrored and turned one, a sheared one, one of no height.
    const auto imported = import("a.gltf", Gltf().text(
                                               R"({"name":"r","children":[1,2,3]},
           {"name":"mirror","matrix":[0,2,0,0, 3,0,0,0, 0,0,4,0, 5,6,7,1]},
           {"name":"shear","matrix":[1,0,0,0, 0.5,1,0,0, 0,0,1,0, 0,0,0,1]},
           {"name":"flat","matrix":[1,0,0,0, 0,0,0,0, 0,0,1,0, 0,0,0,1]})"));
    Eigen::Matrix4f mirror;
    mirror << 0, 3, 0, 5, 2, 0, 0, 6, 0, 0, 4, 7, 0, 0, 0, 1;
    EXPECT_TRUE(matrixOf(*findNode(imported, "mirror")).isApprox(mirror));
    const Eigen::Matrix3f rotation = findNode(imported, "mirror")->getRotation().topLeftCorner<3, 3>();
    EXPECT_NEAR(rotation.determinant(), 1, 1e-5);
    EXPECT_TRUE((rotation * rotation.transpose()).isIdentity(1e-5f));
    Eigen::Matrix4f shear = Eigen::Matrix4f::Identity();
    shear(0, 1) = 0.5f;
    EXPECT_TRUE(matrixOf(*findNode(imported, "shear")).isApprox(shear));
    EXPECT_EQ(findNode(imported, "flat")->getScale(), Eigen::Vector3f(1, 0, 1));
    EXPECT_TRUE(findNode(imported, "flat")->getRotation().isIdentity());
}

TEST_F(ImporterTest, ExtrasPutANodeIntoLayers)
{
    const auto imported = import(
        "a.gltf", Gltf().text(
                      R"({"name":"r","extras":{"layers":" cast_shadow  transparent "},"children":[1,2]},
           {"name":"plain"},{"name":"number","extras":{"layers":7}})"));
    EXPECT_TRUE(findNode(imported, "r")->inLayer("cast_shadow"));
    EXPECT_TRUE(findNode(imported, "r")->inLayer("transparent"));
    EXPECT_FALSE(findNode(imported, "r")->inLayer(""));
    EXPECT_FALSE(findNode(imported, "plain")->inLayer("cast_shadow"));
}

TEST_F(ImporterTest, ATreeOfAHundredThousandLevelsIsImported)
{
    std::string nodes;
    for (int i = 1; i < 100000; ++i)
        nodes += R"({"children":[)" + std::to_string(i) + "]},";
    const auto imported = import("deep.gltf", Gltf().text(nodes + "{}"));
    EXPECT_EQ(imported.counts.nodes, 100000u);
    EXPECT_GT(imported.sceneManager->getNodeArray().size(), 100000u);
}

TEST_F(ImporterTest, AFileWithoutMeshesIsAScene)
{
    const auto imported = import("a.gltf", Gltf().text(R"({"name":"alone"})"));
    EXPECT_EQ(imported.counts.nodes, 1u);
    EXPECT_EQ(imported.counts.meshes, 0u);
    EXPECT_EQ(imported.sceneManager->getCameraInstanceCount(), 1u);
}

// ------------------------------------------------------------------------------------------ geometry

TEST_F(ImporterTest, AMeshOnTwoNodesIsSharedAndCountsTwice)
{
    Gltf gltf;
    gltf.triangle();
    const auto imported =
        import("a.gltf", gltf.text(R"({"children":[1,2]},{"name":"a","mesh":0},{"name":"b","mesh":0})"));
    EXPECT_EQ(imported.counts.meshes, 1u);
    EXPECT_EQ(imported.counts.triangles, 2u);
    EXPECT_EQ(imported.counts.vertices, 6u);
    EXPECT_EQ(getGeometries(*findNode(imported, "a")).at(0), getGeometries(*findNode(imported, "b")).at(0));
}

TEST_F(ImporterTest, PolygonsAreTriangulatedAndMissingNormalsMade)
{
    const auto imported = import("a.obj", "v 0 0 0\nv 2 0 0\nv 2 1 0\nv 0 1 0\nf 1 2 3 4\n");
    EXPECT_EQ(imported.counts.triangles, 2u);
    const auto& node = *imported.sceneManager->getNodeArray().at(2);
    const auto mesh = getGeometries(node).at(0);
    EXPECT_EQ(mesh->primitive, Mesh::Primitive::Triangles);
    ASSERT_EQ(mesh->normals.size(), mesh->positions.size());
    for (const auto& normal : mesh->normals)
        EXPECT_TRUE(normal.isApprox(Eigen::Vector3f::UnitZ()));
    EXPECT_EQ(mesh->bounds.min(), Eigen::Vector3f(0, 0, 0));
    EXPECT_EQ(mesh->bounds.max(), Eigen::Vector3f(2, 1, 0));
    EXPECT_TRUE(mesh->texCoords.empty());
    EXPECT_TRUE(mesh->colors.empty());
}

TEST_F(ImporterTest, FacesThatShareVerticesGetMeanNormals)
{
    // A flat tent of two faces with a common ridge.
    Gltf gltf;
    const std::string positions =
        std::to_string(gltf.floats("VEC3", {0, 0.25f, 0, 0, 0.25f, 1, 1, 0, 0.5f, -1, 0, 0.5f}));
    const std::string indices = std::to_string(gltf.indices({0, 1, 2, 1, 0, 3}));
    gltf.mesh("{\"attributes\":{\"POSITION\":" + positions + "},\"indices\":" + indices + "}");
    const auto imported = import("a.gltf", gltf.text(R"({"name":"tent","mesh":0})"));
    const auto mesh = getGeometries(*findNode(imported, "tent")).at(0);
    ASSERT_EQ(mesh->normals.size(), 4u);
    EXPECT_TRUE(mesh->normals[0].isApprox(Eigen::Vector3f::UnitY()));
    EXPECT_TRUE(mesh->normals[1].isApprox(Eigen::Vector3f::UnitY()));
    EXPECT_TRUE(mesh->normals[2].isApprox(Eigen::Vector3f(0.25f, 1, 0).normalized()));
}

TEST_F(ImporterTest, VerticesAreDoubledWhereFacesThatShareThemMeetSharply)
{
    // The cube of eight vertices; they have colours.
    Gltf gltf;
    std::vector<float> positions;
    for (int i = 0; i < 8; ++i)
        positions.insert(positions.end(), {float(i & 1), float(i >> 1 & 1), float(i >> 2)});
    const std::string place = std::to_string(gltf.floats("VEC3", positions));
    const std::string indices =
        std::to_string(gltf.indices({0, 2, 1, 1, 2, 3, 4, 5, 6, 5, 7, 6, 0, 1, 4, 1, 5, 4,
                                     2, 6, 3, 3, 6, 7, 0, 4, 2, 2, 4, 6, 1, 3, 5, 3, 7, 5}));
    gltf.mesh("{\"attributes\":{\"POSITION\":" + place + ",\"COLOR_0\":" + place +
              "},\"indices\":" + indices + "}");
    const auto imported = import("a.gltf", gltf.text(R"({"name":"cube","mesh":0})"));
    const auto mesh = getGeometries(*findNode(imported, "cube")).at(0);
    ASSERT_EQ(mesh->positions.size(), 24u);
    ASSERT_EQ(mesh->colors.size(), 24u);
    for (size_t i = 0; i < mesh->indices.size(); i += 3) {
        const auto corner = [&](int k) { return mesh->indices[i + k]; };
        const Eigen::Vector3f outwards = (mesh->positions[corner(1)] - mesh->positions[corner(0)])
                                             .cross(mesh->positions[corner(2)] - mesh->positions[corner(0)]);
        for (int k = 0; k < 3; ++k) {
            EXPECT_TRUE(mesh->normals[corner(k)].isApprox(outwards.normalized()));
            EXPECT_EQ(mesh->colors[corner(k)].head<3>(), mesh->positions[corner(k)]);
        }
    }
}

TEST_F(ImporterTest, SharpEdgesStaySharp)
{
    const auto imported = import("a.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nv 0 0 1\nf 1 3 2\nf 1 2 4\n");
    const auto mesh = getGeometries(*imported.sceneManager->getNodeArray().at(2)).at(0);
    for (const auto& normal : mesh->normals)
        EXPECT_NEAR(normal.cwiseAbs().maxCoeff(), 1, 1e-5);
}

TEST_F(ImporterTest, KindsOfPrimitivesAreSeparated)
{
    const auto imported = import("a.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\nl 1 2\np 3\n");
    EXPECT_EQ(imported.counts.triangles, 1u);
    std::set<Mesh::Primitive> kinds;
    for (const auto& node : imported.sceneManager->getNodeArray()) {
        for (const auto& mesh : getGeometries(*node)) {
            kinds.insert(mesh->primitive);
            const size_t corners = mesh->primitive == Mesh::Primitive::Triangles ? 3
                                   : mesh->primitive == Mesh::Primitive::Lines   ? 2
                                                                                 : 1;
            EXPECT_EQ(mesh->indices.size() % corners, 0u);
            EXPECT_EQ(mesh->normals.empty(), mesh->primitive != Mesh::Primitive::Triangles);
        }
    }
    EXPECT_EQ(kinds.size(), 3u);
}

TEST_F(ImporterTest, TexCoordsBeginAtTheFirstRowOfThePicture)
{
    Gltf gltf; // whose own coordinates do so too
    gltf.triangle();
    const auto imported = import("a.gltf", gltf.text(R"({"name":"n","mesh":0})"));
    const auto mesh = getGeometries(*findNode(imported, "n")).at(0);
    EXPECT_EQ(mesh->texCoords.at(0), Eigen::Vector2f(0, 0));
    EXPECT_EQ(mesh->texCoords.at(2), Eigen::Vector2f(0, 1));

    // Those of OBJ begin at the last row.
    const auto other = import("a.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nvt 0 0.25\nf 1/1 2/1 3/1\n");
    const auto otherMesh = getGeometries(*other.sceneManager->getNodeArray().at(2)).at(0);
    EXPECT_EQ(otherMesh->texCoords.at(0), Eigen::Vector2f(0, 0.75f));
}

TEST_F(ImporterTest, VertexColorsComeAlong)
{
    const auto imported = import("a.obj", "v 0 0 0 1 0 0\nv 1 0 0 0 1 0\nv 0 1 0 0 0 1\nf 1 2 3\n");
    const auto mesh = getGeometries(*imported.sceneManager->getNodeArray().at(2)).at(0);
    ASSERT_EQ(mesh->colors.size(), 3u);
    EXPECT_EQ(mesh->colors[1], Eigen::Vector4f(0, 1, 0, 1));
}

TEST_F(ImporterTest, FacesThatCannotBeDrawnAreLeftOutWithAWarning)
{
    constexpr float Infinity = std::numeric_limits<float>::infinity();
    constexpr float NaN = std::numeric_limits<float>::quiet_NaN();
    Gltf gltf;
    const std::string positions = std::to_string(
        gltf.floats("VEC3", {0, 0, 0, 1, 0, 0, 0, 1, 0, Infinity, 0, 0, NaN, 0, 0, 3e38f, 0, 0}));
    const std::string indices =
        std::to_string(gltf.indices({0, 1, 2, 0, 1, 3, 0, 1, 4, 0, 1, 5, 0, 1, 6, 0, 1, 0xFFFFFFFF}));
    gltf.mesh("{\"attributes\":{\"POSITION\":" + positions + "},\"indices\":" + indices + "}");
    const auto imported = import("a.gltf", gltf.text(R"({"name":"n","mesh":0})"));
    const auto mesh = getGeometries(*findNode(imported, "n")).at(0);
    EXPECT_EQ(mesh->indices.size(), 3u);
    EXPECT_EQ(mesh->bounds.max(), Eigen::Vector3f(1, 1, 0));
    for (const auto& position : mesh->positions)
        EXPECT_TRUE(position.allFinite());
    EXPECT_THAT(warningsOf(imported), testing::Contains(HasSubstr("faces are invalid and left out")));
}

TEST_F(ImporterTest, ACloudOfPointsIsShown)
{
    const auto imported =
        import("a.ply", "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\n"
                        "property float y\nproperty float z\nend_header\n0 0 0\n1 0 0\n0 1 0\n");
    const auto mesh = getGeometries(*imported.sceneManager->getNodeArray().at(1)).at(0);
    EXPECT_EQ(mesh->primitive, Mesh::Primitive::Points);
    EXPECT_EQ(mesh->indices.size(), 3u);
}

// ------------------------------------------------------------------------------------------ cameras, lights

TEST_F(ImporterTest, ACameraKeepsItsVerticalFieldOfView)
{
    const auto imported = import(
        "a.gltf",
        Gltf().text(
            R"({"name":"r","children":[1,2,3]},{"name":"wide","camera":0},{"name":"no, aspect","camera":1},
           {"name":"ortho","camera":2})",
            "0",
            R"("cameras":[{"type":"perspective","perspective":{"yfov":0.7,"aspectRatio":2.5,"znear":0.5,"zfar":50}},
                      {"type":"perspective","perspective":{"yfov":0.9,"znear":0.25}},
                      {"type":"orthographic","orthographic":{"xmag":1,"ymag":1,"znear":0.1,"zfar":10}}])"));
    auto& manager = *imported.sceneManager;
    EXPECT_EQ(imported.counts.cameras, 3u);
    ASSERT_EQ(manager.getCameraInstanceCount(), 3u);
    const auto wide = manager.getCameraInstanceAt(0);
    EXPECT_EQ(wide->getSID(), "wide");
    EXPECT_EQ(wide->getNode(), findNode(imported, "wide"));
    EXPECT_EQ(wide->getCamera(), findNode(imported, "wide")->getInstanceCamera(0));
    EXPECT_NEAR(wide->getCamera()->getYFov(), 0.7 * 180 / M_PI, 1e-3);
    EXPECT_EQ(wide->getCamera()->getZNear(), 0.5f);
    EXPECT_EQ(wide->getCamera()->getZFar(), 50);
    EXPECT_EQ(manager.getCameraInstanceAt(1)->getSID(), "no_ aspect");
    EXPECT_NEAR(manager.getCameraInstanceAt(1)->getCamera()->getYFov(), 0.9 * 180 / M_PI, 1e-3);
    EXPECT_GT(manager.getCameraInstanceAt(2)->getCamera()->getYFov(), 0);
}

TEST_F(ImporterTest, ACameraOfTheFormatLooksAlongNegativeZFromItsNode)
{
    const auto imported =
        import("a.gltf",
               Gltf().text(
                   R"({"name":"c","camera":0,"translation":[1,2,3]})", "0",
                   R"("cameras":[{"type":"perspective","perspective":{"yfov":0.7,"znear":0.5,"zfar":50}}])"));
    const auto camera = imported.sceneManager->getCameraInstanceAt(0)->getCamera();
    EXPECT_TRUE(getCameraPose(*camera).isApprox(Eigen::Isometry3f::Identity()));
}

TEST_F(ImporterTest, LightsKeepTheirKindColorAndCone)
{
    const auto imported =
        import("a.gltf",
               Gltf().text(
                   R"({"name":"r","children":[1,2,3]},
           {"name":"sun","extensions":{"KHR_lights_punctual":{"light":0}}},
           {"name":"lamp","extensions":{"KHR_lights_punctual":{"light":1}}},
           {"name":"spot","extensions":{"KHR_lights_punctual":{"light":2}}})",
                   "0",
                   R"("extensionsUsed":["KHR_lights_punctual"],"extensions":{"KHR_lights_punctual":{"lights":[
           {"type":"directional","color":[1,0.5,0],"intensity":1},
           {"type":"point","color":[0.5,0.25,0],"intensity":40},
           {"type":"spot","intensity":0,"spot":{"innerConeAngle":0.2,"outerConeAngle":0.4}}]}})"));
    EXPECT_EQ(imported.counts.lights, 3u);
    const auto sun = findNode(imported, "sun")->getInstanceLight(0);
    ASSERT_TRUE(sun);
    EXPECT_EQ(getLightSource(*sun).kind, LightSource::Kind::Directional);
    EXPECT_TRUE(sun->getColor().isApprox(Eigen::Vector3f(1, 0.5f, 0)));
    EXPECT_EQ(getLightSource(*sun).intensity, 1);
    EXPECT_EQ(getLightSource(*sun).direction, Eigen::Vector3f(0, 0, -1));
    const auto lamp = findNode(imported, "lamp")->getInstanceLight(0);
    ASSERT_TRUE(lamp);
    EXPECT_EQ(getLightSource(*lamp).kind, LightSource::Kind::Point);
    EXPECT_TRUE(lamp->getColor().isApprox(Eigen::Vector3f(1, 0.5f, 0)));
    EXPECT_FLOAT_EQ(getLightSource(*lamp).intensity, 20);
    EXPECT_EQ(getLightSource(*lamp).attenuation, Eigen::Vector3f(0, 0, 1));
    const auto spot = findNode(imported, "spot")->getInstanceLight(0);
    ASSERT_TRUE(spot);
    EXPECT_EQ(getLightSource(*spot).kind, LightSource::Kind::Spot);
    EXPECT_FLOAT_EQ(getLightSource(*spot).innerCone, 0.2f);
    EXPECT_FLOAT_EQ(getLightSource(*spot).outerCone, 0.4f);
}

// ------------------------------------------------------------------------------------------ what is added

/// Whether all corners of the box fall into a square picture of the scene's first camera.
void expectFramed(const ImportedScene& imported, const Eigen::AlignedBox3f& box)
{
    const auto instance = imported.sceneManager->getCameraInstanceAt(0);
    const Eigen::Affine3f eye(matrixOf(*instance->getNode()));
    const float slope = std::tan(instance->getCamera()->getYFov() / 2 * static_cast<float>(M_PI) / 180);
    for (int i = 0; i < 8; ++i) {
        const Eigen::Vector3f corner =
            eye.inverse() * box.corner(static_cast<Eigen::AlignedBox3f::CornerType>(i));
        EXPECT_GT(-corner.z(), instance->getCamera()->getZNear());
        EXPECT_LT(-corner.z(), instance->getCamera()->getZFar());
        EXPECT_LE(std::abs(corner.x()), -corner.z() * slope);
        EXPECT_LE(std::abs(corner.y()), -corner.z() * slope);
    }
}

TEST_F(ImporterTest, AModelWithoutCameraAndLightGetsThemUnderANewRoot)
{
    const auto imported = import("model.obj", TwoTriangles);
    auto& manager = *imported.sceneManager;
    const auto root = manager.getRoot();
    EXPECT_EQ(root->getName(), "model");
    ASSERT_EQ(root->getChildCount(), 4u);
    EXPECT_EQ(manager.getNodeArray().size(), imported.counts.nodes + 4);
    ASSERT_EQ(manager.getCameraInstanceCount(), 1u);
    const auto camera = manager.getCameraInstanceAt(0);
    EXPECT_EQ(camera->getNode()->getInstanceCamera(0), camera->getCamera());
    EXPECT_EQ(camera->getCamera()->getYFov(), 45);
    EXPECT_EQ(getLightSource(*root->getChildNode(2)->getInstanceLight(0)).kind, LightSource::Kind::Head);
    EXPECT_EQ(getLightSource(*root->getChildNode(3)->getInstanceLight(0)).kind,
              LightSource::Kind::Directional);
    EXPECT_EQ(imported.counts.cameras, 0u);
    EXPECT_EQ(imported.counts.lights, 0u);
}

TEST_F(ImporterTest, TheAddedCameraFramesTheWholeModel)
{
    expectFramed(import("a.obj", TwoTriangles), {Eigen::Vector3f(0, 0, 0), Eigen::Vector3f(1, 1, 5)});
    expectFramed(import("long.obj", "v -1000 0 0\nv 1000 0 0\nv 0 1 1\nf 1 2 3\n"),
                 {Eigen::Vector3f(-1000, 0, 0), Eigen::Vector3f(1000, 1, 1)});
    expectFramed(import("far.obj", "v 10000 0 0\nv 10001 0 0\nv 10000 1 1\nf 1 2 3\n"),
                 {Eigen::Vector3f(10000, 0, 0), Eigen::Vector3f(10001, 1, 1)});
    expectFramed(import("tiny.obj", "v 0 0 0\nv 1e-6 0 0\nv 0 1e-6 0\nf 1 2 3\n"),
                 {Eigen::Vector3f(0, 0, 0), Eigen::Vector3f(1e-6f, 1e-6f, 0)});
}

TEST_F(ImporterTest, TheTransformsOfTheNodesCountForTheFrame)
{
    Gltf gltf;
    gltf.triangle();
    const auto imported = import(
        "a.gltf",
        gltf.text(
            R"({"translation":[100,0,0],"children":[1]},{"translation":[0,50,0],"scale":[2,2,2],"mesh":0})"));
    expectFramed(imported, {Eigen::Vector3f(100, 50, 0), Eigen::Vector3f(102, 52, 0)});
}

TEST_F(ImporterTest, AnEmptyOrPointLikeSceneIsFramedToo)
{
    for (const char* nodes : {R"({"name":"n"})", R"({"name":"n","scale":[0,0,0],"mesh":0})",
                              R"({"name":"n","translation":[1e30,0,0],"mesh":0})"}) {
        Gltf gltf;
        gltf.triangle();
        const auto imported = import("a.gltf", gltf.text(nodes));
        const auto camera = imported.sceneManager->getCameraInstanceAt(0);
        ASSERT_TRUE(camera);
        EXPECT_TRUE(matrixOf(*camera->getNode()).allFinite()) << nodes;
        EXPECT_GT(camera->getCamera()->getZNear(), 0);
        EXPECT_TRUE(std::isfinite(camera->getCamera()->getZFar()));
    }
}

TEST_F(ImporterTest, ASceneWithCameraAndLightKeepsItsRoot)
{
    const std::string more = R"("cameras":[{"type":"perspective","perspective":{"yfov":0.7,"znear":0.5}}],
        "extensionsUsed":["KHR_lights_punctual"],"extensions":{"KHR_lights_punctual":{"lights":[{"type":"point"}]}})";
    const auto both =
        import("a.gltf",
               Gltf().text(R"({"name":"root","camera":0,"extensions":{"KHR_lights_punctual":{"light":0}}})",
                           "0", more));
    EXPECT_EQ(both.sceneManager->getRoot()->getID(), "root");
    EXPECT_EQ(both.sceneManager->getNodeArray().size(), 1u);

    const auto cameraOnly = import("b.gltf", Gltf().text(R"({"name":"root","camera":0})", "0", more));
    EXPECT_EQ(cameraOnly.sceneManager->getRoot()->getName(), "b");
    EXPECT_EQ(cameraOnly.sceneManager->getRoot()->getChildCount(), 3u);
    EXPECT_EQ(cameraOnly.sceneManager->getCameraInstanceCount(), 1u);
}

TEST_F(ImporterTest, WhereNoCameraOfTheFileSeesAnythingOneIsAddedInFront)
{
    const std::string more =
        R"("cameras":[{"type":"perspective","perspective":{"yfov":0.7,"znear":0.5,"zfar":20}}])";
    const auto cameraAt = [&](const std::string& place) {
        Gltf gltf;
        gltf.triangle();
        return import(
            "a.gltf",
            gltf.text(R"({"children":[1,2]},{"mesh":0},{"name":"own","camera":0,)" + place + "}", "0", more));
    };
    for (const char* place : {R"("translation":[0,0,5])", R"("translation":[0.5,0.5,1.5],"scale":[9,9,9])"})
        EXPECT_EQ(cameraAt(place).sceneManager->getCameraInstanceCount(), 1u) << place;
    for (const char* place :
         {R"("translation":[0,0,-5])", R"("translation":[30,0,5])", R"("translation":[0,0,25])",
          R"("translation":[0,0,0.1])", R"("translation":[0,0,5],"scale":[0,0,0])"}) {
        const auto imported = cameraAt(place);
        ASSERT_EQ(imported.sceneManager->getCameraInstanceCount(), 2u) << place;
        EXPECT_EQ(imported.sceneManager->getCameraInstanceAt(0)->getSID(), "Default camera");
        EXPECT_EQ(imported.sceneManager->getCameraInstanceAt(1)->getSID(), "own");
        EXPECT_EQ(imported.counts.cameras, 1u);
        expectFramed(imported, {Eigen::Vector3f(0, 0, 0), Eigen::Vector3f(1, 1, 0)});
    }
}

TEST_F(ImporterTest, ACameraWithoutAFarPlaneSeesFar)
{
    const auto imported =
        import("a.gltf",
               Gltf().text(R"({"camera":0})", "0",
                           R"("cameras":[{"type":"perspective","perspective":{"yfov":0.7,"znear":0.5}}])"));
    EXPECT_GT(imported.sceneManager->getCameraInstanceAt(0)->getCamera()->getZFar(), 10000);
}

TEST_F(ImporterTest, IDsOfWhatIsAddedAreUniqueToo)
{
    const auto imported = import("Key light.gltf", Gltf().text(R"({"name":"Key light"})"));
    std::set<std::string> ids;
    for (const auto& node : imported.sceneManager->getNodeArray())
        EXPECT_TRUE(ids.insert(node->getID()).second) << node->getID();
}

// ------------------------------------------------------------------------------------------ animations

TEST_F(ImporterTest, AnimationsKeepTheirKeys)
{
    Gltf gltf;
    const std::string times = std::to_string(gltf.floats("SCALAR", {0, 0.5f, 2}));
    const std::string places = std::to_string(gltf.floats("VEC3", {0, 0, 0, 1, 0, 0, 2, 0, 0}));
    const auto imported = import(
        "a.gltf",
        gltf.text(
            R"({"name":"n"})", "0",
            "\"animations\":[{\"name\":\"move, it\",\"samplers\":[{\"input\":" + times +
                ",\"output\":" + places +
                "}],\"channels\":[{\"sampler\":0,\"target\":{\"node\":0,\"path\":\"translation\"}}]}]"));
    EXPECT_EQ(imported.counts.animations, 1u);
    const auto animations = imported.sceneManager->getAnimationsLibrary();
    ASSERT_EQ(animations.size(), 1u);
    EXPECT_EQ(animations[0]->getID(), "move_ it");
    EXPECT_TRUE(animations[0]->isValid());
    EXPECT_EQ(animations[0]->getDuration(), boost::posix_time::seconds(2));
    EXPECT_EQ(animations[0]->getTimeRange(), 2000);
}

} // namespace
