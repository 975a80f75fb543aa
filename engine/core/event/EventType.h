#pragma once

#include "engine/Export.h"

#include <boost/shared_ptr.hpp>

#include <string>

namespace halvern::core::event {

/// Names a kind of event. Two types with the same name are the same type.
/// An immutable value: copies share the name and may be used from any thread.
class HALVERN_CORE_API EventType
{
public:
    /// The type with the empty name.
    EventType();

    /// Not explicit: a name is a type.
    EventType(std::string name);

    /// The reference lasts as long as this object.
    const std::string& getName() const;

    /** @{ */
    /// Compares names, byte by byte.
    bool operator==(const EventType& other) const;
    bool operator!=(const EventType& other) const;
    bool operator<(const EventType& other) const;
    /** @} */

private:
    boost::shared_ptr<const std::string> name;
};

} // namespace halvern::core::event
