#include "reference/scene/NodeIndex.h"

#include "reference/scene/NodePrivate.h"

namespace halvern::scene {

void NodeIndex::add(const std::vector<boost::shared_ptr<Node>>& nodes)
{
    std::lock_guard lock(mutex);
    entries.reserve(entries.size() + nodes.size());
    for (const auto& node : nodes) {
        Entry& entry = entries[Internals::of(*node).id];
        if (++entry.count == 1)
            entry.first = node;
        else
            entry.wasShared = true;
    }
}

void NodeIndex::remove(const std::vector<boost::shared_ptr<Node>>& nodes)
{
    std::lock_guard lock(mutex);
    for (const auto& node : nodes) {
        const auto entry = entries.find(Internals::of(*node).id);
        if (entry != entries.end() && --entry->second.count == 0)
            entries.erase(entry);
    }
}

std::vector<boost::shared_ptr<Node>> NodeIndex::getAll() const
{
    std::vector<boost::shared_ptr<Node>> nodes;
    std::lock_guard lock(mutex);
    nodes.reserve(entries.size());
    for (const auto& entry : entries) {
        if (auto node = entry.second.first.lock())
            nodes.push_back(std::move(node));
    }
    return nodes;
}

NodeIndex::Found NodeIndex::find(const std::string& id) const
{
    std::lock_guard lock(mutex);
    const auto entry = entries.find(id);
    if (entry == entries.end())
        return {};
    return {entry->second.first.lock(), !entry->second.wasShared};
}

} // namespace halvern::scene
