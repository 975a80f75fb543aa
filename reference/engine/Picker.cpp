#include "reference/engine/Picker.h"

#include "reference/engine/SceneMirror.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace halvern::engine {

using scene::Mesh;

namespace {

constexpr double tolerance = 4; ///< pixels, round points and lines
constexpr double nowhere = std::numeric_limits<double>::infinity();

/// Depth at which the ray enters the box, not before the near plane; infinite if it passes it by.
double enterBox(const Eigen::AlignedBox3d& box, const PickRay& ray)
{
    double enter = ray.zNear;
    double leave = ray.zFar;
    for (int axis = 0; axis < 3; ++axis) {
        const double inverse = 1 / ray.direction[axis];
        const double a = (box.min()[axis] - ray.origin[axis]) * inverse;
        const double b = (box.max()[axis] - ray.origin[axis]) * inverse;
        if (std::isnan(a) || std::isnan(b))
            continue; // in the plane of a side
        enter = std::max(enter, std::min(a, b));
        leave = std::min(leave, std::max(a, b));
    }
    return enter <= leave ? enter : nowhere;
}

/// A box that also holds what is drawn a few pixels round it.
Eigen::AlignedBox3d widened(const Eigen::AlignedBox3d& box, const PickRay& ray)
{
    const double depth = (box.center() - ray.origin).norm() + box.diagonal().norm() / 2;
    const Eigen::Vector3d margin = Eigen::Vector3d::Constant(depth * ray.pixelSize * tolerance);
    return {box.min() - margin, box.max() + margin};
}

double pickTriangles(const MeshGeometry& geometry, const Eigen::Affine3d& toWorld, const PickRay& ray)
{
    // Depths are the same in the coordinates of the mesh: the ray is taken there as it is.
    const Eigen::Affine3d toMesh = toWorld.inverse();
    const Eigen::Vector3d origin = toMesh * ray.origin;
    const Eigen::Vector3d direction = toMesh.linear() * ray.direction;
    const std::vector<uint32_t>& indices = geometry.mesh->indices;
    const Eigen::Vector3f* const positions = geometry.getPositions();
    double nearest = nowhere;
    for (size_t i = 0; i + 2 < indices.size(); i += 3) {
        const Eigen::Vector3d a = positions[indices[i]].cast<double>();
        const Eigen::Vector3d ab = positions[indices[i + 1]].cast<double>() - a;
        const Eigen::Vector3d ac = positions[indices[i + 2]].cast<double>() - a;
        const Eigen::Vector3d across = direction.cross(ac);
        const double determinant = ab.dot(across);
        const double inverse = 1 / determinant;
        const Eigen::Vector3d ao = origin - a;
        const double u = ao.dot(across) * inverse;
        if (!(u >= 0 && u <= 1))
            continue;
        const Eigen::Vector3d over = ao.cross(ab);
        const double v = direction.dot(over) * inverse;
        if (!(v >= 0 && u + v <= 1))
            continue;
        const double depth = ac.dot(over) * inverse;
        if (depth >= ray.zNear && depth < nearest)
            nearest = depth;
    }
    return nearest <= ray.zFar ? nearest : nowhere;
}

/// A point as the ray sees it: its depth, and how far off it is in pixels.
struct Sight
{
    double depth;
    Eigen::Vector2d offset;
};

Sight sight(const Eigen::Vector3d& point, const PickRay& ray)
{
    const Eigen::Vector3d fromEye = point - ray.origin;
    const double depth = -fromEye.dot(ray.axes.col(2));
    const Eigen::Vector3d aside = (fromEye - ray.direction * depth) / (depth * ray.pixelSize);
    return {depth, {aside.dot(ray.axes.col(0)), aside.dot(ray.axes.col(1))}};
}

double pickPoint(const Eigen::Vector3d& point, const PickRay& ray)
{
    const Sight seen = sight(point, ray);
    const bool hit = seen.depth >= ray.zNear && seen.depth <= ray.zFar && seen.offset.norm() <= tolerance;
    return hit ? seen.depth : nowhere;
}

double pickLine(Eigen::Vector3d from, Eigen::Vector3d to, const PickRay& ray)
{
    // Only what is before the near plane has a place on the screen.
    const auto depthOf = [&ray](const Eigen::Vector3d& p) { return -(p - ray.origin).dot(ray.axes.col(2)); };
    if (depthOf(from) > depthOf(to))
        std::swap(from, to);
    const double first = depthOf(from);
    const double last = depthOf(to);
    if (!(last >= ray.zNear))
        return nowhere;
    if (first < ray.zNear)
        from += (to - from) * ((ray.zNear - first) / (last - first));
    const Sight a = sight(from, ray);
    const Sight b = sight(to, ray);
    const Eigen::Vector2d along = b.offset - a.offset;
    const double share =
        along.isZero() ? 0 : std::clamp(-a.offset.dot(along) / along.squaredNorm(), 0.0, 1.0);
    if (!((a.offset + along * share).norm() <= tolerance))
        return nowhere;
    const double depth = 1 / ((1 - share) / a.depth + share / b.depth);
    return depth <= ray.zFar ? depth : nowhere;
}

double pickGeometry(const MeshGeometry& geometry, const Eigen::Affine3d& toWorld, const PickRay& ray)
{
    const Mesh& mesh = *geometry.mesh;
    if (mesh.primitive == Mesh::Primitive::Triangles)
        return pickTriangles(geometry, toWorld, ray);
    const Eigen::Vector3f* const positions = geometry.getPositions();
    const auto position = [&](size_t i) -> Eigen::Vector3d {
        return toWorld * positions[mesh.indices[i]].cast<double>();
    };
    double nearest = nowhere;
    if (mesh.primitive == Mesh::Primitive::Points)
        for (size_t i = 0; i < mesh.indices.size(); ++i)
            nearest = std::min(nearest, pickPoint(position(i), ray));
    else
        for (size_t i = 0; i + 1 < mesh.indices.size(); i += 2)
            nearest = std::min(nearest, pickLine(position(i), position(i + 1), ray));
    return nearest;
}

} // namespace

boost::optional<PickHit> pick(const SceneMirror& mirror, const PickRay& ray)
{
    boost::optional<PickHit> best;
    bool bestIsPost = false;
    for (const SceneMirror::Surface& surface : mirror.getSurfaces()) {
        if (surface.bounds.isEmpty() || (bestIsPost && !surface.postRender))
            continue;
        const bool solid = surface.geometry->mesh->primitive == Mesh::Primitive::Triangles;
        const double enter = enterBox(solid ? surface.bounds : widened(surface.bounds, ray), ray);
        const double limit = best && bestIsPost == surface.postRender ? best->depth : nowhere;
        if (enter == nowhere || enter > limit)
            continue;
        const double depth = pickGeometry(*surface.geometry, mirror.getEntries()[surface.entry].world, ray);
        if (depth >= limit)
            continue;
        best = PickHit{surface.entry, surface.index, depth};
        bestIsPost = surface.postRender;
    }
    return best;
}

} // namespace halvern::engine
