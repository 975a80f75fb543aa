#include "engine/core/event/EventManager.h"

#include "reference/core/ListenerRegistry.h"

#include <atomic>
#include <future>
#include <iostream>
#include <mutex>
#include <sstream>
#include <thread>
#include <utility>

namespace halvern::core::event {

namespace {

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
    EventQueue queue;
    ListenerRegistry registry;
    std::once_flag started;
    std::promise<void> entered;
    std::thread thread;
};

EventManager::EventManager(bool) : d(std::make_shared<Private>()) {}

EventManager::~EventManager()
{
    d->queue.stop();
    if (d->queue.isTaker())
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
    return d->registry.contains(listener);
}

void EventManager::print()
{
    std::ostringstream registrations;
    d->registry.print(registrations);
    std::cout << registrations.str() << std::flush;
}

void EventManager::registerEventListener(EventListener* listener, EventType type)
{
    if (listener)
        d->registry.add(listener, type);
}

void EventManager::removeEventListener(EventListener* listener)
{
    d->registry.remove(listener);
}

void EventManager::removeEventListener(EventListener* listener, EventType type)
{
    d->registry.remove(listener, type);
}

void EventManager::triggerEvent(const Event& event)
{
    Channel* const channel = d->registry.findListened(event.getEventType());
    if (!channel)
        return;
    d->queue.push({channel, event.getEventData(), event.getUniqueID()});
    // The new thread makes a virtual call, so it is waited for until it has made it: a manager that is
    // destroyed next must not lose its derived part under that call.
    std::call_once(d->started, [this] {
        d->thread = std::thread([this] { threadMain(); });
        d->entered.get_future().wait();
    });
}

void EventManager::triggerEvent(std::string type, std::string data)
{
    triggerEvent(Event(EventType(std::move(type)), EventData(std::move(data)), makeUniqueID()));
}

void EventManager::waitUntilIdle()
{
    d->queue.waitUntilIdle();
}

void EventManager::threadMain()
{
    // A handler may destroy this object; what is left then is the thread's own reference.
    const std::shared_ptr<Private> state = d;
    state->entered.set_value();
    state->registry.deliver(state->queue);
}

} // namespace halvern::core::event
