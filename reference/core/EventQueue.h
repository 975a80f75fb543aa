#pragma once

#include "engine/core/event/EventData.h"

#include <atomic>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <string>
#include <thread>

namespace halvern::core::event {

struct Channel;

/// An event without its type, which is the channel's. The sender frees the type that it made on its own
/// thread, and nothing is counted up by one thread and down by another but the data.
struct QueuedEvent
{
    Channel* channel;
    EventData data;
    std::string uniqueID;
};

/// The events on their way from the senders to the one thread that takes them, in order.
class EventQueue
{
public:
    /// Never waits for the taker. Does nothing after stop().
    void push(QueuedEvent event);

    /// Fills the empty batch with all that is queued; waits until there is something. Until the next call
    /// the taker counts as busy. False after stop().
    bool take(std::deque<QueuedEvent>& batch);

    /// Drops what is queued and sends the taker away.
    void stop();
    bool isStopped() const { return stopped; }

    bool isTaker() const;

    /// Returns when nothing is queued and the taker is not busy.
    void waitUntilIdle();

private:
    mutable std::mutex mutex;
    std::condition_variable filled;
    std::condition_variable idle;
    std::deque<QueuedEvent> events;
    std::thread::id taker;
    bool busy = false;
    /// The taker asks for every event; on a cache line of its own, so that no sender takes it away.
    alignas(64) std::atomic<bool> stopped{false};
};

} // namespace halvern::core::event
