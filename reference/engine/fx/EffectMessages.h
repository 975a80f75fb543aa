#pragma once

#include "engine/core/event/EventBase.h"

#include <boost/algorithm/string/replace.hpp>

#include <algorithm>
#include <string>

namespace halvern::engine::fx {

/// Has the views show what is wrong with an effect.
inline void showEffectError(core::event::EventBase& sender, std::string message)
{
    // A comma would end the text, a line feed the line.
    boost::replace_all(message, "','", "a comma");
    std::replace(message.begin(), message.end(), ',', ';');
    std::replace(message.begin(), message.end(), '\n', ' ');
    sender.triggerEvent("DisplayMessageAt", message + ", 20, 40");
}

} // namespace halvern::engine::fx
