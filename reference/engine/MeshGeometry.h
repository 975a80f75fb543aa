#pragma once

#include "reference/scene/Mesh.h"

#include <osg/Geometry>

#include <Eigen/Geometry>

#include <memory>
#include <unordered_map>

namespace halvern::engine {

/// A scene mesh as OpenSceneGraph draws it, shared by all nodes that carry the mesh as it is.
class MeshGeometry : public osg::Geometry
{
public:
    explicit MeshGeometry(std::shared_ptr<const scene::Mesh> mesh);

    const std::shared_ptr<const scene::Mesh> mesh;
    const unsigned int features; ///< ShaderFeature bits that the mesh brings

    /// Round what is drawn; empty when there is nothing to show.
    const Eigen::AlignedBox3d& getBox() const { return box; }

    /// The vertices as they are drawn, as many as the mesh has; null when there is nothing to show.
    const Eigen::Vector3f* getPositions() const;

    unsigned int triangleCount() const;
    unsigned int vertexCount() const { return mesh->positions.size(); }

    osg::BoundingBox computeBoundingBox() const override;

protected:
    Eigen::AlignedBox3d box;
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
