#pragma once

#include "reference/scene/Importer.h"
#include "reference/scene/Mesh.h"
#include "reference/scene/import/FileFacts.h"
#include "reference/scene/import/ImportProgress.h"
#include "reference/scene/import/MaterialReader.h"
#include "reference/scene/import/UniqueNames.h"

#include <set>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

struct aiNode;
struct aiScene;
struct aiString;

namespace halvern::scene {

class CameraInstance;
class Material;
class BoneFinder;
class Node;
struct Skin;

/// Turns what Assimp read into a scene. Nothing that the file says is trusted: indices are checked, and
/// numbers that are not finite are left out.
class SceneBuilder
{
public:
    /// `bones` names the nodes that move skins: animations of them can be played but not edited.
    SceneBuilder(const aiScene& scene, const std::string& fileName, const std::set<std::string>& bones,
                 const ImportOptions& options, ImportProgress& progress, ImportedScene& result);

    void build();

private:
    void buildMaterials();
    void buildMeshes();
    boost::shared_ptr<Node> buildNodes();
    boost::shared_ptr<Node> buildNode(const aiNode& source);
    void addGeometries(const boost::shared_ptr<Node>& node, const aiNode& source);
    void buildSkins(const boost::shared_ptr<Node>& root);
    std::shared_ptr<const Skin> buildSkin(unsigned mesh, const Node& carrier, const BoneFinder& finder);
    void buildCameras();
    void buildLights();
    void buildAnimations();

    /// Returns the scene's root: the imported one, or a new one above it and what was added.
    boost::shared_ptr<Node> addDefaults(const boost::shared_ptr<Node>& imported);

    /// Empty, with a warning, when no node has the name.
    boost::shared_ptr<Node> findNode(const aiString& name, const char* what);

    const aiScene& scene;
    const std::string fileName;
    const FileFacts file;
    const std::set<std::string>& bones;
    const ImportOptions& options;
    ImportProgress& progress;
    ImportedScene& result;

    ImportIDs ids;
    std::vector<boost::shared_ptr<Material>> materials;
    std::vector<TextureCoordinates> textureCoordinates;                   // by material
    std::vector<std::shared_ptr<const Mesh>> meshes;                      // empty where nothing can be drawn
    std::unordered_map<std::string, boost::shared_ptr<Node>> nodesByName; // the first of each name
    std::vector<std::pair<boost::shared_ptr<Node>, std::vector<unsigned>>> skinned; // nodes and their meshes
    std::vector<boost::shared_ptr<CameraInstance>> cameras;
    bool hasLight = false;
};

} // namespace halvern::scene
