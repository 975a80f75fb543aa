#pragma once

#include "reference/engine/MaterialStates.h"
#include "reference/engine/MeshGeometry.h"
#include "reference/engine/SkinnedGeometry.h"

#include <boost/shared_ptr.hpp>

#include <Eigen/Geometry>

#include <memory>
#include <unordered_map>
#include <vector>

namespace halvern::scene {
class Light;
class Node;
class SceneChanges;
class SceneManager;
} // namespace halvern::scene

namespace halvern::engine {

/// What layers and the visible flag make of a node and of everything below it.
namespace NodeFlag {
enum : unsigned int { Hidden = 1, CastsShadow = 2, SeeThrough = 4, PostRender = 8 };
}

/// The scene as the renderer uses it: the graph as a list in depth-first pre-order, and lists of what is
/// drawn. Follows a scene manager's changes; what did not change costs nothing. GUI thread, no OpenGL.
class SceneMirror
{
public:
    /// A place in the graph. A node below two parents has two.
    struct Entry
    {
        const scene::Node* node;
        int parent;                   ///< -1 for the root
        int end;                      ///< the entries below this one end before it
        int nextOfNode;               ///< the next place of the same node, or -1
        unsigned int flags;           ///< NodeFlag bits, those of the parents included
        int firstSurface, endSurface; ///< its own
        unsigned int moved;           ///< which of the mirror's moves placed it last
        Eigen::Affine3d local;
        Eigen::Affine3d world;
    };

    /// A geometry at a place in the graph, visible and with something to show.
    struct Surface
    {
        MeshGeometry* geometry;
        const MaterialState* look;
        unsigned int features; ///< ShaderFeature bits
        unsigned int index;    ///< of the geometry in its node
        int entry;
        bool castsShadow;
        bool postRender;
        Eigen::AlignedBox3d bounds; ///< in the world; empty if the transform is no usable one
    };

    /// A light at a visible place.
    struct LightPlace
    {
        boost::shared_ptr<scene::Light> light;
        int entry;
    };

    explicit SceneMirror(boost::shared_ptr<scene::SceneManager> sceneManager);
    ~SceneMirror();

    /// Takes over what changed.
    void update();

    const std::vector<Entry>& getEntries() const { return entries; }
    const std::vector<Surface>& getSurfaces() const { return surfaces; }
    const std::vector<LightPlace>& getLights() const { return lights; }

    /// A place of a node, or -1.
    int findEntry(const scene::Node* node) const;

    /// Transform of a node to the world; of one that is not in the graph, its own.
    Eigen::Affine3d getWorld(const scene::Node& node) const;

    /// Of all surfaces, in the world.
    const Eigen::AlignedBox3d& getBounds() const;

    /// Of the surfaces at and below a place.
    Eigen::AlignedBox3d getBounds(int entry) const;

    /// The surfaces at and below a place end before this one; they begin with the place's first.
    int endSurface(int entry) const { return entries[entries[entry].end - 1].endSurface; }

    /// Of the surfaces that cast shadows.
    const Eigen::AlignedBox3d& getCasterBounds() const;

    /// Changes whenever a surface that casts shadows appears, moves or goes.
    unsigned int getCasterVersion() const { return casterVersion; }

private:
    struct Record;

    /// A surface that bones deform.
    struct SkinnedSurface
    {
        int surface;
        SkinnedGeometry* geometry;
        std::vector<int> bones; ///< their places; -1 for one that is not in the graph
    };

    Record* adopt(const boost::shared_ptr<scene::Node>& node);
    void read(Record& record, unsigned int changes);
    void readChildren(Record& record);
    void readSurfaces(Record& record);
    void readUnread();
    void readRoot();
    void flatten();
    void enter(Record& record, int parent);
    void addSurfaces(Record& record, int entry);
    void dropUnreached();
    void move(std::vector<int> moved);
    void place(Entry& entry);
    SkinnedGeometry* addSkinned(std::vector<osg::ref_ptr<SkinnedGeometry>>& skinned, unsigned int place);
    void findBones();
    int findBone(const scene::Node* node, int entry) const;
    void followBones();
    void placeSurface(Surface& surface);

    const boost::shared_ptr<scene::SceneManager> sceneManager;
    const std::shared_ptr<scene::SceneChanges> changes;
    GeometryCache geometries;
    MaterialStates materials;

    std::unordered_map<const scene::Node*, std::unique_ptr<Record>> records;
    std::vector<Record*> unread; // to be read wholly, with all that is below them
    Record* root = nullptr;

    std::vector<Entry> entries;
    std::vector<Surface> surfaces;
    std::vector<LightPlace> lights;
    std::vector<SkinnedSurface> skinnedSurfaces;
    unsigned int generation = 0;
    unsigned int moves = 0;
    unsigned int casterVersion = 0;

    // Found when they are asked for.
    void findBounds() const;
    mutable bool boundsKnown = false;
    mutable Eigen::AlignedBox3d bounds;
    mutable Eigen::AlignedBox3d casterBounds;
};

} // namespace halvern::engine
