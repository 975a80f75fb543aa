#pragma once

#include "engine/core/event/EventListener.h"

#include <list>
#include <map>
#include <mutex>
#include <string>
#include <utility>

namespace halvern::qt {

/// Events in the order of their arrival. Of those with the same type and data only the last is kept, so
/// that a queue which nobody takes from grows no longer than there are different events. Any thread.
class EventQueue
{
public:
    using Events = std::list<HCE::Event>;

    void append(HCE::Event event);

    /// All events, which leave the queue; empty when there are none.
    Events takeAll();

private:
    using Key = std::pair<std::string, std::string>; // type and data

    std::mutex mutex;
    Events events;
    std::map<Key, Events::iterator> places;
};

} // namespace halvern::qt
