#include "engine/core/event/EventManager.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <iostream>
#include <map>
#include <mutex>
#include <sstream>
#include <thread>
#include <utility>
#include <vector>

namespace halvern::core::event {

namespace {

/// The listeners of one event type, in the order of registration. A channel stays for the manager's
/// life, so that queued events can point to it; there are no more of them than names in use.
struct Channel
{
    std::vector<EventListener*> listeners;
};

struct QueuedEvent
{
    Event event;
    Channel* channel;
};

std::string makeUniqueID()
{
    static std::atomic<unsigned long> last{0};
    return std::to_string(++last);
}

} // namespace

/// Shared with the dispatch thread, which outlives the manager when a handler drops the last reference
/// to it.
struct EventManager::Private
{
    std::mutex mutex;
    std::condition_variable wakeUp;   ///< For the dispatch thread: an event, or the end.
    std::condition_variable progress; ///< For everybody else: the thread runs, a delivery has ended.
    std::map<std::string, Channel> channels;
    std::deque<QueuedEvent> queue;
    std::thread thread;
    bool entered = false;
    bool stopping = false;
    unsigned int waiting = 0; ///< Threads that wait for progress.

    // The event being delivered goes to the listeners [next, end) of its channel; `running` is in
    // handleEvent now.
    Channel* channel = nullptr;
    std::size_t next = 0;
    std::size_t end = 0;
    EventListener* running = nullptr;
    unsigned long deliveries = 0;

    bool isDispatchThread() const { return thread.get_id() == std::this_thread::get_id(); }

    template <class Condition>
    void waitFor(std::unique_lock<std::mutex>& lock, Condition condition)
    {
        ++waiting;
        progress.wait(lock, condition);
        --waiting;
    }

    /// Takes the listener out of a channel; the delivery that goes on keeps its place.
    void remove(Channel& from, EventListener* listener)
    {
        const auto found = std::find(from.listeners.begin(), from.listeners.end(), listener);
        if (found == from.listeners.end())
            return;
        const std::size_t index = found - from.listeners.begin();
        from.listeners.erase(found);
        if (&from != channel)
            return;
        next -= index < next ? 1 : 0;
        end -= index < end ? 1 : 0;
    }

    /// Waits until the delivery to the listener that runs now, if there is one, has ended.
    void waitForDelivery(std::unique_lock<std::mutex>& lock, EventListener* listener)
    {
        if (running != listener || isDispatchThread())
            return;
        const unsigned long delivery = deliveries;
        waitFor(lock, [&] { return !running || deliveries != delivery; });
    }

    void deliver(std::unique_lock<std::mutex>& lock, Event& event)
    {
        ++deliveries;
        running = channel->listeners[next++];
        const bool last = next == end;
        lock.unlock();
        try {
            running->handleEvent(last ? std::move(event) : event);
        } catch (...) {
            // A listener that fails must not keep the others from their events.
        }
        lock.lock();
        running = nullptr;
        if (waiting > 0)
            progress.notify_all();
    }

    void run()
    {
        std::unique_lock<std::mutex> lock(mutex);
        entered = true;
        progress.notify_all();
        while (!stopping) {
            if (queue.empty()) {
                wakeUp.wait(lock);
                continue;
            }
            QueuedEvent current = std::move(queue.front());
            queue.pop_front();
            channel = current.channel;
            next = 0;
            end = channel->listeners.size();
            while (next < end && !stopping)
                deliver(lock, current.event);
        }
    }
};

EventManager::EventManager(bool) : d(std::make_shared<Private>()) {}

EventManager::~EventManager()
{
    std::deque<QueuedEvent> undelivered;
    std::unique_lock<std::mutex> lock(d->mutex);
    d->stopping = true;
    d->queue.swap(undelivered);
    lock.unlock();
    d->wakeUp.notify_one();

    if (d->isDispatchThread())
        d->thread.detach();
    else if (d->thread.joinable())
        d->thread.join();
}

void EventManager::handleEvent(Event event)
{
    triggerEvent(event);
}

bool EventManager::isRegistered(EventListener* listener)
{
    const std::lock_guard<std::mutex> lock(d->mutex);
    return std::any_of(d->channels.begin(), d->channels.end(), [listener](const auto& entry) {
        const auto& listeners = entry.second.listeners;
        return std::find(listeners.begin(), listeners.end(), listener) != listeners.end();
    });
}

void EventManager::print()
{
    std::ostringstream text;
    std::unique_lock<std::mutex> lock(d->mutex);
    for (const auto& [type, channel] : d->channels)
        for (const EventListener* listener : channel.listeners)
            text << type << ": " << listener << '\n';
    lock.unlock();
    std::cout << text.str() << std::flush;
}

void EventManager::registerEventListener(EventListener* listener, EventType type)
{
    if (!listener)
        return;
    const std::lock_guard<std::mutex> lock(d->mutex);
    auto& listeners = d->channels[type.getName()].listeners;
    if (std::find(listeners.begin(), listeners.end(), listener) == listeners.end())
        listeners.push_back(listener);
}

void EventManager::removeEventListener(EventListener* listener)
{
    std::unique_lock<std::mutex> lock(d->mutex);
    for (auto& entry : d->channels)
        d->remove(entry.second, listener);
    d->waitForDelivery(lock, listener);
}

void EventManager::removeEventListener(EventListener* listener, EventType type)
{
    std::unique_lock<std::mutex> lock(d->mutex);
    const auto found = d->channels.find(type.getName());
    if (found == d->channels.end())
        return;
    d->remove(found->second, listener);
    if (d->channel == &found->second)
        d->waitForDelivery(lock, listener);
}

void EventManager::triggerEvent(const Event& event)
{
    const EventType type = event.getEventType();
    std::unique_lock<std::mutex> lock(d->mutex);
    const auto found = d->channels.find(type.getName());
    if (found == d->channels.end() || found->second.listeners.empty() || d->stopping)
        return;
    d->queue.push_back({event, &found->second});
    if (d->thread.joinable()) {
        lock.unlock();
        d->wakeUp.notify_one();
        return;
    }
    // The new thread makes a virtual call, so it is waited for until it has made it: a manager that is
    // destroyed next must not lose its derived part under that call.
    d->thread = std::thread([this] { threadMain(); });
    d->waitFor(lock, [this] { return d->entered; });
}

void EventManager::triggerEvent(std::string type, std::string data)
{
    triggerEvent(Event(EventType(std::move(type)), EventData(std::move(data)), makeUniqueID()));
}

void EventManager::waitUntilIdle()
{
    std::unique_lock<std::mutex> lock(d->mutex);
    if (!d->isDispatchThread())
        d->waitFor(lock, [this] { return d->queue.empty() && !d->running; });
}

void EventManager::threadMain()
{
    // A handler may destroy this object; what is left then is the thread's own reference.
    const std::shared_ptr<Private> state = d;
    state->run();
}

} // namespace halvern::core::event
