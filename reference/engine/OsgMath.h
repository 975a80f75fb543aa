#pragma once

#include <Eigen/Geometry>

#include <osg/BoundingBox>
#include <osg/Matrixd>
#include <osg/Vec4f>

namespace halvern::engine {

// OpenSceneGraph multiplies row vectors from the left and stores rows; Eigen multiplies column vectors
// from the right and stores columns: the sixteen numbers lie in the same order.
inline osg::Matrixd toOsg(const Eigen::Matrix4d& matrix)
{
    return osg::Matrixd(matrix.data());
}

inline osg::Matrixd toOsg(const Eigen::Affine3d& transform)
{
    return osg::Matrixd(transform.matrix().data());
}

inline osg::Vec4f toOsg(const Eigen::Vector3d& v, double w)
{
    return {float(v.x()), float(v.y()), float(v.z()), float(w)};
}

} // namespace halvern::engine
