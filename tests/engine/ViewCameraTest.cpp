#include "engine/fx/FXRenderTarget.h"
#include "reference/scene/CameraPose.h"
#include "tests/engine/Stage.h"

#include <boost/make_shared.hpp>

#include <gtest/gtest.h>

#include <limits>
#include <string>

using namespace halvern;
using namespace halvern::test;

namespace {

/// A red cube at the origin, a blue one at (10, 0, 0), and a second camera that looks at the blue one.
struct Places : Stage
{
    Places()
    {
        scene.add("red", boxMesh(), unlitMaterial(Qt::red));
        moveTo(*scene.add("blue", boxMesh(), unlitMaterial(Qt::blue)), 10, 0, 0);
        scene.addCamera("second", {10, 0, 5}, {10, 0, 0});
    }

    scene::Camera& lens() { return *scene.manager->getCameraInstanceAt(0)->getCamera(); }
    scene::Node& cameraNode() { return *scene.manager->getNodeByID("camera"); }
};

} // namespace

TEST(ViewCameraTest, LooksThroughTheFirstCameraOfAScene)
{
    Places places;
    EXPECT_EQ(places.draw(0, 0), QColor(Qt::red));
}

TEST(ViewCameraTest, ActiveCameraChangesTheCamera)
{
    Places places;
    places.draw();
    places.scene.events->triggerEvent("ActiveCamera", "second");
    EXPECT_EQ(places.draw(0, 0), QColor(Qt::blue));
    places.scene.events->triggerEvent("ActiveCamera", "camera");
    EXPECT_EQ(places.draw(0, 0), QColor(Qt::red));
}

TEST(ViewCameraTest, ActiveCameraAsksForAFrameAndIsDoneInUpdate)
{
    Places places;
    places.draw();
    places.scene.events->triggerEvent("ActiveCamera", "second");
    EXPECT_EQ(places.scene.events->getCount("SyncScene"), 1u);
    places.draw();
    EXPECT_EQ(places.scene.events->getCount("SyncScene"), 1u);
}

TEST(ViewCameraTest, AnUnknownCameraChangesNothing)
{
    Places places;
    places.draw();
    places.scene.events->triggerEvent("ActiveCamera", "none");
    places.scene.events->triggerEvent("ActiveCamera", "");
    EXPECT_EQ(places.draw(0, 0), QColor(Qt::red));
}

TEST(ViewCameraTest, FollowsTheNodeOfItsCamera)
{
    Places places;
    places.draw();
    moveTo(places.cameraNode(), 10, 0, 5);
    EXPECT_EQ(places.draw(0, 0), QColor(Qt::blue));
    moveTo(*places.scene.root, 10, 0, 0);
    moveTo(places.cameraNode(), 0, 0, 5);
    EXPECT_EQ(places.draw(0, 0), QColor(Qt::red));
}

TEST(ViewCameraTest, TakesThePoseOfTheCameraInItsNode)
{
    Places places;
    setCameraPose(places.lens(), Eigen::Isometry3f(Eigen::Translation3f(10, 0, 0)));
    EXPECT_EQ(places.draw(0, 0), QColor(Qt::blue));
}

TEST(ViewCameraTest, AScaledCameraNodeLooksTheSame)
{
    Places places;
    const QImage before = places.draw();
    places.cameraNode().setScale({3, 3, 3});
    EXPECT_EQ(places.draw(), before);
}

TEST(ViewCameraTest, TheFieldOfViewIsTheWholeVerticalAngle)
{
    Places places;
    places.lens().setYFov(90);
    const QImage image = places.draw();
    // The front of the cube is 4 away; half the picture is 4 high there, half the cube 1.
    EXPECT_EQ(pixel(image, 0, 11), QColor(Qt::red));
    EXPECT_TRUE(isBackground(pixel(image, 0, 14)));
}

TEST(ViewCameraTest, ANearPlaneCutsThePictureWhereItIsSet)
{
    Places places;
    places.lens().setZNear(4.5f);                  // through the cube
    EXPECT_EQ(places.draw(0, 0), QColor(Qt::red)); // its inside
    places.lens().setZNear(7);
    EXPECT_TRUE(isBackground(places.draw(0, 0)));
}

TEST(ViewCameraTest, AFarPlaneCutsThePictureWhereItIsSet)
{
    Places places;
    places.lens().setZFar(3);
    EXPECT_TRUE(isBackground(places.draw(0, 0)));
}

TEST(ViewCameraTest, PlanesFarFromTheSceneDoNotBlurTheDepth)
{
    Places places;
    // Two faces a hundredth apart, a thousand away; the nearer one is drawn last, its box being longer.
    lookFrom(places.cameraNode(), {0, 0, 1000}, {0, 0, 0});
    const NodePtr front = places.scene.add("front", boxMesh(), unlitMaterial(Qt::green));
    front->setScale({1, 1, 10});
    moveTo(*front, 0, 0, 1.01f - 10);
    places.lens().setYFov(0.3f);
    places.lens().setZNear(0.01f);
    places.lens().setZFar(1e7f);
    const QImage image = places.draw();
    for (int x = -15; x <= 15; ++x)
        EXPECT_EQ(pixel(image, x, x), QColor(Qt::green));
    // What comes closer than anything was before is not cut.
    moveTo(*front, 0, 0, 980);
    EXPECT_EQ(places.draw(0, 0), QColor(Qt::green));
}

TEST(ViewCameraTest, NonsenseInALensDoesNotBreakThePicture)
{
    Places places;
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float infinity = std::numeric_limits<float>::infinity();
    for (float value : {0.0f, -1.0f, nan, infinity, 1e30f, 1e-30f}) {
        places.lens().setZNear(value);
        places.lens().setZFar(value);
        places.lens().setYFov(value);
        const QImage image = places.draw();
        EXPECT_EQ(image.size(), QSize(100, 100));
    }
    places.lens().setZNear(0);
    places.lens().setZFar(0);
    places.lens().setYFov(0);
    EXPECT_EQ(places.draw(0, 0), QColor(Qt::red));
}

TEST(ViewCameraTest, NonsenseInACameraNodeKeepsTheLastView)
{
    Places places;
    const QImage before = places.draw();
    places.cameraNode().setScale({0, 0, 0});
    EXPECT_EQ(places.draw(), before);
    moveTo(places.cameraNode(), std::numeric_limits<float>::quiet_NaN(), 0, 0);
    EXPECT_EQ(places.draw(), before);
}

TEST(ViewCameraTest, ASceneWithoutCameraIsFramed)
{
    const OffscreenContext context;
    const auto events = boost::make_shared<SynchronousEventManager>();
    const auto manager = boost::make_shared<scene::SceneManager>(events);
    const NodePtr cube = makeNode("cube", boxMesh(50), unlitMaterial(Qt::red));
    moveTo(*cube, 1000, 0, 0);
    manager->setRoot(cube);
    engine::window::Window window(events, "window");
    window.resize({100, 100});
    window.attach(manager);
    window.update();
    window.update();
    window.render();
    const QImage image = readTexture(window.getColorRenderTarget()->getTextureID());
    EXPECT_EQ(pixel(image, 0, 0), QColor(Qt::red));
    EXPECT_TRUE(isBackground(pixel(image, 49, 49)));
}

TEST(ViewCameraTest, TheWidthFollowsTheAspect)
{
    Places places;
    places.window->resize({200, 100});
    const QImage image = places.draw();
    EXPECT_EQ(pixel(image, 25, 0), QColor(Qt::red));
    EXPECT_TRUE(isBackground(pixel(image, 40, 0)));
}
