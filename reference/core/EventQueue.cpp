#include "reference/core/EventQueue.h"

#include <utility>

namespace halvern::core::event {

void EventQueue::push(QueuedEvent event)
{
    std::unique_lock<std::mutex> lock(mutex);
    if (stopped)
        return;
    const bool first = events.empty();
    events.push_back(std::move(event));
    lock.unlock();
    if (first)
        filled.notify_one();
}

bool EventQueue::take(std::deque<QueuedEvent>& batch)
{
    std::unique_lock<std::mutex> lock(mutex);
    taker = std::this_thread::get_id();
    busy = false;
    if (events.empty())
        idle.notify_all();
    filled.wait(lock, [this] { return stopped || !events.empty(); });
    busy = true;
    batch.swap(events);
    return !stopped;
}

void EventQueue::stop()
{
    std::deque<QueuedEvent> dropped;
    {
        const std::lock_guard<std::mutex> lock(mutex);
        stopped = true;
        dropped.swap(events);
    }
    filled.notify_one();
}

bool EventQueue::isTaker() const
{
    const std::lock_guard<std::mutex> lock(mutex);
    return taker == std::this_thread::get_id();
}

void EventQueue::waitUntilIdle()
{
    std::unique_lock<std::mutex> lock(mutex);
    if (taker != std::this_thread::get_id())
        idle.wait(lock, [this] { return events.empty() && !busy; });
}

} // namespace halvern::core::event
