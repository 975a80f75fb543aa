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
    Event();
    Event(EventType type, EventData data, std::string uniqueID);

    Event(const Event& other);
    Event(Event&& other) noexcept;
    Event& operator=(const Event& other);
    Event& operator=(Event&& other) noexcept;

    virtual EventType getEventType() const;
    virtual EventData getEventData() const;
    virtual std::string getUniqueID() const;
    virtual void setUniqueID(std::string uniqueID);
    virtual ~Event();

private:
    EventType type;
    EventData data;
    std::string uniqueID;
};

} // namespace halvern::core::event
