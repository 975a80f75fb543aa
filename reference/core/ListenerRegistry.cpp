#include "reference/core/ListenerRegistry.h"

#include <algorithm>
#include <functional>
#include <ostream>
#include <string>
#include <utility>

namespace halvern::core::event {

std::size_t ListenerRegistry::getBucket(const EventType& type)
{
    return std::hash<std::string>()(type.getName()) % std::tuple_size_v<decltype(buckets)>;
}

// Channels are only ever put at the front of a bucket, complete: a reader without lock sees a good list.
Channel* ListenerRegistry::find(const EventType& type) const
{
    Channel* found = buckets[getBucket(type)].load(std::memory_order_acquire);
    while (found && found->name != type.getName())
        found = found->nextInBucket;
    return found;
}

Channel* ListenerRegistry::findListened(const EventType& type) const
{
    Channel* const found = find(type);
    return found && found->listenedTo ? found : nullptr;
}

bool ListenerRegistry::contains(const EventListener* listener) const
{
    const std::lock_guard<std::mutex> lock(mutex);
    return std::any_of(channels.begin(), channels.end(), [listener](const Channel& entry) {
        return std::find(entry.listeners.begin(), entry.listeners.end(), listener) != entry.listeners.end();
    });
}

void ListenerRegistry::print(std::ostream& out) const
{
    const std::lock_guard<std::mutex> lock(mutex);
    for (const Channel& entry : channels)
        for (const EventListener* listener : entry.listeners)
            out << entry.name << ": " << listener << '\n';
}

void ListenerRegistry::add(EventListener* listener, const EventType& type)
{
    const std::lock_guard<std::mutex> lock(mutex);
    Channel* to = find(type);
    if (!to) {
        auto& bucket = buckets[getBucket(type)];
        to = &channels.emplace_back(type.getName(), bucket.load(std::memory_order_relaxed));
        bucket.store(to, std::memory_order_release);
    }
    if (std::find(to->listeners.begin(), to->listeners.end(), listener) == to->listeners.end())
        to->listeners.push_back(listener);
    to->listenedTo = true;
}

void ListenerRegistry::remove(EventListener* listener)
{
    Lock lock(mutex);
    for (Channel& entry : channels)
        remove(entry, listener);
    waitForDelivery(lock, listener);
}

void ListenerRegistry::remove(EventListener* listener, const EventType& type)
{
    Lock lock(mutex);
    Channel* const from = find(type);
    if (!from)
        return;
    remove(*from, listener);
    if (from == channel)
        waitForDelivery(lock, listener);
}

/// Takes the listener out of a channel; the delivery in progress keeps its place.
void ListenerRegistry::remove(Channel& from, EventListener* listener)
{
    const auto found = std::find(from.listeners.begin(), from.listeners.end(), listener);
    if (found == from.listeners.end())
        return;
    const auto index = static_cast<std::size_t>(found - from.listeners.begin());
    from.listeners.erase(found);
    from.listenedTo = !from.listeners.empty();
    if (&from != channel)
        return;
    next -= index < next ? 1 : 0;
    end -= index < end ? 1 : 0;
}

/// Waits until the delivery to the listener that runs now, if there is one, has ended.
void ListenerRegistry::waitForDelivery(Lock& lock, const EventListener* listener)
{
    if (!running || running != listener || thread == std::this_thread::get_id())
        return;
    const unsigned long delivery = deliveries;
    ++waiting;
    delivered.wait(lock, [&] { return !running || deliveries != delivery; });
    --waiting;
}

void ListenerRegistry::deliver(EventQueue& queue)
{
    constexpr std::size_t longBatch = 1000;
    std::deque<QueuedEvent> batch;
    while (queue.take(batch)) {
        const bool isLong = batch.size() > longBatch;
        Lock lock(mutex);
        thread = std::this_thread::get_id();
        for (; !batch.empty(); batch.pop_front()) {
            QueuedEvent& queued = batch.front();
            channel = queued.channel;
            next = 0;
            end = channel->listeners.size();
            Event event(channel->type, std::move(queued.data), std::move(queued.uniqueID));
            while (next < end && !queue.isStopped())
                deliverNext(lock, event);
        }
        // An empty deque keeps an index that is as long as its content ever was.
        if (isLong)
            std::deque<QueuedEvent>().swap(batch);
    }
}

void ListenerRegistry::deliverNext(Lock& lock, Event& event)
{
    ++deliveries;
    running = channel->listeners[next++];
    EventListener* const listener = running;
    const bool isLast = next == end;
    lock.unlock();
    try {
        listener->handleEvent(isLast ? std::move(event) : event);
    } catch (...) {
        // A listener that fails keeps nobody from their events.
    }
    lock.lock();
    running = nullptr;
    if (waiting > 0)
        delivered.notify_all();
}

} // namespace halvern::core::event
