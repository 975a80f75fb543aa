#include "engine/logic/LogicManager.h"
#include "engine/scene/Animation.h"
#include "engine/scene/AnimationManager.h"
#include "reference/engine/Motion.h"
#include "reference/scene/CameraPose.h"
#include "tests/engine/Stage.h"

#include <QElapsedTimer>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include <functional>

using namespace halvern;
using namespace halvern::test;

namespace {

enum : int { Left = 1, Right = 2, Middle = 4 };
enum : int { Shift = 0x02000000, Control = 0x04000000 };

/// A cube with faces of different colours would need six materials: a red one stands before a blue one
/// instead, seen from the front, with a green one above.
struct Cubes : Stage
{
    Cubes()
    {
        scene.add("red", boxMesh(0.5f), unlitMaterial(Qt::red));
        moveTo(*scene.add("blue", boxMesh(0.5f), unlitMaterial(Qt::blue)), 0, 0, -3);
        moveTo(*scene.add("green", boxMesh(0.3f), unlitMaterial(Qt::green)), 0, 1.5f, 0);
        draw();
    }

    engine::logic::LogicManager& input() { return *window->getLogicManager(); }

    void drag(int button, Eigen::Vector2i from, Eigen::Vector2i to, int modifiers = 0)
    {
        input().mousePressed(button, from.x(), from.y(), modifiers);
        input().mouseMoved((from.x() + to.x()) / 2, (from.y() + to.y()) / 2, modifiers);
        input().mouseMoved(to.x(), to.y(), modifiers);
        input().mouseReleased(button, to.x(), to.y(), modifiers);
    }

    void wheel(int direction, int x, int y, int steps = 1)
    {
        for (int i = 0; i < steps; ++i)
            input().mouseWheel(0, direction, x, y, 0);
    }
};

/// Middle of the pixels of a colour, from the middle of the image, y upwards; (-1000, 0) if there is none.
QPointF middleOf(const QImage& image, const QColor& color)
{
    QPointF sum;
    int count = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (image.pixelColor(x, y) == color) {
                sum += QPointF(x, y);
                ++count;
            }
    if (count == 0)
        return {-1000, 0};
    sum /= count;
    return {sum.x() - image.width() / 2.0 + 0.5, image.height() / 2.0 - sum.y() - 0.5};
}

int countOf(const QImage& image, const QColor& color)
{
    int count = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            count += image.pixelColor(x, y) == color;
    return count;
}

/// How many pixels are not the same.
int countDifferent(const QImage& a, const QImage& b)
{
    int count = 0;
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x)
            count += a.pixel(x, y) != b.pixel(x, y);
    return count;
}

/// Two cubes in an animation to which the camera was added.
struct AnimatedCubes : Cubes
{
    AnimatedCubes()
    {
        animations->setAnimation(boost::make_shared<scene::Animation>("flight", ""));
        animations->insertKeyframe(0);
        animations->addAnimationCamera();
    }

    QImage drawAt(int seconds)
    {
        animations->setTime(boost::posix_time::seconds(seconds));
        scene.manager->update();
        return draw();
    }

    const NodePtr camera = scene.manager->getNodeByID("camera");
    const boost::shared_ptr<scene::AnimationManager> animations = scene.manager->getAnimationManager();
};

/// Draws frames until the condition holds; false when that takes too long.
bool drawUntil(Stage& stage, const std::function<bool(const QImage&)>& condition)
{
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < 20000)
        if (condition(stage.draw()))
            return true;
    return false;
}

} // namespace

TEST(CameraControlTest, LeftDragTurnsRoundWhatIsUnderTheMouse)
{
    Cubes cubes;
    ASSERT_EQ(countOf(cubes.draw(), Qt::blue), 0);
    // A tenth of a turn.
    cubes.drag(Left, {50, 50}, {70, 50});
    const QImage image = cubes.draw();
    EXPECT_GT(countOf(image, Qt::blue), 10);
    // The pivot, half a unit before the cube's middle, stays where it was.
    EXPECT_LT(std::abs(middleOf(image, Qt::red).y()), 4);
    EXPECT_LT(std::abs(middleOf(image, Qt::red).x()), 25);
}

