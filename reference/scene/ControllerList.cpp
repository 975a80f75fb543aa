#include "reference/scene/ControllerList.h"

#include <algorithm>

namespace halvern::scene {

void ControllerList::add(boost::shared_ptr<ISceneController> controller)
{
    std::lock_guard lock(mutex);
    const auto isSame = [&](const auto& entry) { return entry->controller == controller; };
    if (std::none_of(entries.begin(), entries.end(), isSame))
        entries.push_back(std::make_shared<Entry>(Entry{std::move(controller), {}, false}));
}

void ControllerList::remove(const boost::shared_ptr<ISceneController>& controller)
{
    std::unique_lock lock(mutex);
    const auto isSame = [&](const auto& entry) { return entry->controller == controller; };
    const auto place = std::find_if(entries.begin(), entries.end(), isSame);
    if (place == entries.end())
        return;
    const std::shared_ptr<Entry> entry = *place;
    entries.erase(place);
    entry->isRemoved = true;
    ran.wait(lock, [&] {
        return entry->runsOn == std::thread::id() || entry->runsOn == std::this_thread::get_id();
    });
}

bool ControllerList::update()
{
    std::unique_lock lock(mutex);
    const auto snapshot = entries;
    lock.unlock();

    bool changed = false;
    for (const auto& entry : snapshot)
        changed |= run(*entry);
    return changed;
}

bool ControllerList::run(Entry& entry)
{
    {
        std::lock_guard lock(mutex);
        if (entry.isRemoved || entry.runsOn != std::thread::id())
            return false;
        entry.runsOn = std::this_thread::get_id();
    }
    bool changed = false;
    try {
        changed = entry.controller->update();
    } catch (...) {
        // The others, and the scene thread, go on without it.
    }
    {
        std::lock_guard lock(mutex);
        entry.runsOn = {};
    }
    ran.notify_all();
    return changed;
}

} // namespace halvern::scene
