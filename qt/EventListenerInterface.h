#pragma once

#include "engine/core/event/EventListener.h"

#include <QObject>

// Lets qobject_cast and Q_INTERFACES know the listeners of the event system, in the spelling of the widgets'
// declarations.
Q_DECLARE_INTERFACE(HCE::EventListener, "HCE::EventListener")
