#pragma once

#include "reference/scene/SceneChanges.h"

#include <boost/shared_ptr.hpp>

#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace halvern::scene {

/// Where everything in a scene notes that it changed, for any number of readers. Any thread.
class ChangeJournal : public std::enable_shared_from_this<ChangeJournal>
{
public:
    ChangeJournal();
    ~ChangeJournal();

    void markNode(const Node& node, const std::string& id, unsigned changes);
    void markScene(unsigned changes);

    /// Drops what was noted of nodes that left the scene.
    void forget(const std::vector<boost::shared_ptr<Node>>& nodes);

    std::shared_ptr<SceneChanges> makeReader();

private:
    struct Collected;
    class Reader;

    std::mutex mutex; // guards the list and all that is collected
    std::vector<std::shared_ptr<Collected>> readers;
};

} // namespace halvern::scene