TEST(CameraControlTest, TheModelFollowsTheMouseWhenTurned)
{
    Cubes cubes;
    // What is behind the pivot goes the other way than the mouse, which holds the front.
    cubes.drag(Left, {50, 50}, {70, 50});
    EXPECT_LT(middleOf(cubes.draw(), Qt::blue).x(), middleOf(cubes.draw(), Qt::red).x());
    Cubes others;
    others.drag(Left, {50, 50}, {50, 30});
    EXPECT_GT(middleOf(others.draw(), Qt::blue).y(), middleOf(others.draw(), Qt::red).y());
}

TEST(CameraControlTest, TheViewDoesNotTipOver)
{
    Cubes cubes;
    cubes.drag(Left, {50, 50}, {50, -3000});
    const QImage above = cubes.draw();
    EXPECT_EQ(middleOf(above, Qt::red).x() > -1000 || middleOf(above, Qt::green).x() > -1000, true);
    cubes.drag(Left, {50, 50}, {50, 53 + 50});
    // Back to the horizon: the green cube is above again.
    EXPECT_GT(middleOf(cubes.draw(), Qt::green).y(), middleOf(cubes.draw(), Qt::red).y());
}

TEST(CameraControlTest, MiddleDragKeepsWhatIsUnderTheMouseThere)
{
    Cubes cubes;
    const QPointF before = middleOf(cubes.draw(), Qt::red);
    cubes.drag(Middle, {50, 50}, {70, 60});
    const QPointF after = middleOf(cubes.draw(), Qt::red);
    EXPECT_NEAR(after.x() - before.x(), 20, 1.5);
    EXPECT_NEAR(after.y() - before.y(), 10, 1.5);
}

TEST(CameraControlTest, LeftDragWithShiftDoesWhatMiddleDragDoes)
{
    Cubes cubes;
    Cubes others;
    cubes.drag(Middle, {50, 50}, {70, 60});
    others.drag(Left, {50, 50}, {70, 60}, Shift);
    EXPECT_EQ(cubes.draw(), others.draw());
}

TEST(CameraControlTest, RightDragDoesNothing)
{
    Cubes cubes;
    const QImage before = cubes.draw();
    cubes.drag(Right, {50, 50}, {90, 10});
    EXPECT_EQ(cubes.draw(), before);
}

TEST(CameraControlTest, TheWheelMovesTowardsWhatIsUnderTheMouse)
{
    Cubes cubes;
    const QImage before = cubes.draw();
    const int x = 50;
    const int y = 50 + int(middleOf(before, Qt::green).y());
    cubes.wheel(1, x, y, 3);
    const QImage after = cubes.draw();
    EXPECT_GT(countOf(after, Qt::green), countOf(before, Qt::green) * 3 / 2);
    EXPECT_NEAR(middleOf(after, Qt::green).y(), middleOf(before, Qt::green).y(), 3);
    cubes.wheel(-1, x, y, 3);
    EXPECT_NEAR(countOf(cubes.draw(), Qt::green), countOf(before, Qt::green), 10);
}

TEST(CameraControlTest, TheWheelNeverGetsStuck)
{
    Cubes cubes;
    cubes.wheel(1, 50, 50, 400);
    // Through both cubes and out at the back.
    EXPECT_EQ(countOf(cubes.draw(), Qt::red), 0);
    EXPECT_EQ(countOf(cubes.draw(), Qt::blue), 0);
    int seen = 0;
    for (int i = 0; i < 400 && seen == 0; ++i) {
        cubes.wheel(-1, 50, 50);
        seen = countOf(cubes.draw(), Qt::blue);
    }
    EXPECT_GT(seen, 0);
}

TEST(CameraControlTest, NothingIsCutOffFarAway)
{
    Cubes cubes;
    cubes.scene.manager->getCameraInstanceAt(0)->getCamera()->setZFar(6);
    moveTo(*cubes.scene.add("big", boxMesh(50), unlitMaterial(Qt::yellow)), 0, 0, -60);
    cubes.draw();
    cubes.wheel(-1, 50, 50, 15);
    const QImage image = cubes.draw();
    EXPECT_GT(countOf(image, Qt::yellow), 100);
    EXPECT_GT(countOf(image, Qt::red), 0);
}

