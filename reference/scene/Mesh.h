#pragma once

#include "engine/Export.h"

#include <Eigen/Core>
#include <Eigen/Geometry>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace halvern::scene {

class Node;
struct Skin;

/// Triangles, lines or points in the coordinates of the node that carries them. Never changed once it is
/// on a node, so readers on any thread share it. Per-vertex arrays are either empty or as long as
/// `positions`; every index is smaller than that.
struct Mesh
{
    /// What each group of indices stands for.
    enum class Primitive {
        Points,   ///< each index
        Lines,    ///< every two indices
        Triangles ///< every three indices, anticlockwise seen from the front
    };

    std::string name;                           ///< for people
    Primitive primitive = Primitive::Triangles; ///< of the whole mesh
    std::vector<Eigen::Vector3f> positions;     ///< in the coordinates of the node
    std::vector<Eigen::Vector3f> normals;       ///< of length 1; without them surfaces are drawn flat
    std::vector<Eigen::Vector2f> texCoords;     ///< (0, 0) is the first row, first column of an Image
    std::vector<Eigen::Vector4f> colors;        ///< RGBA, 0 to 1, colour in sRGB
    std::vector<uint32_t> indices;              ///< 1, 2 or 3 for each primitive
    Eigen::AlignedBox3f bounds;                 ///< of the positions; whoever makes a mesh sets it
};

/** @{ */
/// The geometries of a node, in the order of their indices ("first" of Node::setMaterial). The material
/// of geometry i is that of (i, 0). Skin i, if there is one, deforms geometry i; one that does not fit the
/// mesh has no effect. Any thread.
HALVERN_SCENE_API void setGeometries(Node& node, std::vector<std::shared_ptr<const Mesh>> geometries,
                                     std::vector<std::shared_ptr<const Skin>> skins = {});
HALVERN_SCENE_API std::vector<std::shared_ptr<const Mesh>> getGeometries(const Node& node);
/** @} */

/// Empty, or as long as the geometries, with empty pointers where there is none.
HALVERN_SCENE_API std::vector<std::shared_ptr<const Skin>> getSkins(const Node& node);

} // namespace halvern::scene
