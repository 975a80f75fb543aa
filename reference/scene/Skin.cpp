#include "reference/scene/Skin.h"

#include "reference/scene/Mesh.h"

#include <algorithm>
#include <cmath>

namespace halvern::scene {

namespace {

/// Four floats in one register.
using Column = Eigen::Array4f;

/// The mean of the matrices that a vertex follows, column by column: as a whole the compiler would keep it
/// in memory, which costs three times as much.
class Mean
{
public:
    Mean(const std::vector<Eigen::Matrix4f>& pose, const uint32_t* joints, const float* newWeights) :
        matrices{&pose[joints[0]], &pose[joints[1]], &pose[joints[2]], &pose[joints[3]]}, weights(newWeights)
    {
        static_assert(Skin::Influences == 4);
    }

    Column operator()(int column) const
    {
        return matrices[0]->col(column).array() * weights[0] + matrices[1]->col(column).array() * weights[1] +
               matrices[2]->col(column).array() * weights[2] + matrices[3]->col(column).array() * weights[3];
    }

private:
    const Eigen::Matrix4f* const matrices[4];
    const float* const weights;
};

void deformPositions(const Mesh& mesh, const Skin& skin, const std::vector<Eigen::Matrix4f>& pose,
                     Eigen::Vector3f* positions)
{
    for (size_t i = 0; i < mesh.positions.size(); ++i) {
        const Mean mean(pose, &skin.joints[i * Skin::Influences], &skin.weights[i * Skin::Influences]);
        const Eigen::Vector3f& from = mesh.positions[i];
        const Column to = mean(0) * from.x() + mean(1) * from.y() + mean(2) * from.z() + mean(3);
        positions[i] = to.matrix().head<3>();
    }
}

void deformNormals(const Mesh& mesh, const Skin& skin, const std::vector<Eigen::Matrix4f>& pose,
                   Eigen::Vector3f* normals)
{
    for (size_t i = 0; i < mesh.normals.size(); ++i) {
        const Mean mean(pose, &skin.joints[i * Skin::Influences], &skin.weights[i * Skin::Influences]);
        const Eigen::Vector3f& from = mesh.normals[i];
        const Column to = mean(0) * from.x() + mean(1) * from.y() + mean(2) * from.z();
        const float length = std::sqrt(to[0] * to[0] + to[1] * to[1] + to[2] * to[2]);
        const float factor = 1 / length;
        normals[i] = length > 0 ? Eigen::Vector3f(to[0] * factor, to[1] * factor, to[2] * factor) : from;
    }
}

/// What a matrix does to normals: its inverse transpose but for a factor, which exists for each matrix.
Eigen::Matrix4f turnOf(const Eigen::Matrix4f& matrix)
{
    const Eigen::Matrix3d linear = matrix.topLeftCorner<3, 3>().cast<double>();
    Eigen::Matrix3d cofactors;
    for (int i = 0; i < 3; ++i)
        cofactors.col(i) = linear.col((i + 1) % 3).cross(linear.col((i + 2) % 3));
    const double size = std::copysign(cofactors.norm(), linear.col(0).dot(cofactors.col(0)));
    Eigen::Matrix4f turn = Eigen::Matrix4f::Zero();
    if (size != 0)
        turn.topLeftCorner<3, 3>() = (cofactors / size).cast<float>();
    return turn;
}

} // namespace

bool fits(const Skin& skin, const Mesh& mesh)
{
    const size_t count = mesh.positions.size() * Skin::Influences;
    const auto isJoint = [&](uint32_t joint) { return joint <= skin.bones.size(); };
    const auto isWeight = [](float weight) { return weight >= 0 && weight <= 1; }; // NaN is not
    return skin.joints.size() == count && skin.weights.size() == count &&
           std::all_of(skin.joints.begin(), skin.joints.end(), isJoint) &&
           std::all_of(skin.weights.begin(), skin.weights.end(), isWeight);
}

void deform(const Mesh& mesh, const Skin& skin, const std::vector<Eigen::Matrix4f>& pose,
            Eigen::Vector3f* positions, Eigen::Vector3f* normals)
{
    deformPositions(mesh, skin, pose, positions);
    if (mesh.normals.empty())
        return;
    std::vector<Eigen::Matrix4f> turns(pose.size());
    std::transform(pose.begin(), pose.end(), turns.begin(), turnOf);
    deformNormals(mesh, skin, turns, normals);
}

} // namespace halvern::scene
