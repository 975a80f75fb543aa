#include "engine/scene/Animation.h"
#include "engine/scene/AnimationManager.h"
#include "reference/scene/Importer.h"
#include "tests/scene/ModelFiles.h"
#include "tests/scene/SceneHelpers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using namespace halvern::scene;
using namespace halvern::test;
using boost::posix_time::milliseconds;
using Times = std::vector<float>;

/// A glTF file of one triangle whose animations move something for two seconds.
struct ImportAnimationTest : testing::Test
{
    boost::shared_ptr<SceneManager> import(const std::string& name, const std::string& text)
    {
        return importScene(folder.write(name, text), {}).sceneManager;
    }

    static std::string number(int value) { return std::to_string(value); }

    /// Of values at 0, 1 and 2 seconds.
    std::string animation(const std::string& type, const std::vector<float>& values,
                          const std::string& target)
    {
        return R"("animations":[{"name":"move","samplers":[{"input":)" +
               number(gltf.floats("SCALAR", {0, 1, 2})) + ",\"output\":" + number(gltf.floats(type, values)) +
               R"(}],"channels":[{"sampler":0,"target":{)" + target + "}}]}]";
    }

    std::string translation(const std::string& node)
    {
        return animation("VEC3", {0, 0, 0, 2, 0, 0, 2, 4, 0}, "\"path\":\"translation\",\"node\":" + node);
    }

    /// Chooses the first animation of the scene and shows it at that time.
    static void showAt(SceneManager& scene, int time)
    {
        scene.getAnimationManager()->setAnimation(scene.getAnimationsLibrary().at(0));
        scene.getAnimationManager()->setTime(milliseconds(time));
        scene.update();
    }

    const TemporaryFolder folder;
    Gltf gltf;
};

TEST_F(ImportAnimationTest, PlacesRunLinearlyBetweenKeys)
{
    const auto scene = import("a.gltf", gltf.text(R"({"name":"n"})", "0", translation("0")));
    const auto node = scene->getNodeByID("n");
    showAt(*scene, 500);
    EXPECT_TRUE(node->getTranslation().translation().isApprox(Eigen::Vector3f(1, 0, 0), 1e-5f));
    showAt(*scene, 1250);
    EXPECT_TRUE(node->getTranslation().translation().isApprox(Eigen::Vector3f(2, 1, 0), 1e-5f));
}

TEST_F(ImportAnimationTest, RotationsTakeTheShorterArcAndLeavePlaceAndScale)
{
    const float half = std::sqrt(0.5f);
    const std::string turn =
        animation("VEC4", {0, 0, 0, 1, 0, 0, half, half, 0, 0, half, half}, R"("path":"rotation","node":0)");
    const auto scene =
        import("a.gltf", gltf.text(R"({"name":"n","translation":[1,2,3],"scale":[2,2,2]})", "0", turn));
    const auto node = scene->getNodeByID("n");
    showAt(*scene, 500);
    const Eigen::Affine3f expected(Eigen::AngleAxisf(float(EIGEN_PI) / 4, Eigen::Vector3f::UnitZ()));
    EXPECT_TRUE(node->getRotation().isApprox(expected.matrix(), 1e-5f));
    EXPECT_TRUE(node->getTranslation().translation().isApprox(Eigen::Vector3f(1, 2, 3), 1e-5f));
    EXPECT_TRUE(node->getScale().isApprox(Eigen::Vector3f(2, 2, 2), 1e-5f));
}

TEST_F(ImportAnimationTest, ScalesRunLinearlyBetweenKeys)
{
    const std::string grow = animation("VEC3", {1, 1, 1, 3, 1, 1, 3, 1, 1}, R"("path":"scale","node":0)");
    const auto scene = import("a.gltf", gltf.text(R"({"name":"n"})", "0", grow));
    showAt(*scene, 500);
    EXPECT_TRUE(scene->getNodeByID("n")->getScale().isApprox(Eigen::Vector3f(2, 1, 1), 1e-5f));
}