TEST(CameraControlTest, TheSceneCameraStaysWhereItIs)
{
    Cubes cubes;
    const auto node = cubes.scene.manager->getNodeByID("camera");
    const Eigen::Vector3f before = node->getTranslation().vector();
    cubes.drag(Left, {50, 50}, {90, 10});
    cubes.wheel(1, 50, 50);
    cubes.draw();
    EXPECT_EQ(Eigen::Vector3f(node->getTranslation().vector()), before);
    // And the view no longer follows it.
    const QImage moved = cubes.draw();
    moveTo(*node, 0, 0, 500);
    EXPECT_EQ(cubes.draw(), moved);
}

TEST(CameraControlTest, HomeGoesBackToTheSceneCamera)
{
    Cubes cubes;
    const QImage before = cubes.draw();
    cubes.drag(Left, {50, 50}, {90, 10});
    EXPECT_NE(cubes.draw(), before);
    cubes.input().keyPressed(Qt::Key_Home, 0);
    EXPECT_EQ(cubes.draw(), before);
}

TEST(CameraControlTest, ActiveCameraGoesBackToTheSceneCameraToo)
{
    Cubes cubes;
    const QImage before = cubes.draw();
    cubes.drag(Left, {50, 50}, {90, 10});
    cubes.scene.events->triggerEvent("ActiveCamera", "camera");
    EXPECT_EQ(cubes.draw(), before);
}

TEST(CameraControlTest, ACameraOfTheAnimationGoesAlongWithTheUser)
{
    AnimatedCubes cubes;
    const QImage before = cubes.draw();
    cubes.drag(Left, {50, 50}, {90, 10});
    const QImage moved = cubes.draw();
    EXPECT_GT(countDifferent(before, moved), 500);
    EXPECT_LT(countDifferent(cubes.draw(), moved), 20); // what the camera sees from where it went
    cubes.animations->insertKeyframe(2);
    EXPECT_LT(countDifferent(cubes.drawAt(0), before), 20);
    EXPECT_GT(countDifferent(cubes.drawAt(1), before), 500);
    EXPECT_GT(countDifferent(cubes.drawAt(1), moved), 500);
    EXPECT_LT(countDifferent(cubes.drawAt(2), moved), 20);
}

TEST(CameraControlTest, ACameraGoesAlongBelowATurnedAndScaledParentToo)
{
    AnimatedCubes cubes;
    const auto parent = cubes.scene.add("parent");
    moveTo(*parent, 3, -2, 1);
    parent->setRotation(Eigen::Affine3f(Eigen::AngleAxisf(1, Eigen::Vector3f(1, 2, 3).normalized())));
    parent->setScale({2, 2, 2});
    cubes.scene.root->removeChildNode(cubes.camera);
    parent->addChildNode(cubes.camera);
    cubes.camera->setScale({0.5f, 0.5f, 0.5f});
    Eigen::Isometry3f pose(Eigen::AngleAxisf(0.3f, Eigen::Vector3f::UnitX()));
    pose.pretranslate(Eigen::Vector3f(0.1f, 0.2f, 0.3f));
    setCameraPose(*cubes.camera->getInstanceCamera(0), pose);
    cubes.input().keyPressed('F', 0);
    const QImage framed = cubes.draw();
    EXPECT_LT(countDifferent(cubes.draw(), framed), 20);
    cubes.drag(Left, {50, 50}, {70, 30});
    const QImage moved = cubes.draw();
    EXPECT_GT(countDifferent(framed, moved), 100);
    EXPECT_LT(countDifferent(cubes.draw(), moved), 20);
}

TEST(CameraControlTest, BelowAParentWithoutExtentACameraStaysWhereItIs)
{
    AnimatedCubes cubes;
    cubes.scene.root->setScale({1, 0, 1});
    cubes.drag(Left, {50, 50}, {70, 30});
    cubes.draw();
    EXPECT_EQ(Eigen::Vector3f(cubes.camera->getTranslation().vector()), Eigen::Vector3f(0, 0, 5));
    EXPECT_EQ(cubes.camera->getRotation(), Eigen::Matrix4f(Eigen::Matrix4f::Identity()));
}

