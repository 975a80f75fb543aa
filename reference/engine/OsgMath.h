#pragma once

#include <Eigen/Geometry>

#include <osg/BoundingBox>
#include <osg/Matrixd>
#include <osg/Vec3f>

namespace halvern::engine {

// OpenSceneGraph multiplies row vectors from the left and stores rows; Eigen multiplies column vectors
// from the right and stores columns: the sixteen numbers lie in the same order.
inline osg::Matrixd toOsgMatrix(const Eigen::Matrix4d& matrix)
{
    return osg::Matrixd(matrix.data());
}

inline osg::Vec3f toOsgVector(const Eigen::Vector3d& v)
{
    return {float(v.x()), float(v.y()), float(v.z())};
}

} // namespace halvern::engine
