#include "reference/scene/ChangeJournal.h"

#include <algorithm>
#include <atomic>
#include <iterator>
#include <list>
#include <unordered_map>
#include <utility>

namespace halvern::scene {

SceneChanges::~SceneChanges() = default;

/// What one reader has not taken yet: the nodes in the order of their first change.
struct ChangeJournal::Collected
{
    std::atomic<bool> any{false};
    unsigned scene = 0;
    std::list<SceneChanges::NodeEntry> nodes;
    std::unordered_map<const Node*, std::list<SceneChanges::NodeEntry>::iterator> places;
};

class ChangeJournal::Reader : public SceneChanges
{
public:
    Reader(std::shared_ptr<ChangeJournal> newJournal, std::shared_ptr<Collected> newCollected) :
        journal(std::move(newJournal)), collected(std::move(newCollected))
    {}

    ~Reader() override
    {
        std::lock_guard lock(journal->mutex);
        auto& readers = journal->readers;
        readers.erase(std::find(readers.begin(), readers.end(), collected));
    }

    Batch take() override
    {
        if (!collected->any.load(std::memory_order_acquire))
            return {};
        Batch batch;
        std::list<NodeEntry> nodes;
        {
            std::lock_guard lock(journal->mutex);
            collected->any.store(false, std::memory_order_relaxed);
            batch.scene = std::exchange(collected->scene, 0u);
            nodes.swap(collected->nodes);
            collected->places.clear();
        }
        batch.nodes.assign(std::make_move_iterator(nodes.begin()), std::make_move_iterator(nodes.end()));
        return batch;
    }

private:
    const std::shared_ptr<ChangeJournal> journal;
    const std::shared_ptr<Collected> collected;
};

ChangeJournal::ChangeJournal() = default;
ChangeJournal::~ChangeJournal() = default;

void ChangeJournal::markNode(const Node& node, const std::string& id, unsigned changes)
{
    std::lock_guard lock(mutex);
    for (auto& reader : readers) {
        auto [place, isNew] = reader->places.try_emplace(&node, reader->nodes.end());
        if (isNew)
            place->second = reader->nodes.insert(reader->nodes.end(), {&node, id, 0});
        place->second->changes |= changes;
        reader->any.store(true, std::memory_order_release);
    }
}

void ChangeJournal::markScene(unsigned changes)
{
    std::lock_guard lock(mutex);
    for (auto& reader : readers) {
        reader->scene |= changes;
        reader->any.store(true, std::memory_order_release);
    }
}

void ChangeJournal::forget(const std::vector<boost::shared_ptr<Node>>& nodes)
{
    std::lock_guard lock(mutex);
    for (auto& reader : readers) {
        for (const auto& node : nodes) {
            const auto place = reader->places.find(node.get());
            if (place == reader->places.end())
                continue;
            reader->nodes.erase(place->second);
            reader->places.erase(place);
        }
    }
}

std::shared_ptr<SceneChanges> ChangeJournal::makeReader()
{
    auto collected = std::make_shared<Collected>();
    auto reader = std::make_shared<Reader>(shared_from_this(), collected);
    std::lock_guard lock(mutex);
    readers.push_back(std::move(collected));
    return reader;
}

} // namespace halvern::scene
