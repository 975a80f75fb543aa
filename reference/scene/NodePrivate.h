#pragma once

#include "engine/scene/Node.h"
#include "reference/scene/Internals.h"
#include "reference/scene/Mesh.h"
#include "reference/scene/SceneLink.h"

#include <atomic>
#include <cstdint>
#include <map>
#include <mutex>
#include <set>
#include <utility>
#include <vector>

namespace halvern::scene {

struct Node::Private
{
    Private(std::string newID, std::string newName) : id(std::move(newID)), name(std::move(newName)) {}

    const std::string id;
    const std::string name;

    mutable std::mutex mutex;                      // guards all down to the link
    std::vector<boost::shared_ptr<Node>> children; // changed under the topology lock too
    bool visible = true;
    std::set<std::string> layers;
    Eigen::Translation3f translation = Eigen::Translation3f::Identity();
    Eigen::Matrix4f rotation = Eigen::Matrix4f::Identity();
    Eigen::Vector3f scale = Eigen::Vector3f::Ones();
    std::vector<boost::shared_ptr<Light>> lights;
    std::vector<boost::shared_ptr<Camera>> cameras;
    std::map<std::pair<unsigned int, unsigned int>, boost::shared_ptr<Material>> materials;
    std::vector<std::shared_ptr<const Mesh>> geometries;
    std::vector<std::shared_ptr<const Skin>> skins; // empty, or as long as the geometries
    std::shared_ptr<SceneLink> link; // empty outside of a scene; changed under the topology lock too

    unsigned entries = 0;                 // how often the node is in its scene; under the topology lock
    uint64_t lastWalk = 0;                // under the topology lock
    std::atomic<unsigned int> parents{0}; // how often any node has this one as a child

    /// Calls change() under the lock, then notes what changed if the node is in a scene. `carried` is of
    /// something that the node carries from now on; its changes are the scene's too.
    template <class Change>
    void apply(const Node& node, unsigned changes, Change change, SceneMarks* carried = nullptr)
    {
        std::unique_lock guard(mutex);
        change();
        const auto scene = link;
        guard.unlock();
        if (!scene)
            return;
        if (carried)
            carried->attach(scene->journal);
        scene->journal->markNode(node, id, changes);
    }
};

} // namespace halvern::scene
