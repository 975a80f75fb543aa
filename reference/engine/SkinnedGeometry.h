#pragma once

#include "reference/engine/MeshGeometry.h"
#include "reference/scene/Skin.h"

#include <vector>

namespace halvern::engine {

/// A scene mesh as its bones deform it at one place in the graph.
class SkinnedGeometry : public MeshGeometry
{
public:
    /// Expects a skin that fits the mesh.
    SkinnedGeometry(std::shared_ptr<const scene::Mesh> mesh, std::shared_ptr<const scene::Skin> skin);

    const std::shared_ptr<const scene::Skin> skin;

    /// The matrix of a bone, in the coordinates of the mesh's node. One that is not finite is passed over.
    void setBone(unsigned int bone, const Eigen::Matrix4f& matrix);

    /// Follows the bones; whether any of them moved since the last time. Expects something to show.
    bool update();

private:
    std::vector<uint32_t> drawn; // the vertices that are
    std::vector<Eigen::Matrix4f> pose;
    bool moved = true;
};

} // namespace halvern::engine
