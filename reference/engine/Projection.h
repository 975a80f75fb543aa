#pragma once

#include <Eigen/Core>

#include <cmath>

namespace halvern::engine {

/// Eye to clip coordinates; the angle is the whole vertical one in radians, the aspect width by height.
inline Eigen::Matrix4d perspective(double angle, double aspect, double zNear, double zFar)
{
    const double scale = 1 / std::tan(angle / 2);
    Eigen::Matrix4d matrix = Eigen::Matrix4d::Zero();
    matrix(0, 0) = scale / aspect;
    matrix(1, 1) = scale;
    matrix(2, 2) = (zFar + zNear) / (zNear - zFar);
    matrix(2, 3) = 2 * zFar * zNear / (zNear - zFar);
    matrix(3, 2) = -1;
    return matrix;
}

/// Eye to clip coordinates, centred on the view axis.
inline Eigen::Matrix4d orthographic(double halfWidth, double halfHeight, double zNear, double zFar)
{
    Eigen::Matrix4d matrix = Eigen::Matrix4d::Identity();
    matrix(0, 0) = 1 / halfWidth;
    matrix(1, 1) = 1 / halfHeight;
    matrix(2, 2) = 2 / (zNear - zFar);
    matrix(2, 3) = (zFar + zNear) / (zNear - zFar);
    return matrix;
}

} // namespace halvern::engine