TEST_F(ImportAnimationTest, WithoutTicksPerSecondThereAre25)
{
    const auto scene = import("a.x", R"(xof 0303txt 0032
Frame Moved {
  FrameTransformMatrix { 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1;; }
  Mesh { 3; 0;0;0;, 1;0;0;, 0;1;0;; 1; 3;0,1,2;; }
}
AnimationSet Move {
  Animation { { Moved } AnimationKey { 2; 2; 0; 3; 0, 0, 0;;, 50; 3; 5, 0, 0;;; } }
}
)");
    const auto animations = scene->getAnimationsLibrary();
    ASSERT_EQ(animations.size(), 1u);
    EXPECT_EQ(animations[0]->getDuration(), milliseconds(2000));
    EXPECT_EQ(animations[0]->getTimeRange(), 2000);
    showAt(*scene, 1000);
    EXPECT_EQ(scene->getAnimationManager()->getFrameTimes(), (Times{0, 2}));
}

TEST_F(ImportAnimationTest, AnAnimationOfBonesIsNotValidButPlays)
{
    const int positions = gltf.floats("VEC3", {0, 0, 0, 1, 0, 0, 0, 1, 0});
    const int joints = gltf.joints(std::vector<uint16_t>(12));
    const int weights = gltf.floats("VEC4", {1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0});
    gltf.mesh("{\"attributes\":{\"POSITION\":" + number(positions) + ",\"JOINTS_0\":" + number(joints) +
              ",\"WEIGHTS_0\":" + number(weights) + "}}");
    const std::string nodes =
        R"({"name":"top","children":[1,2]},{"name":"body","mesh":0,"skin":0},{"name":"bone"})";
    const int bind = gltf.floats("MAT4", {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1});
    const std::string skins = R"("skins":[{"joints":[2],"inverseBindMatrices":)" + number(bind) + "}],";

    const auto skeletal = import("a.gltf", gltf.text(nodes, "0", skins + translation("2")));
    ASSERT_EQ(skeletal->getAnimationsLibrary().size(), 1u);
    EXPECT_FALSE(skeletal->getAnimationsLibrary()[0]->isValid());
    showAt(*skeletal, 1000);
    EXPECT_FLOAT_EQ(skeletal->getNodeByID("bone")->getTranslation().x(), 2);

    const auto rigid = import("b.gltf", gltf.text(nodes, "0", skins + translation("0")));
    EXPECT_TRUE(rigid->getAnimationsLibrary().at(0)->isValid());
}

TEST_F(ImportAnimationTest, AnAnimationOfMorphTargetsIsNotValid)
{
    const std::string positions = number(gltf.floats("VEC3", {0, 0, 0, 1, 0, 0, 0, 1, 0}));
    gltf.mesh("{\"attributes\":{\"POSITION\":" + positions + "},\"targets\":[{\"POSITION\":" + positions +
              "}]}");
    const std::string morph = animation("SCALAR", {0, 1, 0}, R"("path":"weights","node":0)");
    const auto scene = import("a.gltf", gltf.text(R"({"name":"n","mesh":0})", "0", morph));
    ASSERT_EQ(scene->getAnimationsLibrary().size(), 1u);
    EXPECT_FALSE(scene->getAnimationsLibrary()[0]->isValid());
}

TEST_F(ImportAnimationTest, AKeyOfAnyTimeIsTaken)
{
    const std::string endless = R"("animations":[{"samplers":[{"input":)" +
                                number(gltf.floats("SCALAR", {0, 1e30f})) +
                                ",\"output\":" + number(gltf.floats("VEC3", {0, 0, 0, 1, 0, 0})) +
                                R"(}],"channels":[{"sampler":0,"target":{"node":0,"path":"translation"}}]}])";
    const auto scene = import("a.gltf", gltf.text(R"({"name":"n"})", "0", endless));
    const auto animation = scene->getAnimationsLibrary().at(0);
    EXPECT_EQ(animation->getDuration(), boost::posix_time::seconds(1000000000));
    EXPECT_EQ(animation->getTimeRange(), std::numeric_limits<int>::max());
    showAt(*scene, 500);
    EXPECT_NEAR(scene->getNodeByID("n")->getTranslation().x(), 0, 1e-5f);
}

} // namespace
