#include "reference/scene/import/BoneFinder.h"

#include "engine/scene/Node.h"

#include <algorithm>
#include <unordered_set>

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
    return *std::min_element(candidates.begin(), candidates.end(), [&](const auto& a, const auto& b) {
        return distance(*a, carrier) < distance(*b, carrier);
    });
}

unsigned BoneFinder::distance(const Node& node, const Node& carrier) const
{
    const auto parentOf = [this](const Node* child) {
        const auto found = parents.find(child);
        return found != parents.end() ? found->second : nullptr;
    };
    std::unordered_set<const Node*> above;
    for (const Node* up = &node; up; up = parentOf(up))
        above.insert(up);
    unsigned levels = 0;
    for (const Node* up = &carrier; up && above.count(up) == 0; up = parentOf(up))
        ++levels;
    return levels;
}

} // namespace halvern::scene
