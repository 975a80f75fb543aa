#include "engine/core/event/EventType.h"

#include <boost/smart_ptr/make_shared.hpp>

#include <utility>

namespace halvern::core::event {

// No pointer stands for the empty name: it costs nothing, and a moved-from type is safe to read.
EventType::EventType() = default;

EventType::EventType(std::string name)
{
    if (!name.empty())
        this->name = boost::make_shared<std::string>(std::move(name));
}

const std::string& EventType::getName() const
{
    static const std::string empty;
    return name ? *name : empty;
}

bool EventType::operator==(const EventType& other) const
{
    return name == other.name || getName() == other.getName();
}

bool EventType::operator!=(const EventType& other) const
{
    return !(*this == other);
}

bool EventType::operator<(const EventType& other) const
{
    return getName() < other.getName();
}

} // namespace halvern::core::event
