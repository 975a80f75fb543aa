#include "reference/engine/WindowEvents.h"

#include "engine/core/event/EventManager.h"

#include <utility>

namespace halvern::engine {

using core::event::Event;

WindowEvents::WindowEvents(boost::shared_ptr<core::event::EventManager> eventManager) :
    EventBase(eventManager)
{
    registerHandler(std::string("ActiveCamera"), [this](const Event& event) {
        keep([&](Pending& kept) { kept.activeCamera = event.getEventData().getData(); });
    });
    registerHandler(std::string("ObjectSelected"), [this](const Event& event) {
        keep([&](Pending& kept) { kept.selection = event.getEventData().getArg(1); });
    });
}

WindowEvents::~WindowEvents()
{
    EventBase::setEventManager({});
}

void WindowEvents::requestPick(PickRequest request)
{
    keep([&](Pending& kept) { kept.picks.push_back(std::move(request)); });
}

WindowEvents::Pending WindowEvents::take()
{
    const std::lock_guard<std::mutex> lock(mutex);
    return std::exchange(pending, {});
}

template <class Change>
void WindowEvents::keep(Change change)
{
    {
        const std::lock_guard<std::mutex> lock(mutex);
        change(pending);
    }
    triggerEvent("SyncScene", "");
}

} // namespace halvern::engine
