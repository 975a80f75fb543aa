#include "engine/scene/Camera.h"

#include "engine/scene/CameraInstance.h"
#include "reference/scene/CameraPose.h"
#include "tests/scene/SceneHelpers.h"

#include <gtest/gtest.h>

namespace {

using namespace halvern::scene;
using namespace halvern::test;

TEST(CameraTest, ANewCameraHasASensibleLens)
{
    const Camera camera("id");
    EXPECT_EQ(camera.getID(), "id");
    EXPECT_EQ(camera.getZNear(), 0.1f);
    EXPECT_EQ(camera.getZFar(), 1000);
    EXPECT_EQ(camera.getYFov(), 45);
    EXPECT_TRUE(getCameraPose(camera).isApprox(Eigen::Isometry3f::Identity()));
}

TEST(CameraTest, NonsenseComesBackAsItWasSet)
{
    Camera camera("id");
    camera.setZNear(0);
    camera.setZFar(-5);
    camera.setYFov(0);
    EXPECT_EQ(camera.getZNear(), 0);
    EXPECT_EQ(camera.getZFar(), -5);
    EXPECT_EQ(camera.getYFov(), 0);
}

TEST(CameraTest, ThePoseComesBack)
{
    Camera camera("id");
    const Eigen::Isometry3f pose(Eigen::Translation3f(1, 2, 3));
    setCameraPose(camera, pose);
    EXPECT_EQ(getCameraPose(camera).translation(), Eigen::Vector3f(1, 2, 3));
}

TEST(CameraTest, AnInstanceNamesItsNodeAndItsCamera)
{
    const auto node = makeNode("node");
    const auto camera = boost::make_shared<Camera>("camera");
    const CameraInstance instance("sid", node, camera);
    EXPECT_EQ(instance.getSID(), "sid");
    EXPECT_EQ(instance.getNode(), node);
    EXPECT_EQ(instance.getCamera(), camera);
}

TEST(CameraTest, ThreeThreadsMaySetAndReadAtOnce)
{
    Camera camera("id");
    runInThreads(3, [&](unsigned thread) {
        for (int i = 0; i < 5000; ++i) {
            camera.setZNear(static_cast<float>(thread));
            camera.setYFov(static_cast<float>(thread));
            ASSERT_LE(camera.getZNear(), 2);
            ASSERT_LE(camera.getYFov(), 45);
        }
    });
}

} // namespace
