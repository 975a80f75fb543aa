#include "reference/scene/import/BoneFinder.h"

#include "engine/scene/Node.h"

#include <algorithm>

namespace halvern::scene {

BoneFinder::BoneFinder(const boost::shared_ptr<Node>& root, const std::set<std::string>& names)
{
    std::vector<boost::shared_ptr<Node>> pending{root};
    while (!pending.empty()) {
        const auto node = pending.back();
        pending.pop_back();
        const std::string name = node->getName();
        if (names.count(name) > 0)
            nodes[name].push_back(node);
        for (unsigned i = node->getChildCount(); i-- > 0;) {
            pending.push_back(node->getChildNode(i));
            parents.emplace(pending.back().get(), node.get());
        }
    }
}

boost::shared_ptr<Node> BoneFinder::find(const std::string& name, const Node& carrier) const
{
    const auto found = nodes.find(name);
    if (found == nodes.end())
        return {};
    const auto& candidates = found->second;
    if (candidates.size() == 1)
        return candidates.front();
    std::unordered_map<const Node*, unsigned> levels; // of the carrier and what is above it
    for (const Node* up = &carrier; up; up = parentOf(up))
        levels.emplace(up, unsigned(levels.size()));
    // How far above the carrier the first node is that both are below.
    const auto distance = [&](const boost::shared_ptr<Node>& node) {
        const Node* up = node.get();
        while (up && levels.count(up) == 0)
            up = parentOf(up);
        return up ? levels.at(up) : unsigned(levels.size());
    };
    return *std::min_element(candidates.begin(), candidates.end(),
                             [&](const auto& a, const auto& b) { return distance(a) < distance(b); });
}

const Node* BoneFinder::parentOf(const Node* node) const
{
    const auto found = parents.find(node);
    return found != parents.end() ? found->second : nullptr;
}

} // namespace halvern::scene
