#include "qt/EventQueue.h"

namespace halvern::qt {

void EventQueue::append(HCE::Event event)
{
    Key key(event.getEventType().getName(), event.getEventData().getData());
    Events entry;
    entry.push_back(std::move(event)); // the memory is taken before the lock
    const std::lock_guard<std::mutex> lock(mutex);
    const auto [place, isNew] = places.try_emplace(std::move(key), entry.begin());
    if (!isNew) {
        events.erase(place->second);
        place->second = entry.begin();
    }
    events.splice(events.end(), entry);
}

EventQueue::Events EventQueue::takeAll()
{
    Events taken;
    std::map<Key, Events::iterator> left; // destroyed without the lock
    const std::lock_guard<std::mutex> lock(mutex);
    taken.swap(events);
    left.swap(places);
    return taken;
}

} // namespace halvern::qt
