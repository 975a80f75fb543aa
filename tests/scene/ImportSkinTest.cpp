#include "engine/scene/Animation.h"
#include "engine/scene/AnimationManager.h"
#include "engine/scene/CameraInstance.h"
#include "reference/scene/Importer.h"
#include "reference/scene/Mesh.h"
#include "reference/scene/Skin.h"
#include "tests/scene/ModelFiles.h"
#include "tests/scene/SceneHelpers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

namespace {

using namespace halvern::scene;
using namespace halvern::test;

constexpr float NaN = std::numeric_limits<float>::quiet_NaN();
constexpr float Infinity = std::numeric_limits<float>::infinity();

/// The influences of a vertex.
struct Influences
{
    std::vector<uint32_t> joints;
    std::vector<float> weights;
};

Influences influencesOf(const Skin& skin, size_t vertex)
{
    const auto begin = static_cast<std::ptrdiff_t>(vertex * Skin::Influences);
    const auto end = begin + static_cast<std::ptrdiff_t>(Skin::Influences);
    return {{skin.joints.begin() + begin, skin.joints.begin() + end},
            {skin.weights.begin() + begin, skin.weights.begin() + end}};
}

/// A triangle, and files that bind it to bones.
struct ImportSkinTest : testing::Test
{
    ImportedScene import(const std::string& name, const std::string& text)
    {
        return importScene(folder.write(name, text), {});
    }

    /// A file whose node "body" follows the nodes "lower" and "upper", a unit above it.
    ImportedScene importTriangle(const std::vector<uint16_t>& joints, const std::vector<float>& weights,
                                 const std::vector<float>& bindMatrices = Bind)
    {
        addTriangle(joints, weights);
        const std::string nodes = R"({"name":"top","children":[1,2]},{"name":"body","mesh":0,"skin":0},)"
                                  R"({"name":"lower","children":[3]},)"
                                  R"({"name":"upper","translation":[0,1,0]})";
        return import("a.gltf", gltf.text(nodes, "0", skin("2,3", bindMatrices)));
    }

    void addTriangle(const std::vector<uint16_t>& joints, const std::vector<float>& weights)
    {
        const auto number = [](int value) { return std::to_string(value); };
        const int positions = gltf.floats("VEC3", {0, 0, 0, 1, 0, 0, 0, 1, 0});
        gltf.mesh("{\"attributes\":{\"POSITION\":" + number(positions) +
                  ",\"JOINTS_0\":" + number(gltf.joints(joints)) +
                  ",\"WEIGHTS_0\":" + number(gltf.floats("VEC4", weights)) + "}}");
    }

    std::string skin(const std::string& joints, const std::vector<float>& bindMatrices)
    {
        return "\"skins\":[{\"joints\":[" + joints +
               "],\"inverseBindMatrices\":" + std::to_string(gltf.floats("MAT4", bindMatrices)) + "}]";
    }

    static std::shared_ptr<const Skin> skinOf(const ImportedScene& imported, const std::string& node = "body")
    {
        const auto skins = getSkins(*imported.sceneManager->getNodeByID(node));
        return skins.empty() ? nullptr : skins.front();
    }

    /// What the mesh "body" is in the pose of its bones, in the world.
    static std::vector<Eigen::Vector3f> poseOfBody(const ImportedScene& imported)
    {
        auto& scene = *imported.sceneManager;
        const auto worldOf = [](const Node& node) {
            return Eigen::Affine3d(
                (node.getTranslation() * Eigen::Affine3f(node.getRotation())).matrix().cast<double>());
        };
        const auto skin = skinOf(imported);
        std::vector<Eigen::Matrix4f> pose;
        pose.push_back(
            poseOf(skin->bones.at(0), worldOf(*scene.getNodeByID("lower")), Eigen::Affine3d::Identity()));
        pose.push_back(poseOf(skin->bones.at(1),
                              worldOf(*scene.getNodeByID("lower")) * worldOf(*scene.getNodeByID("upper")),
                              Eigen::Affine3d::Identity()));
        pose.push_back(Eigen::Matrix4f::Identity());
        const auto mesh = getGeometries(*scene.getNodeByID("body")).at(0);
        std::vector<Eigen::Vector3f> positions(mesh->positions.size());
        std::vector<Eigen::Vector3f> normals(mesh->positions.size());
        deform(*mesh, *skin, pose, positions.data(), normals.data());
        return positions;
    }

