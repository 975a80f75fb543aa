#include "reference/scene/import/SkinReader.h"

#include <assimp/mesh.h>

#include <algorithm>
#include <utility>

namespace halvern::scene {

namespace {

Eigen::Affine3d toEigen(const aiMatrix4x4& m)
{
    Eigen::Affine3d result = Eigen::Affine3d::Identity();
    result.affine() << m.a1, m.a2, m.a3, m.a4, m.b1, m.b2, m.b3, m.b4, m.c1, m.c2, m.c3, m.c4;
    return result;
}

/// Enters an influence on a vertex among the strongest, which come first.
void enter(Skin& skin, size_t vertex, uint32_t joint, float weight)
{
    for (size_t i = vertex * Skin::Influences; i < (vertex + 1) * Skin::Influences; ++i) {
        if (weight > skin.weights[i]) {
            std::swap(weight, skin.weights[i]);
            std::swap(joint, skin.joints[i]);
        }
    }
}

/// Makes the weights of a vertex 1 together. What follows no bone follows the mesh's node.
void normalize(float* weights)
{
    double sum = 0;
    for (size_t i = 0; i < Skin::Influences; ++i)
        sum += weights[i];
    if (sum == 0)
        weights[0] = 1;
    for (size_t i = 0; i < Skin::Influences && sum > 0; ++i)
        weights[i] = static_cast<float>(weights[i] / sum);
}

} // namespace

std::shared_ptr<const Skin> readSkin(const aiMesh& source, const std::vector<boost::shared_ptr<Node>>& bones)
{
    std::vector<const aiBone*> used;
    auto skin = std::make_shared<Skin>();
    for (unsigned i = 0; i < source.mNumBones; ++i) {
        const aiBone& bone = *source.mBones[i];
        if (!bones[i] || bone.mNumWeights == 0)
            continue;
        used.push_back(&bone);
        skin->bones.push_back({bones[i], toEigen(bone.mOffsetMatrix)});
    }
    if (used.empty())
        return {};
    skin->joints.assign(source.mNumVertices * Skin::Influences, static_cast<uint32_t>(used.size()));
    skin->weights.assign(source.mNumVertices * Skin::Influences, 0.0f);
    for (uint32_t joint = 0; joint < used.size(); ++joint) {
        const aiBone& bone = *used[joint];
        for (unsigned i = 0; i < bone.mNumWeights; ++i)
            enter(*skin, bone.mWeights[i].mVertexId, joint, bone.mWeights[i].mWeight);
    }
    for (unsigned vertex = 0; vertex < source.mNumVertices; ++vertex)
        normalize(&skin->weights[vertex * Skin::Influences]);
    return skin;
}

} // namespace halvern::scene
