#pragma once

#include "engine/scene/Node.h"
#include "engine/scene/SceneManager.h"
#include "reference/scene/SceneChanges.h"

#include <boost/make_shared.hpp>

#include <functional>
#include <map>
#include <string>
#include <thread>
#include <vector>

namespace halvern::test {

inline boost::shared_ptr<scene::Node> makeNode(const std::string& id)
{
    return boost::make_shared<scene::Node>(id, id);
}

/// A node with the children.
inline boost::shared_ptr<scene::Node> makeNode(const std::string& id,
                                               const std::vector<boost::shared_ptr<scene::Node>>& children)
{
    auto node = makeNode(id);
    for (const auto& child : children)
        node->addChildNode(child);
    return node;
}

/// `depth` nodes, each the only child of the one before: "0", "1", ...
inline boost::shared_ptr<scene::Node> makeChain(unsigned depth)
{
    auto root = makeNode("0");
    auto last = root;
    for (unsigned i = 1; i < depth; ++i) {
        const auto next = makeNode(std::to_string(i));
        last->addChildNode(next);
        last = next;
    }
    return root;
}

inline std::vector<std::string> idsOf(const std::vector<boost::shared_ptr<scene::Node>>& nodes)
{
    std::vector<std::string> ids;
    for (const auto& node : nodes)
        ids.push_back(node->getID());
    return ids;
}

inline boost::shared_ptr<scene::SceneManager>
makeScene(const boost::shared_ptr<scene::Node>& root,
          const boost::shared_ptr<core::event::EventManager>& eventManager = {})
{
    auto manager = boost::make_shared<scene::SceneManager>(eventManager);
    manager->setRoot(root);
    return manager;
}

/// What changed of each node of a batch, by ID.
inline std::map<std::string, unsigned> changesByID(const scene::SceneChanges::Batch& batch)
{
    std::map<std::string, unsigned> changes;
    for (const auto& node : batch.nodes)
        changes[node.id] |= node.changes;
    return changes;
}

/// Runs body(0), body(1), ... at the same time.
inline void runInThreads(unsigned count, const std::function<void(unsigned)>& body)
{
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < count; ++i)
        threads.emplace_back(body, i);
    for (std::thread& thread : threads)
        thread.join();
}

} // namespace halvern::test
