#pragma once

#include "reference/scene/Mesh.h"

#include <osg/Geometry>

#include <Eigen/Geometry>

#include <memory>
#include <unordered_map>

namespace halvern::engine {

/// A scene mesh as OpenSceneGraph draws it, shared by all nodes that carry the mesh.
class MeshGeometry : public osg::Geometry
{
public:
    explicit MeshGeometry(std::shared_ptr<const scene::Mesh> mesh);

    const std::shared_ptr<const scene::Mesh> mesh;
    const Eigen::AlignedBox3d box; ///< empty for a mesh that has nothing to show
    const unsigned int features;   ///< ShaderFeature bits that the mesh brings

    unsigned int triangleCount() const;
    unsigned int vertexCount() const { return mesh->positions.size(); }

    osg::BoundingBox computeBoundingBox() const override;
};

/// The geometries in use, one for each mesh.
class GeometryCache
{
public:
    MeshGeometry* get(const std::shared_ptr<const scene::Mesh>& mesh);

    /// Drops what nobody else holds.
    void sweep();

private:
    std::unordered_map<const scene::Mesh*, osg::ref_ptr<MeshGeometry>> geometries;
};

} // namespace halvern::engine
