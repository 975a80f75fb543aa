#pragma once

#include "engine/core/event/EventListener.h"
#include "reference/core/EventQueue.h"

#include <array>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <iosfwd>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace halvern::core::event {

/// The listeners of one event type, in the order of registration. Lives as long as the registry, so that
/// queued events can point to it: there are never more channels than names of types.
struct Channel
{
    Channel(const std::string& name, Channel* nextInBucket) :
        name(name), type(name), nextInBucket(nextInBucket)
    {}

    const std::string name; ///< What senders read: no counter of the dispatch thread lies beside it.
    const EventType type;   ///< What events are made of on the dispatch thread.
    Channel* const nextInBucket;
    std::atomic<bool> listenedTo{false};
    std::vector<EventListener*> listeners;
};

/// Who listens to what, and the delivery to them by one thread.
class ListenerRegistry
{
public:
    /// The channel of a type that somebody listens to, else null. Takes no lock: every sender asks.
    Channel* findListened(const EventType& type) const;

    bool contains(const EventListener* listener) const;
    void print(std::ostream& out) const;
    void add(EventListener* listener, const EventType& type);

    /// Barriers, see EventManager::removeEventListener.
    void remove(EventListener* listener);
    void remove(EventListener* listener, const EventType& type);

    /// Delivers what is queued until the queue is stopped.
    void deliver(EventQueue& queue);

private:
    using Lock = std::unique_lock<std::mutex>;

    static std::size_t getBucket(const EventType& type);
    Channel* find(const EventType& type) const;
    void remove(Channel& from, EventListener* listener);
    void waitForDelivery(Lock& lock, const EventListener* listener);
    void deliverNext(Lock& lock, Event& event);

    std::array<std::atomic<Channel*>, 64> buckets{};
    mutable std::mutex mutex; ///< Guards everything below.
    std::condition_variable delivered;
    std::deque<Channel> channels;

    // The delivery in progress: the event goes to the listeners [next, end) of its channel; `running` is
    // in handleEvent now.
    Channel* channel = nullptr;
    std::size_t next = 0;
    std::size_t end = 0;
    EventListener* running = nullptr;
    unsigned long deliveries = 0;
    std::thread::id thread;
    unsigned int waiting = 0; ///< Threads that wait for a delivery to end.
};

} // namespace halvern::core::event
