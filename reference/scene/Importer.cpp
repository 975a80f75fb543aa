#include "reference/scene/Importer.h"

#include "engine/scene/SceneManager.h"
#include "reference/scene/import/CreaseNormals.h"
#include "reference/scene/import/DeepStack.h"
#include "reference/scene/import/FileCheck.h"
#include "reference/scene/import/ImportProgress.h"
#include "reference/scene/import/SceneBuilder.h"
#include "reference/scene/import/SceneRepair.h"

#include <assimp/Importer.hpp>
#include <assimp/config.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>

#include <set>
#include <sstream>

namespace halvern::scene {

namespace {

constexpr unsigned PostProcessing = aiProcess_Triangulate | aiProcess_SortByPType |
                                    aiProcess_GenSmoothNormals | aiProcess_RemoveRedundantMaterials;

unsigned countNodes(const aiNode* root)
{
    unsigned count = 0;
    std::vector<const aiNode*> pending;
    if (root)
        pending.push_back(root);
    while (!pending.empty()) {
        const aiNode* node = pending.back();
        pending.pop_back();
        ++count;
        pending.insert(pending.end(), node->mChildren, node->mChildren + node->mNumChildren);
    }
    return count;
}

std::set<std::string> namesOfBones(const aiScene& scene)
{
    std::set<std::string> names;
    for (unsigned i = 0; i < scene.mNumMeshes; ++i) {
        const aiMesh& mesh = *scene.mMeshes[i];
        for (unsigned bone = 0; bone < mesh.mNumBones; ++bone)
            names.insert(mesh.mBones[bone]->mName.C_Str());
    }
    return names;
}

/// Assimp may quote all that is left of a file.
std::string shorten(std::string reason)
{
    constexpr size_t Longest = 300;
    if (reason.size() <= Longest)
        return reason;
    size_t end = Longest;
    while (end > 0 && (reason[end] & 0xC0) == 0x80) // not inside of a letter
        --end;
    return reason.substr(0, end) + "...";
}

/// Throws unless Assimp has a scene.
void check(const Assimp::Importer& importer, const ImportProgress& progress, const std::string& fileName)
{
    progress.throwIfCancelled();
    if (importer.GetScene())
        return;
    const std::string reason = importer.GetErrorString();
    throw ImportError(fileName + ": " + (reason.empty() ? "cannot be read" : shorten(reason)));
}

ImportedScene read(const std::string& fileName, const ImportOptions& options)
{
    ImportedScene result;
    Assimp::Importer importer;
    auto* progress = new ImportProgress(fileName, options.progress);
    importer.SetProgressHandler(progress); // which owns it from now on
    importer.SetPropertyFloat(AI_CONFIG_PP_GSN_MAX_SMOOTHING_ANGLE, SmoothingAngle);

    importer.ReadFile(fileName, 0);
    check(importer, *progress, fileName);
    const aiScene& scene = *importer.GetScene();
    const std::set<std::string> bones = namesOfBones(scene);

    // The importer hands its scene out for reading only, but its own steps trust every index.
    repairScene(const_cast<aiScene&>(scene), result.warnings);
    result.counts.nodes = countNodes(scene.mRootNode);
    result.counts.meshes = scene.mNumMeshes;
    result.counts.cameras = scene.mNumCameras;
    result.counts.lights = scene.mNumLights;
    result.counts.animations = scene.mNumAnimations;
    if (scene.mNumMeshes > 0) {
        // Without any mesh Assimp calls it an error that no material is used.
        importer.ApplyPostProcessing(PostProcessing);
        check(importer, *progress, fileName);
    }
    SceneBuilder(*importer.GetScene(), fileName, bones, options, *progress, result).build();
    return result;
}

} // namespace

ImportedScene importScene(const std::string& fileName, const ImportOptions& options)
{
    checkFile(fileName);
    ImportedScene result;
    runOnDeepStack([&] { result = read(fileName, options); });
    return result;
}

std::vector<std::string> importExtensions()
{
    std::string list;
    Assimp::Importer().GetExtensionList(list); // "*.3d;*.3ds;..."
    std::set<std::string> extensions;
    std::istringstream pieces(list);
    for (std::string piece; std::getline(pieces, piece, ';');)
        extensions.insert(piece.substr(piece.rfind('.') + 1));
    return {extensions.begin(), extensions.end()};
}

} // namespace halvern::scene
