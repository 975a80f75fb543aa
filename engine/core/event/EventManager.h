#pragma once

#include "engine/Export.h"
#include "engine/core/event/EventListener.h"

#include <memory>
#include <string>

namespace halvern::core::event {

/// Delivers every triggered event to each listener registered for its type, on a thread of its own.
///
/// All operations may be called from any thread, from handlers too.
/// - Events are delivered in the order of triggering, over all types and senders, one delivery at a
///   time; no lock is held while a listener runs.
/// - Whether a listener is registered is looked at again at each delivery.
/// - An event that nobody listens to is dropped at once.
/// - An exception out of a listener is caught; delivery goes on.
/// - The destructor stops and joins the thread and drops what is undelivered. The last reference may be
///   dropped inside a handler.
class HALVERN_CORE_API EventManager : public EventListener
{
public:
    /// Both values deliver on the manager's own thread, started at the first event that somebody
    /// listens to.
    explicit EventManager(bool threaded);
    ~EventManager() override;

    EventManager(const EventManager&) = delete;
    EventManager& operator=(const EventManager&) = delete;

    /// The same as triggerEvent(event): one manager can listen to another.
    void handleEvent(Event event) override;

    /// Whether the listener is registered for any type.
    virtual bool isRegistered(EventListener* listener);

    /// Writes the registrations to std::cout, a line per type and listener.
    virtual void print();

    /// Registering the same pair again has no effect; a null listener is ignored.
    virtual void registerEventListener(EventListener* listener, EventType type);

    /** @{ */
    /// A barrier: when it returns, no delivery (of the type, if one is given) to the listener runs or will
    /// start. Called from inside that very delivery it does not wait for it. Removing who is not registered
    /// is no error.
    virtual void removeEventListener(EventListener* listener);
    virtual void removeEventListener(EventListener* listener, EventType type);
    /** @} */

    /// Queues the event; never waits for a delivery.
    virtual void triggerEvent(const Event& event);

    /// Queues an event with a fresh unique ID, through the virtual operation.
    void triggerEvent(std::string type, std::string data);

    /// Returns when the queue is empty and no delivery runs; at once on the manager's own thread.
    virtual void waitUntilIdle();

protected:
    /// The body of the manager's thread.
    virtual void threadMain();

private:
    struct Private;
    const std::shared_ptr<Private> d;
};

} // namespace halvern::core::event
