#pragma once

#include "engine/Export.h"
#include "engine/core/event/Event.h"

namespace halvern::core::event {

/// What an EventManager delivers to.
class HALVERN_CORE_API EventListener
{
public:
    /// Called by the event manager for each event of a registered type, on the manager's thread; a
    /// host's own manager may call it in the sender's thread. Exceptions are the manager's to catch.
    virtual void handleEvent(Event event) = 0;

    /// A listener that is still registered must remove itself before its destructor gets here.
    virtual ~EventListener();
};

} // namespace halvern::core::event

/// The event namespace as the declarations of the widgets spell it. The meta-object compiler copies
/// this spelling into class and parameter names.
namespace HCE = halvern::core::event;
