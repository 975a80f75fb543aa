#include "reference/engine/CameraControl.h"

#include <algorithm>
#include <cmath>

namespace halvern::engine {

namespace {

// The values of Qt::MouseButton, Qt::KeyboardModifier and Qt::Key.
enum Button { LeftButton = 1, MiddleButton = 4 };
enum Modifier { Shift = 0x02000000, Control = 0x04000000, Alt = 0x08000000 };
enum Key {
    KeyA = 'A',
    KeyD = 'D',
    KeyE = 'E',
    KeyF = 'F',
    KeyQ = 'Q',
    KeyS = 'S',
    KeyW = 'W',
    KeyHome = 0x01000010,
    KeyLeft = 0x01000012,
    KeyUp = 0x01000013,
    KeyRight = 0x01000014,
    KeyDown = 0x01000015
};

struct FlyKey
{
    int key;
    Eigen::Vector3d direction; ///< right, up, backwards
};

const FlyKey flyDirections[] = {{KeyW, {0, 0, -1}}, {KeyS, {0, 0, 1}},  {KeyA, {-1, 0, 0}},
                                {KeyD, {1, 0, 0}},  {KeyQ, {0, -1, 0}}, {KeyE, {0, 1, 0}}};

struct TurnKey
{
    int key;
    int right;
    int upwards;
};

const TurnKey turnKeys[] = {{KeyLeft, -1, 0}, {KeyRight, 1, 0}, {KeyUp, 0, 1}, {KeyDown, 0, -1}};

constexpr int clickRadius = 3;             ///< pixels that the mouse may move in a click
constexpr double keyTurn = 5 * M_PI / 180; ///< of an arrow key
constexpr double wheelStep = 0.85;         ///< what is left of the distance after a step
constexpr double leastStep = 0.002;        ///< of a wheel step, as part of the scene's radius
constexpr double flySpeed = 0.5;           ///< radii of the scene in a second
constexpr double fastFactor = 4;
constexpr double flyResponse = 10;     ///< how fast the speed follows the keys, per second
constexpr double longestAdvance = 0.1; ///< seconds

bool isFlyKey(int key)
{
    return std::any_of(std::begin(flyDirections), std::end(flyDirections),
                       [key](const FlyKey& fly) { return fly.key == key; });
}

} // namespace

CameraControl::CameraControl(ViewCamera& newCamera, ControlledScene& newScene) :
    camera(&newCamera), scene(&newScene)
{}

void CameraControl::detach()
{
    camera = nullptr;
    scene = nullptr;
    resetInputState();
}

void CameraControl::keyPressed(int key, int modifiers)
{
    LogicManager::keyPressed(key, modifiers);
    fast = modifiers & Shift;
    if (!camera || modifiers & (Control | Alt))
        return;
    if (isFlyKey(key)) {
        if (!isMoving())
            lastAdvance = Clock::now();
        flyKeys.insert(key);
    }
    for (const TurnKey& turn : turnKeys)
        if (turn.key == key)
            camera->orbit(scene->getBounds().isEmpty() ? camera->getEye() : scene->getBounds().center(),
                          turn.right * keyTurn, turn.upwards * keyTurn);
    if (key == KeyHome)
        camera->reset();
    if (key == KeyF) {
        const Eigen::AlignedBox3d selection = scene->getSelectionBounds();
        camera->frame(selection.isEmpty() ? scene->getBounds() : selection);
    }
}

void CameraControl::keyReleased(int key, int modifiers)
{
    LogicManager::keyReleased(key, modifiers);
    fast = modifiers & Shift;
    flyKeys.erase(key);
}

void CameraControl::mousePressed(int button, int x, int y, int modifiers)
{
    LogicManager::mousePressed(button, x, y, modifiers);
    if (!camera || drag != Drag::None)
        return;
    if (button == MiddleButton || (button == LeftButton && modifiers & Shift))
        drag = Drag::Pan;
    else if (button == LeftButton)
        drag = Drag::Orbit;
    else
        return;
    dragButton = button;
    dragged = false;
    pressPosition = lastPosition = {x, y};
    anchor = anchorAt(pressPosition);
}

void CameraControl::mouseReleased(int button, int x, int y, int modifiers)
{
    LogicManager::mouseReleased(button, x, y, modifiers);
    if (drag == Drag::None || button != dragButton)
        return;
    drag = Drag::None;
    if (!dragged && button == LeftButton)
        scene->click({x, y});
}

void CameraControl::mouseMoved(int x, int y, int modifiers)
{
    LogicManager::mouseMoved(x, y, modifiers);
    if (drag == Drag::None)
        return;
    const Eigen::Vector2i position(x, y);
    dragged |= (position - pressPosition).cwiseAbs().maxCoeff() > clickRadius;
    if (!dragged)
        return;
    const Eigen::Vector2d way = (position - lastPosition).cast<double>();
    lastPosition = position;
    if (drag == Drag::Orbit) {
        // A drag from top to bottom is half a turn.
        const double angle = M_PI / camera->getSize().y();
        camera->orbit(anchor, way.x() * angle, way.y() * angle);
    } else {
        const double scale = camera->pixelSize(depthOf(anchor));
        camera->move(camera->getAxes().leftCols<2>() * -way * scale);
    }
}

void CameraControl::mouseWheel(int first, int direction, int x, int y, int modifiers)
{
    LogicManager::mouseWheel(first, direction, x, y, modifiers);
    if (!camera || direction == 0)
        return;
    const Eigen::Vector3d way = anchorAt({x, y}) - camera->getEye();
    const double share = direction > 0 ? 1 - wheelStep : 1 - 1 / wheelStep;
    // Close to a surface the steps would get smaller and smaller: go through it.
    const double least = sceneRadius() * leastStep;
    const double length = std::max(way.norm() * std::abs(share), least);
    camera->move(way.normalized() * std::copysign(length, share));
}

void CameraControl::resetInputState()
{
    LogicManager::resetInputState();
    drag = Drag::None;
    flyKeys.clear();
}

bool CameraControl::isMoving() const
{
    return !flyKeys.empty() || !velocity.isZero(0);
}

void CameraControl::advance()
{
    if (!camera || !isMoving())
        return;
    const Clock::time_point now = Clock::now();
    const double seconds = std::min(std::chrono::duration<double>(now - lastAdvance).count(), longestAdvance);
    lastAdvance = now;
    const Eigen::Vector3d wanted = wantedVelocity();
    velocity += (wanted - velocity) * (1 - std::exp(-flyResponse * seconds));
    if (flyKeys.empty() && velocity.norm() < sceneRadius() * flySpeed * 0.01)
        velocity.setZero();
    camera->move(velocity * seconds);
}

Eigen::Vector3d CameraControl::anchorAt(Eigen::Vector2i point) const
{
    if (const auto hit = scene->getPointAt(point))
        return *hit;
    // Nothing there: as far away as the middle of the scene, if that is before the eye.
    const Eigen::AlignedBox3d bounds = scene->getBounds();
    if (drag == Drag::Orbit && !bounds.isEmpty())
        return bounds.center();
    const double depth = bounds.isEmpty() ? 1 : depthOf(bounds.center());
    return camera->getEye() + camera->directionAt(point.cast<double>()) * std::max(depth, sceneRadius());
}

double CameraControl::depthOf(const Eigen::Vector3d& point) const
{
    return (point - camera->getEye()).dot(camera->getForward());
}

double CameraControl::sceneRadius() const
{
    const Eigen::AlignedBox3d bounds = scene->getBounds();
    return bounds.isEmpty() ? 1 : std::max(bounds.diagonal().norm() / 2, 1e-6);
}

Eigen::Vector3d CameraControl::wantedVelocity() const
{
    Eigen::Vector3d direction = Eigen::Vector3d::Zero();
    for (const FlyKey& fly : flyDirections)
        if (flyKeys.count(fly.key))
            direction += fly.direction;
    const double speed = sceneRadius() * flySpeed * (fast ? fastFactor : 1);
    return camera->getAxes() * direction * speed;
}

} // namespace halvern::engine
