#include "reference/scene/import/SceneRepair.h"

#include "reference/scene/import/CreaseNormals.h"

#include <assimp/mesh.h>
#include <assimp/scene.h>

#include <algorithm>
#include <cmath>
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

/// Closes the gaps in the tree and drops mesh indices out of range.
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
        pending.insert(pending.end(), node.mChildren, childrenEnd);
    }
}

} // namespace

void repairScene(aiScene& scene, std::vector<std::string>& warnings)
{
    repairNodes(scene);
    for (unsigned i = 0; i < scene.mNumMeshes; ++i) {
        aiMesh& mesh = *scene.mMeshes[i];
        dropAll(mesh.mBones, mesh.mNumBones);
        dropAll(mesh.mAnimMeshes, mesh.mNumAnimMeshes);
        if (mesh.mMaterialIndex >= scene.mNumMaterials)
            mesh.mMaterialIndex = 0;
        if (const unsigned dropped = dropBadFaces(mesh))
            warnings.push_back("mesh " + std::string(mesh.mName.C_Str()) + ": " + std::to_string(dropped) +
                               " faces are invalid and left out");
        setPrimitiveTypes(mesh);
        makeCreaseNormals(mesh);
    }
}

} // namespace halvern::scene