TEST(CameraControlTest, AnAddedCameraIsRecordedWhereTheUserLooksFrom)
{
    Cubes cubes;
    cubes.drag(Left, {50, 50}, {90, 10});
    const QImage moved = cubes.draw();
    const auto animations = cubes.scene.manager->getAnimationManager();
    animations->setAnimation(boost::make_shared<scene::Animation>("flight", ""));
    animations->addAnimationCamera();
    animations->setTime(boost::posix_time::seconds(1));
    cubes.scene.manager->update();
    EXPECT_LT(countDifferent(cubes.draw(), moved), 20);
}

TEST(CameraControlTest, WhileTheAnimationPlaysTheUserMovesAlone)
{
    AnimatedCubes cubes;
    cubes.animations->resume();
    const Eigen::Vector3f before = cubes.camera->getTranslation().vector();
    cubes.drag(Left, {50, 50}, {90, 10});
    cubes.draw();
    EXPECT_EQ(Eigen::Vector3f(cubes.camera->getTranslation().vector()), before);
}

TEST(CameraControlTest, ACameraOfAnotherAnimationStaysWhereItIs)
{
    AnimatedCubes cubes;
    cubes.animations->setAnimation(boost::make_shared<scene::Animation>("other", ""));
    const Eigen::Vector3f before = cubes.camera->getTranslation().vector();
    cubes.drag(Left, {50, 50}, {90, 10});
    cubes.draw();
    EXPECT_EQ(Eigen::Vector3f(cubes.camera->getTranslation().vector()), before);
}

TEST(CameraControlTest, FBringsEverythingIntoView)
{
    Cubes cubes;
    cubes.wheel(-1, 50, 50, 40);
    EXPECT_LT(countOf(cubes.draw(), Qt::red), 5);
    cubes.input().keyPressed(Qt::Key_F, 0);
    const QImage image = cubes.draw();
    EXPECT_GT(countOf(image, Qt::red), 50);
    EXPECT_GT(countOf(image, Qt::green), 20);
}

TEST(CameraControlTest, FBringsTheSelectionIntoView)
{
    Cubes cubes;
    cubes.scene.events->triggerEvent("ObjectSelected", "green, Test");
    cubes.draw();
    cubes.input().keyPressed(Qt::Key_F, 0);
    const QImage image = cubes.draw();
    EXPECT_GT(countOf(image, Qt::green), 1000);
    EXPECT_LT(std::abs(middleOf(image, Qt::green).y()), 2);
}

TEST(CameraControlTest, ArrowKeysTurnALittle)
{
    Cubes cubes;
    for (int i = 0; i < 6; ++i)
        cubes.input().keyPressed(Qt::Key_Right, 0);
    EXPECT_GT(countOf(cubes.draw(), Qt::blue), 10);
    EXPECT_FALSE(isMoving(*cubes.window));
}

TEST(CameraControlTest, FlyingGoesOnWhileAKeyIsHeld)
{
    Cubes cubes;
    const int before = countOf(cubes.draw(), Qt::red);
    cubes.input().keyPressed(Qt::Key_W, 0);
    EXPECT_TRUE(isMoving(*cubes.window));
    EXPECT_TRUE(drawUntil(cubes, [&](const QImage& image) { return countOf(image, Qt::red) > before * 2; }));
    cubes.input().keyReleased(Qt::Key_W, 0);
    EXPECT_TRUE(drawUntil(cubes, [&](const QImage&) { return !isMoving(*cubes.window); }));
    const QImage after = cubes.draw();
    EXPECT_EQ(cubes.draw(), after);
}

