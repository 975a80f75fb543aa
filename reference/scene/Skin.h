#pragma once

#include "engine/Export.h"

#include <boost/weak_ptr.hpp>

#include <Eigen/Core>
#include <Eigen/Geometry>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace halvern::scene {

class Node;
struct Mesh;

/// How the vertices of a mesh follow other nodes, its bones. Never changed once it is on a node, so readers
/// on any thread share it.
struct Skin
{
    /// A node that vertices follow.
    struct Bone
    {
        boost::weak_ptr<const Node> node; ///< once it is gone its vertices stay where they are
        Eigen::Affine3d toBone; ///< coordinates of the mesh to those of the bone that they are bound to
    };

    static constexpr std::size_t Influences = 4; ///< of each vertex

    std::vector<Bone> bones; ///< each once, in any order

    /// Indices of bones, `Influences` for each vertex; one past the last bone is the mesh's own node.
    std::vector<uint32_t> joints;
    std::vector<float> weights; ///< one for each joint; those of a vertex make 1
};

/// Whether all arrays are as long, and all joints and weights as good, as the mesh needs.
HALVERN_SCENE_API bool fits(const Skin& skin, const Mesh& mesh);

/// Where a bone takes the mesh, in the coordinates of the mesh's node: what the mesh's node does itself has
/// no effect on a skin. Not finite where the mesh's node has none to go back to.
inline Eigen::Matrix4f poseOf(const Skin::Bone& bone, const Eigen::Affine3d& boneToWorld,
                              const Eigen::Affine3d& worldToMesh)
{
    return (worldToMesh * boneToWorld * bone.toBone).matrix().cast<float>();
}

/// Deforms the mesh: `pose` has the matrix of each bone, and the identity after them. The results are as
/// long as the mesh's arrays; normals have the length 1. Expects a skin that fits.
HALVERN_SCENE_API void deform(const Mesh& mesh, const Skin& skin, const std::vector<Eigen::Matrix4f>& pose,
                              Eigen::Vector3f* positions, Eigen::Vector3f* normals);

} // namespace halvern::scene
