#include "reference/engine/SceneMirror.h"

#include "engine/scene/Light.h"
#include "engine/scene/Material.h"
#include "engine/scene/Node.h"
#include "engine/scene/SceneManager.h"
#include "reference/engine/fx/EffectLibrary.h"
#include "reference/scene/SceneChanges.h"

#include <algorithm>

namespace halvern::engine {

using scene::Node;
using scene::SceneChanges;

/// A node that is in the graph, as it was last read.
struct SceneMirror::Record
{
    struct Geometry
    {
        osg::ref_ptr<MeshGeometry> geometry;
        boost::shared_ptr<scene::Material> material;
        unsigned int index;
        std::vector<osg::ref_ptr<SkinnedGeometry>>
            skinned; // with a skin, by place; the first is the geometry
    };

    boost::shared_ptr<Node> node;
    Eigen::Affine3d local = Eigen::Affine3d::Identity();
    unsigned int flags = 0;
    std::vector<Record*> children;
    std::vector<Geometry> geometries;
    std::vector<boost::shared_ptr<scene::Light>> lights;
    int entry = -1;           // a place; the others follow by Entry::nextOfNode
    unsigned int places = 0;  // how many there are, while they are entered
    unsigned int reached = 0; // the last generation in which the node was in the graph
    unsigned int read = 0;    // the generation that all of it was last read for
};

namespace {

constexpr unsigned int everything = ~0u;

Eigen::Affine3d readTransform(const Node& node)
{
    const Eigen::Affine3f local = node.getTranslation() * Eigen::Affine3f(node.getRotation()) *
                                  Eigen::Scaling(Eigen::Vector3f(node.getScale()));
    return local.cast<double>();
}

unsigned int readFlags(const Node& node)
{
    unsigned int flags = 0;
    if (!node.isVisible() || node.inLayer("hidden"))
        flags |= NodeFlag::Hidden;
    if (node.inLayer("cast_shadow"))
        flags |= NodeFlag::CastsShadow;
    if (node.inLayer("transparent"))
        flags |= NodeFlag::SeeThrough;
    if (node.inLayer("post_render"))
        flags |= NodeFlag::PostRender;
    return flags;
}

/// The box around a transformed box; empty where the numbers are none to draw with.
Eigen::AlignedBox3d transformed(const Eigen::AlignedBox3d& box, const Eigen::Affine3d& transform)
{
    const Eigen::Vector3d center = transform * box.center();
    const Eigen::Vector3d half = transform.linear().cwiseAbs() * (box.sizes() / 2);
    if (!center.allFinite() || !half.allFinite())
        return {};
    return {center - half, center + half};
}

} // namespace

SceneMirror::SceneMirror(boost::shared_ptr<scene::SceneManager> newSceneManager) :
    sceneManager(newSceneManager),
    changes(readChanges(*newSceneManager)),
    materials(fx::EffectLibrary::of(newSceneManager))
{
    readRoot();
    readUnread();
    flatten();
}

SceneMirror::~SceneMirror() = default;

void SceneMirror::update()
{
    const SceneChanges::Batch batch = changes->take();
    if (batch.empty())
        return;
    bool flat = true;
    if (batch.scene & SceneChanges::Root) {
        readRoot();
        flat = false;
    }
    if (batch.scene & SceneChanges::MaterialValues && materials.refresh())
        flat = false;
    std::vector<int> moved;
    for (const SceneChanges::NodeEntry& change : batch.nodes) {
        const auto it = records.find(change.node);
        if (it == records.end())
            continue;
        Record& record = *it->second;
        read(record, change.changes);
        if (change.changes & SceneChanges::Entered)
            unread.push_back(&record);
        if (change.changes & ~SceneChanges::Transform)
            flat = false;
        for (int i = record.entry; i >= 0; i = entries[i].nextOfNode)
            moved.push_back(i);
    }
    if (flat) {
        move(std::move(moved));
        return;
    }
    readUnread();
    flatten();
}

int SceneMirror::findEntry(const Node* node) const
{
    const auto it = records.find(node);
    return it == records.end() ? -1 : it->second->entry;
}

Eigen::Affine3d SceneMirror::getWorld(const Node& node) const
{
    const int entry = findEntry(&node);
    return entry < 0 ? readTransform(node) : entries[entry].world;
}

const Eigen::AlignedBox3d& SceneMirror::getBounds() const
{
    findBounds();
    return bounds;
}

const Eigen::AlignedBox3d& SceneMirror::getCasterBounds() const
{
    findBounds();
    return casterBounds;
}

void SceneMirror::findBounds() const
{
    if (boundsKnown)
        return;
    bounds.setEmpty();
    casterBounds.setEmpty();
    for (const Surface& surface : surfaces) {
        bounds.extend(surface.bounds);
        if (surface.castsShadow)
            casterBounds.extend(surface.bounds);
    }
    boundsKnown = true;
}

Eigen::AlignedBox3d SceneMirror::getBounds(int entry) const
{
    Eigen::AlignedBox3d box;
    for (int s = entries[entry].firstSurface; s < endSurface(entry); ++s)
        box.extend(surfaces[s].bounds);
    return box;
}

SceneMirror::Record* SceneMirror::adopt(const boost::shared_ptr<Node>& node)
{
    std::unique_ptr<Record>& record = records[node.get()];
    if (!record) {
        record = std::make_unique<Record>();
        record->node = node;
        unread.push_back(record.get());
    }
    return record.get();
}

void SceneMirror::read(Record& record, unsigned int changes)
{
    const Node& node = *record.node;
    if (changes & SceneChanges::Transform)
        record.local = readTransform(node);
    if (changes & SceneChanges::Layers)
        record.flags = readFlags(node);
    if (changes & SceneChanges::Children)
        readChildren(record);
    if (changes & (SceneChanges::Materials | SceneChanges::Geometries))
        readSurfaces(record);
    if (changes & SceneChanges::Instances) {
        record.lights.clear();
        for (unsigned int i = 0; auto light = node.getInstanceLight(i); ++i)
            record.lights.push_back(light);
    }
}

void SceneMirror::readChildren(Record& record)
{
    record.children.clear();
    // Until there is none: the count may change meanwhile.
    for (unsigned int i = 0; auto child = record.node->getChildNode(i); ++i)
        record.children.push_back(adopt(child));
}

void SceneMirror::readSurfaces(Record& record)
{
    record.geometries.clear();
    const auto meshes = getGeometries(*record.node);
    if (meshes.empty())
        return;
    const auto skins = getSkins(*record.node);
    for (unsigned int i = 0; i < meshes.size(); ++i) {
        if (!meshes[i])
            continue;
        Record::Geometry geometry{{}, record.node->getMaterial(i, 0), i, {}};
        if (i < skins.size() && skins[i] && fits(*skins[i], *meshes[i])) {
            geometry.skinned.push_back(new SkinnedGeometry(meshes[i], skins[i]));
            geometry.geometry = geometry.skinned.front();
        } else {
            geometry.geometry = geometries.get(meshes[i]);
        }
        if (!geometry.geometry->getBox().isEmpty())
            record.geometries.push_back(std::move(geometry));
    }
}

void SceneMirror::readUnread()
{
    while (!unread.empty()) {
        Record* record = unread.back();
        unread.pop_back();
        if (record->read > generation)
            continue;
        record->read = generation + 1;
        read(*record, everything);
        // What is known of those below may be old: outside of a scene no change is noted.
        unread.insert(unread.end(), record->children.begin(), record->children.end());
    }
}

void SceneMirror::readRoot()
{
    const auto node = sceneManager->getRoot();
    root = node ? adopt(node) : nullptr;
    if (root)
        unread.push_back(root);
}

void SceneMirror::flatten()
{
    struct Level
    {
        Record* record;
        int entry;
        size_t nextChild;
    };
    ++generation;
    ++casterVersion;
    boundsKnown = false;
    entries.clear();
    surfaces.clear();
    lights.clear();
    skinnedSurfaces.clear();
    std::vector<Level> stack;
    const auto descend = [&](Record& record, int parent) {
        stack.push_back({&record, int(entries.size()), 0});
        enter(record, parent);
    };
    if (root)
        descend(*root, -1);
    while (!stack.empty()) {
        Level& level = stack.back();
        if (level.nextChild < level.record->children.size()) {
            descend(*level.record->children[level.nextChild++], level.entry);
            continue;
        }
        entries[level.entry].end = entries.size();
        stack.pop_back();
    }
    dropUnreached();
    findBones();
    followBones();
}

void SceneMirror::enter(Record& record, int parent)
{
    const int entry = entries.size();
    const int nextOfNode = record.reached == generation ? record.entry : -1;
    record.places = nextOfNode < 0 ? 1 : record.places + 1;
    record.reached = generation;
    record.entry = entry;
    entries.push_back({record.node.get(), parent, entry + 1, nextOfNode, record.flags, 0, 0, moves,
                       record.local, record.local});
    Entry& added = entries.back();
    if (parent >= 0) {
        added.flags |= entries[parent].flags;
        added.world = entries[parent].world * added.local;
    }
    added.firstSurface = surfaces.size();
    if (!(added.flags & NodeFlag::Hidden))
        addSurfaces(record, entry);
    added.endSurface = surfaces.size();
}

void SceneMirror::addSurfaces(Record& record, int entry)
{
    const unsigned int flags = entries[entry].flags;
    for (Record::Geometry& geometry : record.geometries) {
        const MaterialState& look = materials.get(geometry.material, flags & NodeFlag::SeeThrough);
        Surface surface;
        surface.geometry = geometry.geometry.get();
        if (!geometry.skinned.empty())
            surface.geometry = addSkinned(geometry.skinned, record.places - 1);
        surface.look = &look;
        surface.features = look.getFeatures(geometry.geometry->features);
        surface.index = geometry.index;
        surface.entry = entry;
        surface.castsShadow = flags & NodeFlag::CastsShadow;
        surface.postRender = flags & NodeFlag::PostRender;
        placeSurface(surface);
        surfaces.push_back(surface);
    }
    for (const auto& light : record.lights)
        lights.push_back({light, entry});
}

SkinnedGeometry* SceneMirror::addSkinned(std::vector<osg::ref_ptr<SkinnedGeometry>>& skinned,
                                         unsigned int place)
{
    while (skinned.size() <= place)
        skinned.push_back(new SkinnedGeometry(skinned.front()->mesh, skinned.front()->skin));
    SkinnedGeometry* const geometry = skinned[place].get();
    skinnedSurfaces.push_back({int(surfaces.size()), geometry, {}});
    return geometry;
}

void SceneMirror::findBones()
{
    for (SkinnedSurface& skinned : skinnedSurfaces)
        for (const scene::Skin::Bone& bone : skinned.geometry->skin->bones)
            skinned.bones.push_back(findBone(bone.node.lock().get(), surfaces[skinned.surface].entry));
}

int SceneMirror::findBone(const Node* node, int entry) const
{
    const int first = findEntry(node);
    if (first < 0 || entries[first].nextOfNode < 0)
        return first;
    // Of several places the one that was put there together with the mesh.
    for (int top = entry; top >= 0; top = entries[top].parent)
        for (int i = first; i >= 0; i = entries[i].nextOfNode)
            if (i >= top && i < entries[top].end)
                return i;
    return first;
}

void SceneMirror::followBones()
{
    const auto isMoved = [this](int entry) { return entry >= 0 && entries[entry].moved == moves; };
    for (const SkinnedSurface& skinned : skinnedSurfaces) {
        Surface& surface = surfaces[skinned.surface];
        if (!isMoved(surface.entry) && std::none_of(skinned.bones.begin(), skinned.bones.end(), isMoved))
            continue;
        const Eigen::Affine3d worldToMesh = entries[surface.entry].world.inverse();
        const std::vector<scene::Skin::Bone>& bones = skinned.geometry->skin->bones;
        // A bone that is not in the graph stays where it was.
        for (unsigned int i = 0; i < bones.size(); ++i)
            if (skinned.bones[i] >= 0)
                skinned.geometry->setBone(i, poseOf(bones[i], entries[skinned.bones[i]].world, worldToMesh));
        if (!skinned.geometry->update())
            continue;
        placeSurface(surface);
        casterVersion += surface.castsShadow;
    }
}

void SceneMirror::dropUnreached()
{
    for (auto it = records.begin(); it != records.end();)
        it = it->second->reached == generation ? std::next(it) : records.erase(it);
    geometries.sweep();
    materials.sweep();
}

void SceneMirror::move(std::vector<int> moved)
{
    // Parents come before what is below them, so one walk over each outermost range does.
    std::sort(moved.begin(), moved.end());
    ++moves;
    for (int i : moved)
        entries[i].local = records.at(entries[i].node)->local;
    int done = 0;
    for (int first : moved) {
        for (int i = std::max(first, done); i < entries[first].end; ++i)
            place(entries[i]);
        done = std::max(done, entries[first].end);
    }
    followBones();
    boundsKnown = false;
}

void SceneMirror::place(Entry& entry)
{
    entry.moved = moves;
    entry.world = entry.parent < 0 ? entry.local : entries[entry.parent].world * entry.local;
    for (int s = entry.firstSurface; s < entry.endSurface; ++s) {
        placeSurface(surfaces[s]);
        casterVersion += surfaces[s].castsShadow;
    }
}

void SceneMirror::placeSurface(Surface& surface)
{
    surface.bounds = transformed(surface.geometry->getBox(), entries[surface.entry].world);
}

} // namespace halvern::engine