TEST(CameraControlTest, TheKeysFlyInTheirDirections)
{
    struct Flight
    {
        int key;
        std::function<bool(QPointF before, QPointF after)> arrived;
    };
    const Flight flights[] = {{Qt::Key_A, [](QPointF b, QPointF a) { return a.x() > b.x() + 5; }},
                              {Qt::Key_D, [](QPointF b, QPointF a) { return a.x() < b.x() - 5; }},
                              {Qt::Key_E, [](QPointF b, QPointF a) { return a.y() < b.y() - 5; }},
                              {Qt::Key_Q, [](QPointF b, QPointF a) { return a.y() > b.y() + 5; }}};
    for (const Flight& flight : flights) {
        Cubes cubes;
        const QPointF before = middleOf(cubes.draw(), Qt::red);
        cubes.input().keyPressed(flight.key, 0);
        EXPECT_TRUE(drawUntil(cubes, [&](const QImage& image) {
            return flight.arrived(before, middleOf(image, Qt::red));
        })) << flight.key;
    }
}

TEST(CameraControlTest, RepeatedKeysDoNotFlyFaster)
{
    Cubes cubes;
    const QImage before = cubes.draw();
    cubes.input().keyPressed(Qt::Key_W, 0);
    for (int i = 0; i < 1000; ++i) {
        cubes.input().keyReleased(Qt::Key_W, 0);
        cubes.input().keyPressed(Qt::Key_W, 0);
    }
    cubes.input().keyReleased(Qt::Key_W, 0);
    EXPECT_LT(countOf(cubes.draw(), Qt::red), countOf(before, Qt::red) * 2);
}

TEST(CameraControlTest, KeysWithControlAreNotForTheCamera)
{
    Cubes cubes;
    cubes.input().keyPressed(Qt::Key_S, Control);
    EXPECT_FALSE(isMoving(*cubes.window));
}

TEST(CameraControlTest, ResettingTheInputLetsGoOfEverything)
{
    Cubes cubes;
    cubes.input().keyPressed(Qt::Key_W, 0);
    cubes.input().mousePressed(Left, 50, 50, 0);
    cubes.input().resetInputState();
    EXPECT_TRUE(drawUntil(cubes, [&](const QImage&) { return !isMoving(*cubes.window); }));
    const QImage before = cubes.draw();
    cubes.input().mouseMoved(90, 90, 0);
    EXPECT_EQ(cubes.draw(), before);
}

TEST(CameraControlTest, KeepsTheMousePosition)
{
    Cubes cubes;
    cubes.input().mouseMoved(12, 34, 0);
    EXPECT_EQ(cubes.input().getMousePosition(), Eigen::Vector2i(12, 34));
    cubes.input().mousePressed(Left, 1, 2, 0);
    EXPECT_EQ(cubes.input().getMousePosition(), Eigen::Vector2i(1, 2));
    cubes.input().mouseReleased(Left, 3, 4, 0);
    EXPECT_EQ(cubes.input().getMousePosition(), Eigen::Vector2i(3, 4));
    cubes.input().mouseWheel(0, 1, 5, 6, 0);
    EXPECT_EQ(cubes.input().getMousePosition(), Eigen::Vector2i(5, 6));
}

TEST(CameraControlTest, InputBeforeTheFirstFrameAndWithoutASceneIsNoError)
{
    engine::window::Window window({}, "window");
    engine::logic::LogicManager& input = *window.getLogicManager();
    for (int button : {Left, Middle, Right}) {
        input.mousePressed(button, 0, 0, 0);
        input.mouseMoved(500, 500, 0);
        input.mouseReleased(button, 500, 500, 0);
    }
    input.mouseWheel(0, 1, 0, 0, 0);
    input.mouseReleased(Left, 0, 0, 0);
    for (int key : {Qt::Key_F, Qt::Key_Home, Qt::Key_Left, Qt::Key_W})
        input.keyPressed(key, 0);
    window.update();
}

TEST(CameraControlTest, OutlivesItsWindow)
{
    auto window = std::make_unique<engine::window::Window>(nullptr, "window");
    const auto input = window->getLogicManager();
    input->mousePressed(Left, 0, 0, 0);
    window.reset();
    input->mouseMoved(50, 50, 0);
    input->mouseReleased(Left, 50, 50, 0);
    input->mousePressed(Left, 0, 0, 0);
    input->mouseReleased(Left, 0, 0, 0);
    input->mouseWheel(0, 1, 0, 0, 0);
    input->keyPressed(Qt::Key_W, 0);
}
