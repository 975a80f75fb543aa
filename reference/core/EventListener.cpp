#include "engine/core/event/EventListener.h"

namespace halvern::core::event {

EventListener::~EventListener() = default;

} // namespace halvern::core::event
