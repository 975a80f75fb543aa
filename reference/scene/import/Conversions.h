#pragma once

#include "engine/scene/Node.h"

#include <assimp/matrix4x4.h>
#include <assimp/quaternion.h>
#include <assimp/types.h>
#include <assimp/vector3.h>

#include <Eigen/Geometry>

namespace halvern::scene {

/// A local transform as nodes keep it: translation * rotation * scale.
struct Transform
{
    Eigen::Vector3f translation = Eigen::Vector3f::Zero();
    Eigen::Matrix3f rotation = Eigen::Matrix3f::Identity();
    Eigen::Vector3f scale = Eigen::Vector3f::Ones();
};

inline Eigen::Vector3f toEigen(const aiVector3D& v)
{
    return {v.x, v.y, v.z};
}

inline Eigen::Vector3f toEigen(const aiColor3D& c)
{
    return {c.r, c.g, c.b};
}

inline Eigen::Quaternionf toEigen(const aiQuaternion& q)
{
    return Eigen::Quaternionf(q.w, q.x, q.y, q.z).normalized();
}

/// Exact for every affine matrix: what is sheared stays so, in the rotation part. The identity for a
/// matrix that is not finite.
inline Transform decompose(const aiMatrix4x4& m)
{
    Eigen::Matrix3f linear;
    linear << m.a1, m.a2, m.a3, m.b1, m.b2, m.b3, m.c1, m.c2, m.c3;
    Transform result;
    result.translation = {m.a4, m.b4, m.c4};
    result.scale = linear.colwise().stableNorm();
    if (!linear.allFinite() || !result.translation.allFinite() || !result.scale.allFinite())
        return {};
    if (linear.determinant() < 0)
        result.scale.x() = -result.scale.x();
    for (int axis = 0; axis < 3; ++axis) {
        if (result.scale[axis] != 0)
            result.rotation.col(axis) = linear.col(axis) / result.scale[axis];
    }
    return result;
}

/// The rotation whose -z axis looks along `direction`, y as far upwards as that allows. The identity for
/// a direction that is none.
inline Eigen::Matrix3f lookAlong(const Eigen::Vector3f& direction, const Eigen::Vector3f& up)
{
    const Eigen::Vector3f z = -direction.stableNormalized();
    if (!z.allFinite() || z.isZero())
        return Eigen::Matrix3f::Identity();
    Eigen::Vector3f x = up.stableNormalized().cross(z);
    if (!x.allFinite() || x.squaredNorm() < 1e-8f)
        x = z.unitOrthogonal();
    Eigen::Matrix3f rotation;
    rotation.col(2) = z;
    rotation.col(0) = x.normalized();
    rotation.col(1) = z.cross(rotation.col(0));
    return rotation;
}

/// Where a camera or light stands in the coordinates of its node. Some of Assimp's importers repeat the
/// node's own translation there.
inline Eigen::Vector3f ownPosition(const Eigen::Vector3f& position, const Node& node)
{
    const Eigen::Vector3f translation = node.getTranslation().translation();
    if (!position.allFinite() || position.isApprox(translation))
        return Eigen::Vector3f::Zero();
    return position;
}

} // namespace halvern::scene
