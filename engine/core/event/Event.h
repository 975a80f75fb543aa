#pragma once

#include "engine/Export.h"
#include "engine/core/event/EventData.h"
#include "engine/core/event/EventType.h"

#include <string>

namespace halvern::core::event {

/// A type, its arguments and an ID that is the event's own. A value, copied freely across threads.
class HALVERN_CORE_API Event
{
public:
    /// Empty type, data and ID: for containers and meta types.
    Event();

    /// The ID is taken as it is. EventManager::triggerEvent of a type and a text makes one that no other
    /// event has.
    Event(EventType type, EventData data, std::string uniqueID);

    /** @{ */
    /// Copies share the texts of type and data.
    Event(const Event& other);
    Event(Event&& other) noexcept;
    Event& operator=(const Event& other);
    Event& operator=(Event&& other) noexcept;
    /** @} */

    /// What listeners register for.
    virtual EventType getEventType() const;

    /// The arguments.
    virtual EventData getEventData() const;

    /** @{ */
    /// Tells the event from others of the same type and data. The event manager neither needs nor changes it.
    virtual std::string getUniqueID() const;
    virtual void setUniqueID(std::string uniqueID);
    /** @} */

    virtual ~Event();

private:
    EventType type;
    EventData data;
    std::string uniqueID;
};

} // namespace halvern::core::event
