#pragma once

#include "engine/Export.h"
#include "engine/core/event/EventListener.h"

#ifndef Q_MOC_RUN
#    include <boost/function.hpp>
#    include <boost/shared_ptr.hpp>
#endif

#include <memory>
#include <string>

namespace halvern::core::event {

class EventManager;

/// A listener with a table of bound handlers, one per event type, and a manager to send through.
///
/// All operations may be called from any thread; the table and the manager pointer have a lock of
/// their own that is never held while a handler or the manager runs.
///
/// A derived class calls the qualified `setEventManager(empty)` as the first statement of its own
/// destructor: only then does no handler run in an object that is half destroyed.
class HALVERN_CORE_API EventBase : public EventListener
{
public:
    /// The manager may be empty: nothing is sent or received until setEventManager.
    explicit EventBase(boost::shared_ptr<EventManager> eventManager);

    EventBase(const EventBase&) = delete;
    EventBase& operator=(const EventBase&) = delete;

    /// Calls the handler bound to the event's type, in the caller's thread. An unknown type is ignored;
    /// an exception of the handler escapes.
    void handleEvent(Event event) override;

    ~EventBase() override;

    /// Empty when there is none.
    virtual boost::shared_ptr<EventManager> getEventManager();

    /// Removes all registrations from the old manager (when this returns none of its deliveries runs or
    /// will start, except the one it is called from), then registers with the new one in the order of
    /// registration. Registrations survive an empty manager.
    virtual void setEventManager(boost::shared_ptr<EventManager> eventManager);

    /// Listens without a handler: events of the type go to handleEvent.
    virtual void registerToListen(EventType type);

    /// Binds the handler, replacing the one bound to the type before, and listens. An empty handler binds
    /// nothing.
    virtual void registerHandler(EventType type, boost::function<void(Event)> handler);

    /** @{ */
    /// Sends through the manager; without one nothing happens. Of a type and a text the manager makes an
    /// event with a fresh unique ID.
    virtual void triggerEvent(std::string type, std::string data);
    virtual void triggerEvent(Event event);
    /** @} */

private:
    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace halvern::core::event
