#pragma once

#include <boost/shared_ptr.hpp>

#include <set>
#include <string>
#include <unordered_map>
#include <vector>

namespace halvern::scene {

class Node;

/// Finds the nodes that the bones of meshes mean by their names.
class BoneFinder
{
public:
    BoneFinder(const boost::shared_ptr<Node>& root, const std::set<std::string>& names);

    /// Of several nodes with the name the one that is the nearest relative of the node that carries the mesh,
    /// as figures with bones of the same names stand in one file; then the first. Empty when there is none.
    boost::shared_ptr<Node> find(const std::string& name, const Node& carrier) const;

private:
    const Node* parentOf(const Node* node) const;

    std::unordered_map<std::string, std::vector<boost::shared_ptr<Node>>> nodes; // depth first
    std::unordered_map<const Node*, const Node*> parents;
};

} // namespace halvern::scene
