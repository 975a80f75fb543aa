#include "reference/scene/import/SceneBuilder.h"

#include "engine/scene/CameraInstance.h"
#include "engine/scene/Material.h"
#include "engine/scene/Node.h"
#include "engine/scene/SceneManager.h"
#include "reference/scene/import/AnimationReader.h"
#include "reference/scene/import/BoneFinder.h"
#include "reference/scene/import/CameraReader.h"
#include "reference/scene/import/Conversions.h"
#include "reference/scene/import/DefaultView.h"
#include "reference/scene/import/LightReader.h"
#include "reference/scene/import/MeshReader.h"
#include "reference/scene/import/SkinReader.h"
#include "reference/scene/import/TextureLoader.h"

#include <assimp/commonMetaData.h>
#include <assimp/scene.h>

#include <boost/make_shared.hpp>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <sstream>

namespace halvern::scene {

namespace fs = std::filesystem;

static FileFacts factsOf(const aiScene& scene)
{
    FileFacts file;
    aiString format;
    if (scene.mMetaData && scene.mMetaData->Get(AI_METADATA_SOURCE_FORMAT, format))
        file.format = format.C_Str();
    if (!file.isCollada() || !scene.mRootNode)
        return file;
    // Only this importer makes the unit a scale of the root.
    const float unit = std::cbrt(std::abs(scene.mRootNode->mTransformation.Determinant()));
    if (std::isfinite(unit) && unit > 0)
        file.unit = unit;
    return file;
}

SceneBuilder::SceneBuilder(const aiScene& newScene, const std::string& newFileName,
                           const std::set<std::string>& newBones, const ImportOptions& newOptions,
                           ImportProgress& newProgress, ImportedScene& newResult) :
    scene(newScene),
    fileName(newFileName),
    file(factsOf(newScene)),
    bones(newBones),
    options(newOptions),
    progress(newProgress),
    result(newResult)
{}

void SceneBuilder::build()
{
    result.sceneManager = boost::make_shared<SceneManager>(nullptr);
    result.sceneManager->setSceneName(fs::path(fileName).stem().string());
    buildMaterials();
    buildMeshes();
    const auto root = buildNodes();
    buildSkins(root);
    buildCameras();
    buildLights();
    buildAnimations();
    result.sceneManager->setRoot(addDefaults(root));
    for (const auto& camera : cameras)
        result.sceneManager->addCameraInstance(camera);
    progress.advance(1);
}

void SceneBuilder::buildMaterials()
{
    TextureLoader textures(scene, fileName, options, result.warnings);
    for (unsigned i = 0; i < scene.mNumMaterials; ++i) {
        const aiMaterial& source = *scene.mMaterials[i];
        auto values = std::make_shared<StandardMaterial>(readMaterial(source, textures));
        const auto material =
            boost::make_shared<Material>(ids.materials.make(values->name, "material"), StandardEffectID);
        setStandardMaterial(*material, std::move(values));
        result.sceneManager->addMaterial(material);
        materials.push_back(material);
        textureCoordinates.push_back(readTextureCoordinates(source));
        progress.advanceWithin(ImportProgress::Processed, ImportProgress::Materials, i + 1,
                               scene.mNumMaterials);
    }
    result.counts.materials = scene.mNumMaterials;
}

void SceneBuilder::buildMeshes()
{
    for (unsigned i = 0; i < scene.mNumMeshes; ++i) {
        const aiMesh& source = *scene.mMeshes[i];
        const bool hasMaterial = source.mMaterialIndex < materials.size();
        meshes.push_back(
            readMesh(source, hasMaterial ? textureCoordinates[source.mMaterialIndex] : TextureCoordinates()));
        progress.advanceWithin(ImportProgress::Materials, 1, i + 1, scene.mNumMeshes);
    }
}

boost::shared_ptr<Node> SceneBuilder::buildNodes()
{
    if (!scene.mRootNode)
        return boost::make_shared<Node>(ids.nodes.make("", "node"), "");
    boost::shared_ptr<Node> root;
    // Depth first, so that of several nodes with one name the same is the first as for Assimp.
    std::vector<std::pair<const aiNode*, boost::shared_ptr<Node>>> pending{{scene.mRootNode, nullptr}};
    while (!pending.empty()) {
        const auto [source, parent] = pending.back();
        pending.pop_back();
        const auto node = buildNode(*source);
        if (parent)
            parent->addChildNode(node);
        else
            root = node;
        for (unsigned i = source->mNumChildren; i-- > 0;)
            pending.emplace_back(source->mChildren[i], node);
    }
    return root;
}

boost::shared_ptr<Node> SceneBuilder::buildNode(const aiNode& source)
{
    const std::string name = source.mName.C_Str();
    const auto node = boost::make_shared<Node>(ids.nodes.make(name, "node"), name);
    nodesByName.try_emplace(name, node);

    const Transform transform = decompose(source.mTransformation);
    Eigen::Affine3f rotation(Eigen::Affine3f::Identity());
    rotation.linear() = transform.rotation;
    node->setTranslation(Eigen::Translation3f(transform.translation));
    node->setRotation(rotation);
    node->setScale(transform.scale);

    aiString layers;
    if (source.mMetaData && source.mMetaData->Get("layers", layers)) {
        std::istringstream words(layers.C_Str());
        for (std::string layer; words >> layer;)
            node->addToLayer(layer);
    }
    addGeometries(node, source);
    return node;
}

void SceneBuilder::addGeometries(const boost::shared_ptr<Node>& node, const aiNode& source)
{
    std::vector<std::shared_ptr<const Mesh>> geometries;
    std::vector<unsigned> indices;
    for (unsigned i = 0; i < source.mNumMeshes; ++i) {
        const unsigned index = source.mMeshes[i];
        if (index >= meshes.size() || !meshes[index])
            continue;
        const unsigned material = scene.mMeshes[index]->mMaterialIndex;
        if (material < materials.size())
            node->setMaterial(materials[material], static_cast<unsigned>(geometries.size()), 0);
        geometries.push_back(meshes[index]);
        indices.push_back(index);
        result.counts.vertices += meshes[index]->positions.size();
        if (meshes[index]->primitive == Mesh::Primitive::Triangles)
            result.counts.triangles += meshes[index]->indices.size() / 3;
    }
    const auto hasBones = [this](unsigned index) { return scene.mMeshes[index]->mNumBones > 0; };
    if (std::any_of(indices.begin(), indices.end(), hasBones))
        skinned.emplace_back(node, std::move(indices));
    if (!geometries.empty())
        setGeometries(*node, std::move(geometries));
}

void SceneBuilder::buildSkins(const boost::shared_ptr<Node>& root)
{
    if (skinned.empty())
        return;
    const BoneFinder finder(root, bones);
    for (const auto& [node, indices] : skinned) {
        std::vector<std::shared_ptr<const Skin>> skins;
        for (const unsigned mesh : indices)
            skins.push_back(buildSkin(mesh, *node, finder));
        setGeometries(*node, getGeometries(*node), std::move(skins));
    }
}

std::shared_ptr<const Skin> SceneBuilder::buildSkin(unsigned mesh, const Node& carrier,
                                                    const BoneFinder& finder)
{
    const aiMesh& source = *scene.mMeshes[mesh];
    std::vector<boost::shared_ptr<Node>> nodes;
    std::string missing;
    for (unsigned i = 0; i < source.mNumBones; ++i) {
        const std::string name = source.mBones[i]->mName.C_Str();
        nodes.push_back(finder.find(name, carrier));
        if (!nodes.back())
            missing += (missing.empty() ? "" : ", ") + name;
    }
    if (!missing.empty())
        result.warnings.push_back("mesh " + meshes[mesh]->name + ": no node carries its bones " + missing);
    return readSkin(source, nodes);
}

boost::shared_ptr<Node> SceneBuilder::findNode(const aiString& name, const char* what)
{
    const auto found = nodesByName.find(name.C_Str());
    if (found != nodesByName.end())
        return found->second;
    result.warnings.push_back(std::string(what) + " " + name.C_Str() + ": no node carries it");
    return {};
}

void SceneBuilder::buildCameras()
{
    for (unsigned i = 0; i < scene.mNumCameras; ++i) {
        const aiCamera& source = *scene.mCameras[i];
        const auto node = findNode(source.mName, "camera");
        if (!node)
            continue;
        const std::string name = source.mName.C_Str();
        const auto camera = readCamera(source, file, *node, ids.cameras.make(name, "camera"));
        node->addInstanceCamera(camera);
        cameras.push_back(
            boost::make_shared<CameraInstance>(ids.cameraInstances.make(name, "camera"), node, camera));
    }
}

void SceneBuilder::buildLights()
{
    for (unsigned i = 0; i < scene.mNumLights; ++i) {
        const aiLight& source = *scene.mLights[i];
        const auto node = findNode(source.mName, "light");
        if (!node)
            continue;
        const auto light = readLight(source, file, *node, ids.lights.make(source.mName.C_Str(), "light"));
        if (!light) {
            result.warnings.push_back("light " + std::string(source.mName.C_Str()) +
                                      ": ambient light is not shown");
            continue;
        }
        node->addInstanceLight(light);
        hasLight = true;
    }
}

void SceneBuilder::buildAnimations()
{
    const auto nodeID = [this](const std::string& name) {
        const auto found = nodesByName.find(name);
        return found != nodesByName.end() ? found->second->getID() : std::string();
    };
    for (unsigned i = 0; i < scene.mNumAnimations; ++i) {
        const aiAnimation& source = *scene.mAnimations[i];
        const std::string id = ids.animations.make(source.mName.C_Str(), "animation");
        result.sceneManager->addAnimation(readAnimation(source, id, nodeID, bones));
    }
}

boost::shared_ptr<Node> SceneBuilder::addDefaults(const boost::shared_ptr<Node>& imported)
{
    const Eigen::AlignedBox3d bounds = boundsOf(imported);
    const bool needsCamera = !isSeen(bounds, cameras, imported);
    if (!needsCamera && hasLight)
        return imported;
    const std::string name = result.sceneManager->getSceneName();
    const auto root = boost::make_shared<Node>(ids.nodes.make(name, "scene"), name);
    root->addChildNode(imported);
    if (needsCamera)
        cameras.insert(cameras.begin(), addDefaultCamera(*root, bounds, ids));
    if (!hasLight)
        addDefaultLights(*root, bounds, ids);
    return root;
}

} // namespace halvern::scene
