#pragma once

#include <Eigen/Core>

#include <boost/optional.hpp>

namespace halvern::engine {

class SceneMirror;

/// A line of sight through a point of the picture. Depths are distances along the view axis.
struct PickRay
{
    Eigen::Vector3d origin;    ///< the eye, in the world
    Eigen::Vector3d direction; ///< as long as it takes to get one further along the view axis
    Eigen::Matrix3d axes;      ///< of the view: right, up, towards the user
    double zNear;
    double zFar;
    double pixelSize; ///< at a depth of 1

    Eigen::Vector3d at(double depth) const { return origin + direction * depth; }
};

struct PickHit
{
    int entry;          ///< of the scene mirror
    unsigned int index; ///< of the geometry in its node
    double depth;
};

/// The visible surface that the line of sight meets first; points and lines count within a few pixels.
/// What is drawn over the rest comes before the rest.
boost::optional<PickHit> pick(const SceneMirror& mirror, const PickRay& ray);

} // namespace halvern::engine
