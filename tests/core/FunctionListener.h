#pragma once

#include "engine/core/event/EventListener.h"

#include <functional>
#include <utility>

namespace halvern::test {

/// Calls a function with each event.
class FunctionListener : public core::event::EventListener
{
public:
    explicit FunctionListener(std::function<void(const core::event::Event&)> function) :
        function(std::move(function))
    {}

    void handleEvent(core::event::Event event) override { function(event); }

private:
    const std::function<void(const core::event::Event&)> function;
};

} // namespace halvern::test
