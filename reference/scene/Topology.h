#pragma once

#include "reference/scene/NodePrivate.h"

namespace halvern::scene::topology {

/// One lock for the shape of all graphs: taken before, and never after, the lock of a node, an index or a
/// journal. Whoever holds it sees trees without cycles and nodes that know the scene they are in.
std::mutex& lock();

/// The functions below need that lock.

/// Counts one more entry of the node into the scene. With the first one the node and all below it learn
/// of the scene.
void enter(const boost::shared_ptr<Node>& node, const std::shared_ptr<SceneLink>& link);

/// Counts one entry less. With the last one the node and all below it forget the scene.
void leave(const boost::shared_ptr<Node>& node, const std::shared_ptr<SceneLink>& link);

/// Whether the target is the node or below it.
bool reaches(const boost::shared_ptr<Node>& node, const Node& target);

/// A number that no walk had before.
uint64_t newWalk();

/// Calls visit(node) for the node and all below it in depth-first pre-order, once for each, until it
/// returns false.
template <class Visit>
void walk(const boost::shared_ptr<Node>& top, Visit visit)
{
    const uint64_t walk = newWalk();
    std::vector<const boost::shared_ptr<Node>*> pending{&top};
    while (!pending.empty()) {
        const auto& node = *pending.back();
        pending.pop_back();
        auto& data = Internals::of(*node);
        if (std::exchange(data.lastWalk, walk) == walk)
            continue;
        if (!visit(node))
            return;
        for (auto child = data.children.rbegin(); child != data.children.rend(); ++child)
            pending.push_back(&*child);
    }
}

} // namespace halvern::scene::topology
