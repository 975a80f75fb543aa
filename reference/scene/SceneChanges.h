#pragma once

#include "engine/Export.h"

#include <memory>
#include <string>
#include <vector>

namespace halvern::scene {

class Material;
class Node;
class SceneManager;

/// Collects what changed in a scene since it was last asked, so that a reader of 100,000 nodes of which
/// none changed has nothing to do. Bounded by the number of nodes, however often they change.
class HALVERN_SCENE_API SceneChanges
{
public:
    /// What changed of a node.
    enum NodeChange : unsigned {
        Transform = 1,
        Layers = 2, ///< the visible flag too
        Children = 4,
        Materials = 8,
        Geometries = 16,
        Instances = 32, ///< lights or cameras were added
        Entered = 64 ///< came, or came back, into the scene with all below it: what was known of them is old
    };
    /// What changed of the scene. Root stands for every node below the new root too.
    enum SceneChange : unsigned {
        Root = 1,
        LightValues = 2,
        CameraValues = 4,
        MaterialValues = 8,
        CameraList = 16,
        MaterialList = 32,
        AnimationList = 64
    };
    struct NodeEntry
    {
        const Node* node; ///< names the node; it may be gone: look it up, do not follow it
        std::string id;
        unsigned changes; ///< NodeChange bits
    };
    struct Batch
    {
        unsigned scene = 0; ///< SceneChange bits
        std::vector<NodeEntry> nodes;
        bool empty() const { return scene == 0 && nodes.empty(); }
    };

    virtual ~SceneChanges();

    /// Takes what was collected. Any thread; an empty batch costs one atomic read.
    virtual Batch take() = 0;
};

/// A new reader of the scene's changes; it collects from now on, until it is destroyed.
HALVERN_SCENE_API std::shared_ptr<SceneChanges> readChanges(SceneManager& sceneManager);

/// Marks MaterialValues in all scenes that the material is in, for values that are kept outside of it. Any
/// thread.
HALVERN_SCENE_API void markMaterialChanged(const Material& material);

} // namespace halvern::scene
