#include "reference/engine/SkinnedGeometry.h"

#include <algorithm>

namespace halvern::engine {

static Eigen::Vector3f* elementsOf(osg::Array* array)
{
    return array ? reinterpret_cast<Eigen::Vector3f*>(&static_cast<osg::Vec3Array*>(array)->front())
                 : nullptr;
}

SkinnedGeometry::SkinnedGeometry(std::shared_ptr<const scene::Mesh> newMesh,
                                 std::shared_ptr<const scene::Skin> newSkin) :
    MeshGeometry(newMesh),
    skin(newSkin),
    drawn(newMesh->indices),
    pose(newSkin->bones.size() + 1, Eigen::Matrix4f::Identity())
{
    std::sort(drawn.begin(), drawn.end());
    drawn.erase(std::unique(drawn.begin(), drawn.end()), drawn.end());
    if (box.isEmpty())
        return;
    setDataVariance(osg::Object::DYNAMIC); // or the vertex array object would keep the first pose
    getVertexArray()->getVertexBufferObject()->setUsage(GL_DYNAMIC_DRAW);
}

void SkinnedGeometry::setBone(unsigned int bone, const Eigen::Matrix4f& matrix)
{
    if (!matrix.allFinite() || matrix == pose[bone])
        return;
    pose[bone] = matrix;
    moved = true;
}

bool SkinnedGeometry::update()
{
    if (!moved)
        return false;
    moved = false;
    Eigen::Vector3f* const positions = elementsOf(getVertexArray());
    scene::deform(*mesh, *skin, pose, positions, elementsOf(getNormalArray()));
    getVertexArray()->dirty();
    if (getNormalArray())
        getNormalArray()->dirty();
    Eigen::AlignedBox3f deformed;
    for (const uint32_t vertex : drawn)
        deformed.extend(positions[vertex]);
    const bool isUsable = deformed.min().allFinite() && deformed.max().allFinite();
    box = isUsable ? deformed.cast<double>() : Eigen::AlignedBox3d();
    dirtyBound();
    return true;
}

} // namespace halvern::engine
