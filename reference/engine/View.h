#pragma once

#include <Eigen/Geometry>

namespace halvern::engine {

/// How a frame looks at the world.
struct View
{
    Eigen::Vector2i size = Eigen::Vector2i::Ones();           ///< pixels
    Eigen::Affine3d toEye = Eigen::Affine3d::Identity();      ///< world to eye coordinates
    Eigen::Matrix4d projection = Eigen::Matrix4d::Identity(); ///< eye to clip coordinates
};

/// The part of the world that a clip volume shows.
class Frustum
{
public:
    /// `toClip` takes the world to clip coordinates.
    explicit Frustum(const Eigen::Matrix4d& toClip)
    {
        for (int axis = 0; axis < 3; ++axis) {
            planes[2 * axis] = toClip.row(3) + toClip.row(axis);
            planes[2 * axis + 1] = toClip.row(3) - toClip.row(axis);
        }
    }

    /// False only for a box that is wholly outside; the empty box is.
    bool touches(const Eigen::AlignedBox3d& box) const
    {
        if (box.isEmpty())
            return false;
        const Eigen::Vector3d center = box.center();
        const Eigen::Vector3d half = box.sizes() / 2;
        for (const Eigen::Vector4d& plane : planes) {
            const auto normal = plane.head<3>();
            if (normal.dot(center) + normal.cwiseAbs().dot(half) + plane[3] < 0)
                return false;
        }
        return true;
    }

private:
    Eigen::Vector4d planes[6];
};

} // namespace halvern::engine
