#include "reference/scene/Topology.h"

#include "reference/scene/CameraPrivate.h"
#include "reference/scene/LightPrivate.h"
#include "reference/scene/MaterialPrivate.h"

namespace halvern::scene::topology {

std::mutex& lock()
{
    static std::mutex mutex;
    return mutex;
}

uint64_t newWalk()
{
    static uint64_t walks = 0;
    return ++walks;
}

/// Gives the node the link, and the link's journal to what the node carries.
static void setLink(Node& node, const std::shared_ptr<SceneLink>& link)
{
    auto& data = Internals::of(node);
    std::unique_lock lock(data.mutex);
    data.link = link;
    const auto lights = data.lights;
    const auto cameras = data.cameras;
    const auto materials = data.materials;
    lock.unlock();

    for (const auto& light : lights)
        Internals::of(*light).scenes.attach(link->journal);
    for (const auto& camera : cameras)
        Internals::of(*camera).scenes.attach(link->journal);
    for (const auto& slot : materials)
        Internals::of(*slot.second).scenes.attach(link->journal);
}

void enter(const boost::shared_ptr<Node>& top, const std::shared_ptr<SceneLink>& link)
{
    std::vector<boost::shared_ptr<Node>> entered;
    std::vector<const boost::shared_ptr<Node>*> pending{&top};
    while (!pending.empty()) {
        const auto& node = *pending.back();
        pending.pop_back();
        auto& data = Internals::of(*node);
        if (data.link == link) {
            ++data.entries;
            continue;
        }
        data.entries = 1;
        setLink(*node, link);
        entered.push_back(node);
        for (const auto& child : data.children)
            pending.push_back(&child);
    }
    if (entered.empty())
        return;
    link->index.add(entered);
    link->journal->markNode(*top, Internals::of(*top).id, SceneChanges::Entered);
}

void leave(const boost::shared_ptr<Node>& top, const std::shared_ptr<SceneLink>& link)
{
    std::vector<boost::shared_ptr<Node>> left;
    std::vector<const boost::shared_ptr<Node>*> pending{&top};
    while (!pending.empty()) {
        const auto& node = *pending.back();
        pending.pop_back();
        auto& data = Internals::of(*node);
        // A node that another scene took over is no longer this one's to release.
        if (data.link != link || --data.entries > 0)
            continue;
        {
            std::lock_guard lock(data.mutex);
            data.link.reset();
        }
        left.push_back(node);
        for (const auto& child : data.children)
            pending.push_back(&child);
    }
    link->index.remove(left);
    link->journal->forget(left);
}

bool reaches(const boost::shared_ptr<Node>& node, const Node& target)
{
    bool found = false;
    walk(node, [&](const boost::shared_ptr<Node>& visited) {
        found = visited.get() == &target;
        return !found;
    });
    return found;
}

} // namespace halvern::scene::topology
