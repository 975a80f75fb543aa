#include "engine/core/event/Event.h"

#include <utility>

namespace halvern::core::event {

Event::Event() = default;

Event::Event(EventType type, EventData data, std::string uniqueID) :
    type(std::move(type)), data(std::move(data)), uniqueID(std::move(uniqueID))
{}

Event::Event(const Event& other) = default;
Event::Event(Event&& other) noexcept = default;
Event& Event::operator=(const Event& other) = default;
Event& Event::operator=(Event&& other) noexcept = default;
Event::~Event() = default;

EventType Event::getEventType() const
{
    return type;
}

EventData Event::getEventData() const
{
    return data;
}

std::string Event::getUniqueID() const
{
    return uniqueID;
}

void Event::setUniqueID(std::string uniqueID)
{
    this->uniqueID = std::move(uniqueID);
}

} // namespace halvern::core::event
