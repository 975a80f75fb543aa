#pragma once

#include "reference/engine/Picker.h"
#include "reference/engine/View.h"

#include <Eigen/Geometry>

namespace halvern::engine {

/// The lens of a scene camera, as it was set: any number.
struct Lens
{
    double zNear = 0.1;
    double zFar = 1000;
    double yFov = 45; ///< degrees
    bool operator==(const Lens& other) const
    {
        return zNear == other.zNear && zFar == other.zFar && yFov == other.yFov;
    }
};

/// Where the view looks from. It follows a scene camera until the user moves it; then it goes its own way,
/// and the scene camera stays where it is.
class ViewCamera
{
public:
    /// Takes over the scene camera's place and lens; the place only while the view follows it. What is no
    /// usable place is ignored.
    void follow(const Eigen::Affine3d& toWorld, const Lens& lens);

    /// Looks through the scene camera again, from the next follow() on.
    void reset();

    bool isFollowing() const { return following; }

    void resize(Eigen::Vector2i newSize) { size = newSize; }
    Eigen::Vector2i getSize() const { return size; }

    /// Turns round a point of the world: to the right about the vertical axis and upwards, in radians.
    void orbit(const Eigen::Vector3d& pivot, double right, double upwards);

    /// Shifts by a vector of the world.
    void move(const Eigen::Vector3d& shift);

    /// Moves so that the box fills the view, without turning.
    void frame(const Eigen::AlignedBox3d& box);

    Eigen::Vector3d getEye() const { return eye; }
    Eigen::Vector3d getForward() const { return orientation * -Eigen::Vector3d::UnitZ(); }
    Eigen::Matrix3d getAxes() const { return orientation.toRotationMatrix(); }

    /// Direction into the picture at a point in pixels, y upwards; as long as it takes to get one further
    /// along the view axis.
    Eigen::Vector3d directionAt(Eigen::Vector2d point) const;

    /// Size of a pixel in the world at a distance along the view axis.
    double pixelSize(double depth) const;

    /// The line of sight through a point in pixels, y upwards.
    PickRay getRay(Eigen::Vector2d point, const Eigen::AlignedBox3d& bounds) const;

    /// The view; the scene's bounds are for the clipping planes.
    View getView(const Eigen::AlignedBox3d& bounds) const;

private:
    void startMoving();
    double fieldOfView() const; // radians
    void clipRange(const Eigen::AlignedBox3d& bounds, double& zNear, double& zFar) const;

    Eigen::Vector2i size = Eigen::Vector2i::Ones();
    Eigen::Vector3d eye = Eigen::Vector3d(0, 0, 5);
    Eigen::Quaterniond orientation = Eigen::Quaterniond::Identity();
    Lens lens;
    Lens lensAtMove; // what it was when the user last moved the view
    bool following = true;
};

} // namespace halvern::engine
