#pragma once

#include "engine/core/event/EventBase.h"

#include <boost/algorithm/string/replace.hpp>

#include <algorithm>
#include <string>

namespace halvern::engine::fx {

/// Has the views show what is wrong with a file, whose name the message begins with. Its folder is left out:
/// views cut off what is too long for them.
inline void showEffectError(core::event::EventBase& sender, std::string message)
{
    message.erase(0, message.rfind('/', message.find(": ")) + 1);
    // A comma would end the text, a line feed the line.
    boost::replace_all(message, "','", "a comma");
    std::replace(message.begin(), message.end(), ',', ';');
    std::replace(message.begin(), message.end(), '\n', ' ');
    sender.triggerEvent("DisplayMessageAt", message + ", 20, 40");
}

} // namespace halvern::engine::fx
