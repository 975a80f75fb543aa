#pragma once

#include "engine/core/event/EventBase.h"

#include <boost/optional.hpp>

#include <mutex>
#include <string>
#include <vector>

namespace halvern::engine {

/// A pick request that waits for the next update.
struct PickRequest
{
    int x;
    int y;
    std::string tag;
};

/// What reached a window from other threads, kept until the window takes it; and what the window sends.
class WindowEvents : public core::event::EventBase
{
public:
    struct Pending
    {
        boost::optional<std::string> activeCamera; ///< SID
        boost::optional<std::string> selection;    ///< node ID, empty for none
        std::vector<PickRequest> picks;
    };

    explicit WindowEvents(boost::shared_ptr<core::event::EventManager> eventManager);
    ~WindowEvents() override;

    /// Keeps the request and asks for a frame. Any thread.
    void requestPick(PickRequest request);

    Pending take();

private:
    template <class Change>
    void keep(Change change);

    std::mutex mutex;
    Pending pending;
};

} // namespace halvern::engine
