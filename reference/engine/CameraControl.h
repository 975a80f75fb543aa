#pragma once

#include "engine/logic/CameraInputHandler.h"
#include "engine/logic/LogicManager.h"
#include "reference/engine/ViewCamera.h"

#include <boost/optional.hpp>

#include <chrono>
#include <set>

namespace halvern::engine {

/// What the camera control must know of the scene in the window.
class ControlledScene
{
public:
    /// The point of a surface that is seen at a point of the picture, if any.
    virtual boost::optional<Eigen::Vector3d> getPointAt(Eigen::Vector2i point) = 0;
    virtual Eigen::AlignedBox3d getBounds() = 0;
    virtual Eigen::AlignedBox3d getSelectionBounds() = 0;

    /// The user clicked without dragging.
    virtual void click(Eigen::Vector2i point) = 0;

protected:
    ~ControlledScene() = default;
};

/// Turns input into movements of the view.
///
/// - Left drag turns round the point under the mouse, or round the middle of the scene.
/// - Middle drag, or left with Shift, shifts the view so that the point stays under the mouse.
/// - The wheel moves towards or away from the point under the mouse.
/// - W, A, S, D, Q and E fly while they are held, faster with Shift; the arrow keys turn a little.
/// - F brings the selection, or everything, into view; Home goes back to the scene's camera.
class CameraControl : public logic::LogicManager
{
public:
    CameraControl(ViewCamera& camera, ControlledScene& scene);

    /// Forgets camera and scene: input has no effect from now on.
    void detach();

    void keyPressed(int key, int modifiers) override;
    void keyReleased(int key, int modifiers) override;
    void mousePressed(int button, int x, int y, int modifiers) override;
    void mouseReleased(int button, int x, int y, int modifiers) override;
    void mouseMoved(int x, int y, int modifiers) override;
    void mouseWheel(int first, int direction, int x, int y, int modifiers) override;
    void resetInputState() override;

    /// Whether the view moves by itself.
    bool isMoving() const;

    /// Flies on by the time that went by.
    void advance();

private:
    enum class Drag { None, Orbit, Pan };
    using Clock = std::chrono::steady_clock;

    Eigen::Vector3d anchorAt(Eigen::Vector2i point) const;
    double depthOf(const Eigen::Vector3d& point) const;
    double sceneRadius() const;
    Eigen::Vector3d wantedVelocity() const;

    ViewCamera* camera;
    ControlledScene* scene;

    Drag drag = Drag::None;
    int dragButton = 0;
    bool dragged = false; // further than a click
    Eigen::Vector2i pressPosition = Eigen::Vector2i::Zero();
    Eigen::Vector2i lastPosition = Eigen::Vector2i::Zero();
    Eigen::Vector3d anchor = Eigen::Vector3d::Zero();

    std::set<int> flyKeys; // held
    bool fast = false;
    Eigen::Vector3d velocity = Eigen::Vector3d::Zero();
    Clock::time_point lastAdvance;
};

/// The window's camera input handler; everything is done by its logic manager.
class ViewInputHandler : public logic::CameraInputHandler
{};

} // namespace halvern::engine
