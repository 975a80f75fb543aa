#include "reference/scene/import/SceneRepair.h"

#include "reference/scene/import/CreaseNormals.h"

#include <assimp/mesh.h>
#include <assimp/scene.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <unordered_set>
#include <utility>

namespace halvern::scene {

namespace {

/// Beyond this the square of a length is no number any more.
constexpr ai_real LargestCoordinate = 1e18f;

bool isUsable(const aiVector3D& position)
{
    const auto isGood = [](ai_real value) { return std::abs(value) <= LargestCoordinate; }; // NaN is not
    return isGood(position.x) && isGood(position.y) && isGood(position.z);
}

bool isUsable(const aiMesh& mesh, const aiFace& face)
{
    if (face.mNumIndices == 0 || !face.mIndices)
        return false;
    for (unsigned i = 0; i < face.mNumIndices; ++i) {
        if (face.mIndices[i] >= mesh.mNumVertices || !isUsable(mesh.mVertices[face.mIndices[i]]))
            return false;
    }
    return true;
}

/// Returns how many faces were dropped.
unsigned dropBadFaces(aiMesh& mesh)
{
    if (!mesh.mVertices)
        mesh.mNumVertices = 0;
    if (!mesh.mFaces)
        mesh.mNumFaces = 0;
    unsigned kept = 0;
    for (unsigned i = 0; i < mesh.mNumFaces; ++i) {
        if (!isUsable(mesh, mesh.mFaces[i]))
            continue;
        // A swap: the mesh frees all the faces that it once had.
        std::swap(mesh.mFaces[kept].mIndices, mesh.mFaces[i].mIndices);
        std::swap(mesh.mFaces[kept].mNumIndices, mesh.mFaces[i].mNumIndices);
        ++kept;
    }
    for (unsigned i = 0; i < mesh.mNumVertices; ++i) {
        if (!isUsable(mesh.mVertices[i]))
            mesh.mVertices[i] = aiVector3D();
    }
    return std::exchange(mesh.mNumFaces, kept) - kept;
}

unsigned primitiveType(const aiFace& face)
{
    switch (face.mNumIndices) {
    case 1:
        return aiPrimitiveType_POINT;
    case 2:
        return aiPrimitiveType_LINE;
    case 3:
        return aiPrimitiveType_TRIANGLE;
    default:
        return aiPrimitiveType_POLYGON;
    }
}

/// What the faces that are left are. A cloud of points has none; another mesh without any shows nothing.
void setPrimitiveTypes(aiMesh& mesh)
{
    unsigned types = 0;
    for (unsigned i = 0; i < mesh.mNumFaces; ++i)
        types |= primitiveType(mesh.mFaces[i]);
    if (types != 0)
        mesh.mPrimitiveTypes = types;
    else if (mesh.mPrimitiveTypes != aiPrimitiveType_POINT)
        mesh.mPrimitiveTypes = aiPrimitiveType_TRIANGLE;
}

template <class Object>
void dropAll(Object**& objects, unsigned& count)
{
    for (unsigned i = 0; objects && i < count; ++i)
        delete objects[i];
    delete[] objects;
    objects = nullptr;
    count = 0;
}

bool isUsable(const aiMatrix4x4& matrix)
{
    const auto isGood = [](ai_real value) { return std::abs(value) <= LargestCoordinate; };
    return std::all_of(&matrix.a1, &matrix.a1 + 16, isGood);
}

/// Returns how many weights were dropped. Those of 0 say nothing and go too.
unsigned dropBadWeights(aiBone& bone, unsigned vertices)
{
    if (!bone.mWeights)
        bone.mNumWeights = 0;
    unsigned kept = 0;
    unsigned dropped = 0;
    for (unsigned i = 0; i < bone.mNumWeights; ++i) {
        const aiVertexWeight weight = bone.mWeights[i];
        if (weight.mVertexId < vertices && weight.mWeight > 0 && std::isfinite(weight.mWeight))
            bone.mWeights[kept++] = weight;
        else if (weight.mVertexId >= vertices || weight.mWeight != 0)
            ++dropped;
    }
    bone.mNumWeights = kept;
    return dropped;
}

void repairBones(aiMesh& mesh, std::vector<std::string>& warnings)
{
    if (!mesh.mBones)
        mesh.mNumBones = 0;
    const auto isBad = [](aiBone* bone) {
        if (bone && isUsable(bone->mOffsetMatrix))
            return false;
        delete bone;
        return true;
    };
    aiBone** const end = std::remove_if(mesh.mBones, mesh.mBones + mesh.mNumBones, isBad);
    const auto count = static_cast<unsigned>(end - mesh.mBones);
    const unsigned droppedBones = std::exchange(mesh.mNumBones, count) - count;
    unsigned droppedWeights = 0;
    std::for_each(mesh.mBones, end,
                  [&](aiBone* bone) { droppedWeights += dropBadWeights(*bone, mesh.mNumVertices); });
    const std::string name = "mesh " + std::string(mesh.mName.C_Str()) + ": ";
    if (droppedBones > 0)
        warnings.push_back(name + std::to_string(droppedBones) + " bones are invalid and left out");
    if (droppedWeights > 0)
        warnings.push_back(name + std::to_string(droppedWeights) +
                           " weights of bones are invalid and left out");
}

/// Hangs children that name one of their brothers as their parent below it: an importer puts all bones of a
/// skeleton side by side, and only their notes tell how they hang together.
void hangBelowBrothers(aiNode& node)
{
    aiNode** const begin = node.mChildren;
    aiNode** const end = begin + node.mNumChildren;
    if (std::all_of(begin, end, [&](const aiNode* child) { return child->mParent == &node; }))
        return;
    const std::unordered_set<const aiNode*> brothers(begin, end);
    const auto hangsBelow = [&](const aiNode* child) {
        const aiNode* top = child;
        for (unsigned steps = 0; brothers.count(top->mParent) > 0; top = top->mParent) {
            if (++steps > node.mNumChildren)
                return false; // a circle
        }
        return top != child;
    };
    aiNode** const moved = std::stable_partition(begin, end, std::not_fn(hangsBelow));
    for (aiNode** child = moved; child != end; ++child)
        (*child)->mParent->addChildren(1, child);
    node.mNumChildren = static_cast<unsigned>(moved - begin);
}

/// Closes the gaps in the tree, and drops mesh indices out of range.
void repairNodes(aiScene& scene)
{
    std::vector<aiNode*> pending;
    if (scene.mRootNode)
        pending.push_back(scene.mRootNode);
    while (!pending.empty()) {
        aiNode& node = *pending.back();
        pending.pop_back();
        aiNode** const childrenEnd = std::remove(node.mChildren, node.mChildren + node.mNumChildren, nullptr);
        node.mNumChildren = static_cast<unsigned>(childrenEnd - node.mChildren);
        unsigned* const meshesEnd = std::remove_if(node.mMeshes, node.mMeshes + node.mNumMeshes,
                                                   [&](unsigned mesh) { return mesh >= scene.mNumMeshes; });
        node.mNumMeshes = static_cast<unsigned>(meshesEnd - node.mMeshes);
        hangBelowBrothers(node);
        pending.insert(pending.end(), node.mChildren, node.mChildren + node.mNumChildren);
    }
}

} // namespace

void repairScene(aiScene& scene, std::vector<std::string>& warnings)
{
    repairNodes(scene);
    for (unsigned i = 0; i < scene.mNumMeshes; ++i) {
        aiMesh& mesh = *scene.mMeshes[i];
        dropAll(mesh.mAnimMeshes, mesh.mNumAnimMeshes);
        if (mesh.mMaterialIndex >= scene.mNumMaterials)
            mesh.mMaterialIndex = 0;
        if (const unsigned dropped = dropBadFaces(mesh))
            warnings.push_back("mesh " + std::string(mesh.mName.C_Str()) + ": " + std::to_string(dropped) +
                               " faces are invalid and left out");
        repairBones(mesh, warnings);
        setPrimitiveTypes(mesh);
        makeCreaseNormals(mesh);
    }
}

} // namespace halvern::scene
