#include "reference/engine/ViewCamera.h"

#include "reference/engine/Projection.h"

#include <algorithm>
#include <cmath>

namespace halvern::engine {

namespace {

constexpr double degree = M_PI / 180;
constexpr double leastTilt = 1 * degree; ///< between the view axis and the vertical

/// The least part of the far distance that the near plane may be at with 24 bits of depth.
constexpr double leastNearRatio = 1 / 20000.0;

} // namespace

void ViewCamera::follow(const Eigen::Affine3d& toWorld, const Lens& newLens)
{
    lens = newLens;
    if (!following || !toWorld.matrix().allFinite() || std::abs(toWorld.linear().determinant()) < 1e-30)
        return;
    eye = toWorld.translation();
    // Without the scale: x and y as they are, as far as they are at right angles.
    Eigen::Matrix3d axes;
    axes.col(2) = toWorld.linear().col(2).normalized();
    axes.col(0) = toWorld.linear().col(1).cross(axes.col(2)).normalized();
    axes.col(1) = axes.col(2).cross(axes.col(0));
    orientation = Eigen::Quaterniond(axes);
}

void ViewCamera::reset()
{
    following = true;
}

void ViewCamera::orbit(const Eigen::Vector3d& pivot, double right, double upwards)
{
    startMoving();
    // Not past the zenith, where right and left would change places.
    const double tilt = std::acos(std::clamp(getForward().y(), -1.0, 1.0));
    const double newTilt = std::clamp(tilt - upwards, leastTilt, M_PI - leastTilt);
    const Eigen::Quaterniond turn = Eigen::AngleAxisd(-right, Eigen::Vector3d::UnitY()) *
                                    Eigen::AngleAxisd(tilt - newTilt, orientation * Eigen::Vector3d::UnitX());
    eye = pivot + turn * (eye - pivot);
    orientation = (turn * orientation).normalized();
}

void ViewCamera::move(const Eigen::Vector3d& shift)
{
    startMoving();
    if (shift.allFinite())
        eye += shift;
}

void ViewCamera::frame(const Eigen::AlignedBox3d& box)
{
    if (box.isEmpty())
        return;
    startMoving();
    const double radius = std::max(box.diagonal().norm() / 2, 1e-6);
    const double aspect = double(size.x()) / size.y();
    const double halfHeight = fieldOfView() / 2;
    const double half = std::min(halfHeight, std::atan(std::tan(halfHeight) * aspect));
    eye = box.center() - getForward() * (radius / std::sin(half));
}

Eigen::Vector3d ViewCamera::directionAt(Eigen::Vector2d point) const
{
    const double pixel = pixelSize(1);
    const Eigen::Vector2d offset = (point - size.cast<double>() / 2) * pixel;
    return orientation * Eigen::Vector3d(offset.x(), offset.y(), -1);
}

double ViewCamera::pixelSize(double depth) const
{
    return 2 * std::tan(fieldOfView() / 2) * depth / size.y();
}

PickRay ViewCamera::getRay(Eigen::Vector2d point, const Eigen::AlignedBox3d& bounds) const
{
    PickRay ray{eye, directionAt(point), getAxes(), 0, 0, pixelSize(1)};
    clipRange(bounds, ray.zNear, ray.zFar);
    return ray;
}

View ViewCamera::getView(const Eigen::AlignedBox3d& bounds) const
{
    View view;
    view.size = size;
    view.toEye = orientation.conjugate() * Eigen::Translation3d(-eye);
    double zNear = 0;
    double zFar = 0;
    clipRange(bounds, zNear, zFar);
    view.projection = perspective(fieldOfView(), double(size.x()) / size.y(), zNear, zFar);
    return view;
}

void ViewCamera::startMoving()
{
    following = false;
    lensAtMove = lens;
}

double ViewCamera::fieldOfView() const
{
    const bool usable = lens.yFov > 0 && lens.yFov < 180;
    return std::clamp(usable ? lens.yFov : Lens().yFov, 0.1, 170.0) * degree;
}

void ViewCamera::clipRange(const Eigen::AlignedBox3d& bounds, double& zNear, double& zFar) const
{
    const double center = (bounds.center() - eye).dot(getForward());
    const double reach = getForward().cwiseAbs().dot(bounds.sizes() / 2);
    const double first = center - reach;
    const double last = center + reach;
    // The planes hold as they are set, until the user moves the view away from where they were meant for,
    // and again when they are set anew.
    if (following || !(lens == lensAtMove) || bounds.isEmpty()) {
        zFar = lens.zFar > 0 && std::isfinite(lens.zFar) ? lens.zFar : Lens().zFar;
        zNear = lens.zNear > 0 && std::isfinite(lens.zNear) ? lens.zNear : zFar * leastNearRatio;
        // Empty room before and behind the scene costs resolution of the depth. Some is left for what an
        // effect moves out of the bounds.
        if (!bounds.isEmpty() && last > zNear && first < zFar) {
            zNear = std::max(zNear, first / 2);
            zFar = std::min(zFar, last * 2);
        }
        zFar = std::max(zFar, zNear * 1.001);
        return;
    }
    zFar = std::max(last, bounds.diagonal().norm() * 1e-3 + 1e-6) * 1.01;
    zNear = std::max(first * 0.99, zFar * leastNearRatio);
}

} // namespace halvern::engine