    /// Of "lower" at the origin and "upper" a unit above, column by column.
    inline static const std::vector<float> Bind{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0,  0, 1,
                                                1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, -1, 0, 1};

    const TemporaryFolder folder;
    Gltf gltf;
};

TEST_F(ImportSkinTest, ASkinHasItsBonesTheirMatricesAndTheWeightsOfEachVertex)
{
    const auto imported =
        importTriangle({0, 0, 0, 0, 0, 1, 0, 0, 1, 0, 0, 0}, {1, 0, 0, 0, 0.25f, 0.75f, 0, 0, 1, 0, 0, 0});
    EXPECT_TRUE(imported.warnings.empty());
    const auto skin = skinOf(imported);
    ASSERT_TRUE(skin);
    EXPECT_TRUE(fits(*skin, *getGeometries(*imported.sceneManager->getNodeByID("body")).at(0)));
    ASSERT_EQ(skin->bones.size(), 2u);
    EXPECT_EQ(skin->bones[0].node.lock(), imported.sceneManager->getNodeByID("lower"));
    EXPECT_EQ(skin->bones[1].node.lock(), imported.sceneManager->getNodeByID("upper"));
    EXPECT_TRUE(skin->bones[0].toBone.isApprox(Eigen::Affine3d::Identity()));
    EXPECT_TRUE(skin->bones[1].toBone.isApprox(Eigen::Affine3d(Eigen::Translation3d(0, -1, 0))));
    EXPECT_EQ(influencesOf(*skin, 0).joints[0], 0u);
    EXPECT_EQ(influencesOf(*skin, 0).weights, (std::vector<float>{1, 0, 0, 0}));
    EXPECT_EQ(influencesOf(*skin, 1).joints[0], 1u);
    EXPECT_EQ(influencesOf(*skin, 1).joints[1], 0u);
    EXPECT_EQ(influencesOf(*skin, 1).weights, (std::vector<float>{0.75f, 0.25f, 0, 0}));
    EXPECT_EQ(influencesOf(*skin, 2).joints[0], 1u);
}

TEST_F(ImportSkinTest, MeshesWithoutBonesHaveNoSkin)
{
    gltf.triangle();
    const auto imported = import("a.gltf", gltf.text(R"({"name":"body","mesh":0})"));
    EXPECT_TRUE(getSkins(*imported.sceneManager->getNodeByID("body")).empty());
}

TEST_F(ImportSkinTest, ThePoseOfTheFileLeavesTheMeshAsItIs)
{
    const auto imported =
        importTriangle({0, 0, 0, 0, 0, 1, 0, 0, 1, 0, 0, 0}, {1, 0, 0, 0, 0.5f, 0.5f, 0, 0, 1, 0, 0, 0});
    const auto positions = poseOfBody(imported);
    EXPECT_TRUE(positions[0].isZero(1e-6f));
    EXPECT_TRUE(positions[1].isApprox(Eigen::Vector3f(1, 0, 0)));
    EXPECT_TRUE(positions[2].isApprox(Eigen::Vector3f(0, 1, 0)));
}

TEST_F(ImportSkinTest, VerticesFollowAnAnimationOfTheirBones)
{
    addTriangle({0, 0, 0, 0, 0, 1, 0, 0, 1, 0, 0, 0}, {1, 0, 0, 0, 0.5f, 0.5f, 0, 0, 1, 0, 0, 0});
    const std::string nodes = R"({"name":"top","children":[1,2]},{"name":"body","mesh":0,"skin":0},)"
                              R"({"name":"lower","children":[3]},{"name":"upper","translation":[0,1,0]})";
    const std::string skins = skin("2,3", Bind);
    const std::string times = std::to_string(gltf.floats("SCALAR", {0, 1}));
    const std::string places = std::to_string(gltf.floats("VEC3", {0, 1, 0, 0, 1, 4}));
    const std::string animations =
        R"(,"animations":[{"samplers":[{"input":)" + times + R"(,"output":)" + places +
        R"(}],"channels":[{"sampler":0,"target":{"path":"translation","node":3}}]}])";
    const auto imported = import("a.gltf", gltf.text(nodes, "0", skins + animations));
    auto& scene = *imported.sceneManager;
    EXPECT_FALSE(scene.getAnimationsLibrary().at(0)->isValid());
    scene.getAnimationManager()->setAnimation(scene.getAnimationsLibrary().at(0));
    scene.getAnimationManager()->setTime(boost::posix_time::milliseconds(500));
    scene.update();
    const auto positions = poseOfBody(imported);
    EXPECT_TRUE(positions[0].isZero(1e-6f));
    EXPECT_TRUE(positions[1].isApprox(Eigen::Vector3f(1, 0, 1), 1e-5f));
    EXPECT_TRUE(positions[2].isApprox(Eigen::Vector3f(0, 1, 2), 1e-5f));
}

TEST_F(ImportSkinTest, TheWeightsOfAVertexMakeOne)
{
    const auto imported = importTriangle({0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0},
                                         {0.1f, 0.3f, 0, 0, 9, 3, 0, 0, 3e38f, 1e38f, 0, 0});
    const auto skin = skinOf(imported);
    ASSERT_TRUE(skin);
    for (size_t vertex = 0; vertex < 3; ++vertex) {
        EXPECT_NEAR(influencesOf(*skin, vertex).weights[0], 0.75f, 1e-6f) << vertex;
        EXPECT_NEAR(influencesOf(*skin, vertex).weights[1], 0.25f, 1e-6f) << vertex;
    }
}

TEST_F(ImportSkinTest, WeightsThatAreNoneAreLeftOutWithAWarning)
{
    const auto imported = importTriangle({0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0},
                                         {NaN, 0.5f, 0, 0, -1, 0.5f, 0, 0, Infinity, NaN, 0, 0});
    const auto skin = skinOf(imported);
    ASSERT_TRUE(skin);
    EXPECT_TRUE(fits(*skin, *getGeometries(*imported.sceneManager->getNodeByID("body")).at(0)));
    for (size_t vertex = 0; vertex < 2; ++vertex) {
        EXPECT_EQ(skin->bones.at(influencesOf(*skin, vertex).joints[0]).node.lock()->getName(), "upper");
        EXPECT_EQ(influencesOf(*skin, vertex).weights, (std::vector<float>{1, 0, 0, 0}));
    }
    // No bone is left: the vertex stays with its mesh.
    EXPECT_EQ(influencesOf(*skin, 2).joints[0], skin->bones.size());
    EXPECT_EQ(influencesOf(*skin, 2).weights, (std::vector<float>{1, 0, 0, 0}));
    EXPECT_THAT(imported.warnings, testing::ElementsAre(testing::HasSubstr("weights of bones are invalid")));
}

TEST_F(ImportSkinTest, BonesWhoseMatrixIsNoneAreLeftOutWithAWarning)
{
    std::vector<float> bind = Bind;
    bind[5] = NaN;
    const auto imported = importTriangle({0, 1, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0},
                                         {0.5f, 0.5f, 0, 0, 0, 1, 0, 0, 1, 0, 0, 0}, bind);
    const auto skin = skinOf(imported);
    ASSERT_TRUE(skin);
    ASSERT_EQ(skin->bones.size(), 1u);
    EXPECT_EQ(skin->bones[0].node.lock()->getName(), "upper");
    EXPECT_EQ(influencesOf(*skin, 0).weights, (std::vector<float>{1, 0, 0, 0}));
    EXPECT_EQ(influencesOf(*skin, 2).joints[0], 1u);
    EXPECT_THAT(imported.warnings, testing::ElementsAre(testing::HasSubstr("1 bones are invalid")));
}

/// A triangle in the format X, whose frames are the bones; `skins` are SkinWeights and more.
std::string xFile(const std::string& skins)
{
    return R"(xof 0303txt 0032
Frame Top {
  FrameTransformMatrix { 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1;; }
  Frame A { } Frame B { } Frame C { } Frame D { } Frame E { }
  Frame Body {
    Mesh { 3; 0;0;0;, 1;0;0;, 0;1;0;; 1; 3;0,1,2;;
)" + skins +
           "}}}\n";
}

std::string skinWeights(const std::string& bone, const std::string& vertices, const std::string& weights)
{
    const auto count = std::to_string(std::count(weights.begin(), weights.end(), ',') + 1);
    return "SkinWeights { \"" + bone + "\"; " + count + "; " + vertices + "; " + weights +
           "; 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1;; }\n";
}

TEST_F(ImportSkinTest, OfManyBonesTheStrongestFourCount)
{
    const std::string skins = skinWeights("A", "0,1,2", "0.3, 1, 1") + skinWeights("B", "0", "0.1") +
                              skinWeights("C", "0", "0.2") + skinWeights("D", "0", "0.05") +
                              skinWeights("E", "0", "0.4");
    const auto imported = import("a.x", xFile(skins));
    const auto skin = skinOf(imported, "Body");
    ASSERT_TRUE(skin);
    size_t strong = 0;
    while (influencesOf(*skin, strong).weights[1] == 0)
        ++strong;
    std::string names;
    for (const uint32_t joint : influencesOf(*skin, strong).joints)
        names += skin->bones.at(joint).node.lock()->getName();
    EXPECT_EQ(names, "EACB");
    const std::vector<float> expected{0.4f, 0.3f, 0.2f, 0.1f};
    EXPECT_THAT(influencesOf(*skin, strong).weights, testing::Pointwise(testing::FloatNear(1e-6f), expected));
}

TEST_F(ImportSkinTest, BonesThatNoNodeCarriesAreLeftOutWithAWarning)
{
    const auto imported =
        import("a.x", xFile(skinWeights("Nobody", "0,1", "0.5, 1") + skinWeights("A", "0,2", "0.5, 1")));
    const auto skin = skinOf(imported, "Body");
    ASSERT_TRUE(skin);
    ASSERT_EQ(skin->bones.size(), 1u);
    unsigned free = 0;
    for (size_t vertex = 0; vertex < 3; ++vertex) {
        EXPECT_EQ(influencesOf(*skin, vertex).weights[0], 1);
        free += influencesOf(*skin, vertex).joints[0] == 1;
    }
    EXPECT_EQ(free, 1u);
    EXPECT_THAT(imported.warnings,
                testing::ElementsAre(testing::HasSubstr("no node carries its bones Nobody")));
}

TEST_F(ImportSkinTest, AMeshOfWhichNoBoneIsThereHasNoSkin)
{
    const auto imported = import("a.x", xFile(skinWeights("Nobody", "0,1,2", "1, 1, 1")));
    EXPECT_FALSE(skinOf(imported, "Body"));
    EXPECT_EQ(imported.counts.triangles, 1u);
    EXPECT_EQ(imported.warnings.size(), 1u);
}

TEST_F(ImportSkinTest, AFrameMayBeCalledMesh)
{
    std::string text = xFile(skinWeights("A", "0,1,2", "1, 1, 1"));
    text.replace(text.find("Body"), 4, "Mesh");
    EXPECT_TRUE(skinOf(import("a.x", text), "Mesh"));
}

TEST_F(ImportSkinTest, AFileWhoseBonesMoveVerticesThatAreNotThereIsRefused)
{
    for (const std::string index : {"3", "77", "4000000000", "-1"}) {
        try {
            import("a.x",
                   xFile(skinWeights("A", "0,1", "1, 1") + skinWeights("B { // 9", "2," + index, "1, 1")));
            FAIL() << index;
        } catch (const ImportError& error) {
            EXPECT_THAT(error.what(),
                        testing::HasSubstr("a.x: a bone moves vertex " + index + ", the mesh has 3"));
        }
    }
}

TEST_F(ImportSkinTest, BonesAreHeldAgainstTheMeshThatTheyAreIn)
{
    const std::string beyond = skinWeights("A", "77", "1");
    EXPECT_THROW(import("a.x", xFile("Unknown { Mesh { 99; } }\n" + beyond)), ImportError);
    EXPECT_TRUE(
        skinOf(import("a.x", xFile("Unknown { Mesh { 1; } }\n" + skinWeights("A", "2", "1"))), "Body"));
    std::string text = xFile(beyond);
    text.replace(text.find("3; 0;0;0;"), 1, "4294967299"); // which is 3 in 32 bits
    EXPECT_THROW(import("a.x", text), ImportError);
}

/// A triangle whose first vertex, or another, follows the bone "A", in the binary format X.
std::string binaryXFile(uint32_t vertex)
{
    std::string bytes = "xof 0303bin 0032";
    const auto add = [&](auto number) {
        bytes.append(reinterpret_cast<const char*>(&number), sizeof number);
    };
    const auto addText = [&](uint16_t token, const std::string& text) {
        add(token);
        add(static_cast<uint32_t>(text.size()));
        bytes += text;
    };
    const auto addNumbers = [&](uint16_t token, const auto& numbers) {
        add(token);
        add(static_cast<uint32_t>(numbers.size()));
        for (const auto number : numbers)
            add(number);
    };
    const auto open = [&](const char* kind) {
        addText(1, kind);
        add(uint16_t(10));
    };
    const auto close = [&] { add(uint16_t(11)); };
    addText(1, "Frame");
    open("A");
    close();
    addText(1, "Frame");
    open("Body");
    open("Mesh");
    addNumbers(6, std::vector<uint32_t>{3});
    addNumbers(7, std::vector<float>{0, 0, 0, 1, 0, 0, 0, 1, 0});
    addNumbers(6, std::vector<uint32_t>{1, 3, 0, 1, 2});
    open("SkinWeights");
    addText(2, "A");
    add(uint16_t(20));
    addNumbers(6, std::vector<uint32_t>{1, vertex});
    addNumbers(7, std::vector<float>{1, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1});
    close();
    close();
    close();
    return bytes;
}

TEST_F(ImportSkinTest, BonesOfBinaryFilesAreCheckedToo)
{
    EXPECT_TRUE(skinOf(import("a.x", binaryXFile(2)), "Body"));
    EXPECT_THROW(import("a.x", binaryXFile(3)), ImportError);
    EXPECT_THROW(import("a.x", binaryXFile(0x7fffff0)), ImportError);
}

TEST_F(ImportSkinTest, OfNodesWithOneNameTheNearestRelativeIsTheBone)
{
    // Two figures whose bones have the same names.
    addTriangle(std::vector<uint16_t>(12), {1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0});
    addTriangle(std::vector<uint16_t>(12), {1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0});
    const std::string bind =
        std::to_string(gltf.floats("MAT4", std::vector<float>(Bind.begin(), Bind.begin() + 16)));
    const std::string nodes = R"({"name":"top","children":[1,4]},
        {"name":"first","children":[2,3]},{"name":"hip"},{"name":"firstBody","mesh":0,"skin":0},
        {"name":"second","children":[5,6]},{"name":"hip"},{"name":"secondBody","mesh":1,"skin":1})";
    const std::string skins = R"("skins":[{"joints":[2],"inverseBindMatrices":)" + bind +
                              R"(},{"joints":[5],"inverseBindMatrices":)" + bind + "}]";
    const auto imported = import("a.gltf", gltf.text(nodes, "0", skins));
    for (const std::string figure : {"first", "second"}) {
        const auto skin = skinOf(imported, figure + "Body");
        ASSERT_TRUE(skin);
        EXPECT_EQ(skin->bones.at(0).node.lock(), imported.sceneManager->getNodeByID(figure)->getChildNode(0));
    }
}

TEST_F(ImportSkinTest, VerticesThatAreDoubledAtSharpEdgesKeepTheirBones)
{
    // Two faces at a right angle; without normals they do not share the ridge.
    const std::string place = std::to_string(gltf.floats("VEC3", {0, 0, 0, 0, 0, 1, 1, 0, 0, 0, 1, 0}));
    const std::string joints = std::to_string(gltf.joints({0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
    const std::string weights =
        std::to_string(gltf.floats("VEC4", {1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0}));
    const std::string indices = std::to_string(gltf.indices({0, 1, 2, 1, 0, 3}));
    gltf.mesh("{\"attributes\":{\"POSITION\":" + place + ",\"JOINTS_0\":" + joints +
              ",\"WEIGHTS_0\":" + weights + "},\"indices\":" + indices + "}");
    const std::string nodes = R"({"name":"top","children":[1,2,3]},{"name":"body","mesh":0,"skin":0},)"
                              R"({"name":"a"},{"name":"b"})";
    const auto imported = import("a.gltf", gltf.text(nodes, "0", skin("2,3", Bind)));
    const auto mesh = getGeometries(*imported.sceneManager->getNodeByID("body")).at(0);
    const auto skin = skinOf(imported);
    ASSERT_TRUE(skin);
    ASSERT_EQ(mesh->positions.size(), 6u);
    ASSERT_TRUE(fits(*skin, *mesh));
    for (size_t vertex = 0; vertex < 6; ++vertex) {
        const bool isSecond = mesh->positions[vertex] == Eigen::Vector3f(0, 0, 1);
        EXPECT_EQ(influencesOf(*skin, vertex).joints[0], isSecond ? 1u : 0u) << vertex;
        EXPECT_EQ(influencesOf(*skin, vertex).weights[0], 1) << vertex;
    }
}

TEST_F(ImportSkinTest, TheDefaultCameraLooksAtThePoseNotAtTheMesh)
{
    addTriangle(std::vector<uint16_t>(12), {1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0});
    const std::string nodes = R"({"name":"top","children":[1,2]},)"
                              R"({"name":"body","mesh":0,"skin":0,"translation":[-5000,0,0]},)"
                              R"({"name":"bone","translation":[1000,0,0]})";
    const std::vector<float> bind(Bind.begin(), Bind.begin() + 16);
    const auto imported = import("a.gltf", gltf.text(nodes, "0", skin("2", bind)));
    const auto camera = imported.sceneManager->getCameraInstanceAt(0)->getNode();
    EXPECT_NEAR(camera->getTranslation().x(), 1000, 10);
}

// ------------------------------------------------------------------------------------ deformation

TEST_F(ImportSkinTest, DeformingTakesTheMeanOfThePlacesAndUnitNormals)
{
    Mesh mesh;
    mesh.positions = {{1, 0, 0}, {1, 0, 0}, {1, 0, 0}};
    mesh.normals = {{1, 0, 0}, {1, 1, 0}, {1, 0, 0}};
    mesh.normals[1].normalize();
    Skin skin;
    skin.bones.resize(2);
    skin.joints = {0, 2, 2, 2, 1, 2, 2, 2, 0, 2, 2, 2};
    skin.weights = {1, 0, 0, 0, 1, 0, 0, 0, 0.25f, 0.75f, 0, 0};
    ASSERT_TRUE(fits(skin, mesh));
    const Eigen::Affine3f turn(Eigen::AngleAxisf(float(M_PI_2), Eigen::Vector3f::UnitZ()));
    const Eigen::Affine3f stretch(Eigen::Scaling(2.0f, 1.0f, 1.0f));
    const Eigen::Matrix4f none = Eigen::Matrix4f::Identity();
    std::vector<Eigen::Vector3f> positions(3);
    std::vector<Eigen::Vector3f> normals(3);
    deform(mesh, skin, {turn.matrix(), stretch.matrix(), none}, positions.data(), normals.data());
    EXPECT_TRUE(positions[0].isApprox(Eigen::Vector3f(0, 1, 0), 1e-6f));
    EXPECT_TRUE(normals[0].isApprox(Eigen::Vector3f(0, 1, 0), 1e-6f));
    EXPECT_TRUE(positions[1].isApprox(Eigen::Vector3f(2, 0, 0), 1e-6f));
    EXPECT_TRUE(normals[1].isApprox(Eigen::Vector3f(0.5f, 1, 0).normalized(), 1e-6f)); // stays upright
    EXPECT_TRUE(positions[2].isApprox(Eigen::Vector3f(0.75f, 0.25f, 0), 1e-6f));
    EXPECT_TRUE(normals[2].isApprox(Eigen::Vector3f(0.75f, 0.25f, 0).normalized(), 1e-2f));
}

TEST_F(ImportSkinTest, ABoneOfNoSizeOrAMirroringOneKeepsNormalsUsable)
{
    Mesh mesh;
    mesh.positions = {{1, 0, 0}, {1, 0, 0}};
    mesh.normals = {{1, 0, 0}, {0, 1, 0}};
    Skin skin;
    skin.bones.resize(2);
    skin.joints = {0, 2, 2, 2, 1, 2, 2, 2};
    skin.weights = {1, 0, 0, 0, 1, 0, 0, 0};
    const Eigen::Affine3f point(Eigen::Scaling(0.0f));
    const Eigen::Affine3f mirror(Eigen::Scaling(-1.0f, 1.0f, 1.0f));
    std::vector<Eigen::Vector3f> positions(2);
    std::vector<Eigen::Vector3f> normals(2);
    deform(mesh, skin, {point.matrix(), mirror.matrix(), Eigen::Matrix4f::Identity()}, positions.data(),
           normals.data());
    EXPECT_EQ(normals[0], Eigen::Vector3f(1, 0, 0));
    EXPECT_TRUE(positions[0].isZero());
    EXPECT_TRUE(normals[1].isApprox(Eigen::Vector3f(0, 1, 0)));
    EXPECT_TRUE(positions[1].isApprox(Eigen::Vector3f(-1, 0, 0)));
}

TEST_F(ImportSkinTest, ASkinThatDoesNotFitIsTold)
{
    Mesh mesh;
    mesh.positions = {{1, 0, 0}};
    Skin good;
    good.bones.resize(1);
    good.joints = {0, 1, 1, 1};
    good.weights = {1, 0, 0, 0};
    EXPECT_TRUE(fits(good, mesh));
    for (const float weight : {NaN, -0.5f, 2.0f}) {
        Skin skin = good;
        skin.weights[0] = weight;
        EXPECT_FALSE(fits(skin, mesh)) << weight;
    }
    Skin skin = good;
    skin.joints[3] = 2;
    EXPECT_FALSE(fits(skin, mesh));
    skin = good;
    skin.weights.pop_back();
    EXPECT_FALSE(fits(skin, mesh));
    mesh.positions.emplace_back(0, 0, 0);
    EXPECT_FALSE(fits(good, mesh));
}

} // namespace
