#pragma once

#include <boost/shared_ptr.hpp>
#include <boost/smart_ptr/weak_ptr.hpp>

#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

namespace halvern::scene {

class Node;

/// Finds the nodes of one scene by their ID. Any thread.
class NodeIndex
{
public:
    struct Found
    {
        boost::shared_ptr<Node> node;
        bool isSure = true; ///< false: several nodes have, or had, the ID; look for the first in the graph
    };

    void add(const std::vector<boost::shared_ptr<Node>>& nodes);
    void remove(const std::vector<boost::shared_ptr<Node>>& nodes);

    /// One node of each ID, in no order.
    std::vector<boost::shared_ptr<Node>> getAll() const;

    Found find(const std::string& id) const;

private:
    struct Entry
    {
        boost::weak_ptr<Node> first;
        unsigned count = 0;
        bool wasShared = false;
    };

    mutable std::mutex mutex;
    std::unordered_map<std::string, Entry> entries;
};

} // namespace halvern::scene
