#include "engine/core/event/EventBase.h"

#include "engine/core/event/EventManager.h"

#include <algorithm>
#include <map>
#include <mutex>
#include <utility>
#include <vector>

namespace halvern::core::event {

using ManagerPointer = boost::shared_ptr<EventManager>;

struct EventBase::Private
{
    std::mutex mutex;
    ManagerPointer manager;
    unsigned long managerChanges = 0;
    std::vector<EventType> types; ///< In the order of registration.
    std::map<EventType, boost::function<void(Event)>> handlers;

    bool isChangedSince(unsigned long change)
    {
        const std::lock_guard<std::mutex> lock(mutex);
        return managerChanges != change;
    }

    /// Binds the type if there is a handler, and listens.
    void listen(EventBase* self, const EventType& type, boost::function<void(Event)> handler)
    {
        std::unique_lock<std::mutex> lock(mutex);
        if (handler)
            handlers[type].swap(handler);
        if (std::find(types.begin(), types.end(), type) == types.end())
            types.push_back(type);
        const ManagerPointer target = manager;
        const unsigned long change = managerChanges;
        lock.unlock();

        if (!target)
            return;
        target->registerEventListener(self, type);
        if (isChangedSince(change))
            settle(self, target);
    }

    /// Registers everything with the target, or removes it if the target is not the manager (any more).
    /// The target is called with no lock held, so another thread may set a manager meanwhile; then what
    /// was done may be the opposite of what is wanted now and is done again.
    void settle(EventBase* self, const ManagerPointer& target)
    {
        std::unique_lock<std::mutex> lock(mutex);
        unsigned long change = 0;
        do {
            change = managerChanges;
            const bool wanted = manager == target;
            const std::vector<EventType> all = types;
            lock.unlock();
            if (!wanted)
                target->removeEventListener(self);
            else
                for (const EventType& type : all)
                    target->registerEventListener(self, type);
            lock.lock();
        } while (managerChanges != change);
    }
};

EventBase::EventBase(boost::shared_ptr<EventManager> eventManager) : d(std::make_unique<Private>())
{
    d->manager = std::move(eventManager);
}

EventBase::~EventBase()
{
    EventBase::setEventManager({});
}

void EventBase::handleEvent(Event event)
{
    boost::function<void(Event)> handler;
    {
        const std::lock_guard<std::mutex> lock(d->mutex);
        const auto found = d->handlers.find(event.getEventType());
        if (found != d->handlers.end())
            handler = found->second;
    }
    if (handler)
        handler(std::move(event));
}

boost::shared_ptr<EventManager> EventBase::getEventManager()
{
    const std::lock_guard<std::mutex> lock(d->mutex);
    return d->manager;
}

void EventBase::setEventManager(boost::shared_ptr<EventManager> eventManager)
{
    ManagerPointer old = eventManager;
    std::unique_lock<std::mutex> lock(d->mutex);
    d->manager.swap(old);
    const unsigned long change = ++d->managerChanges;
    lock.unlock();

    if (old)
        old->removeEventListener(this);
    if (eventManager)
        d->settle(this, eventManager);
    if (old && d->isChangedSince(change))
        d->settle(this, old);
}

void EventBase::registerToListen(EventType type)
{
    d->listen(this, type, {});
}

void EventBase::registerHandler(EventType type, boost::function<void(Event)> handler)
{
    d->listen(this, type, std::move(handler));
}

void EventBase::triggerEvent(std::string type, std::string data)
{
    if (const ManagerPointer manager = getEventManager())
        manager->triggerEvent(std::move(type), std::move(data));
}

void EventBase::triggerEvent(Event event)
{
    if (const ManagerPointer manager = getEventManager())
        manager->triggerEvent(event);
}

} // namespace halvern::core::event
