#pragma once

#include "engine/core/event/EventManager.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <vector>

namespace halvern::test {

/// Keeps every event that is triggered. Delivers nothing, or everything as a plain EventManager does.
class RecordingEventManager : public core::event::EventManager
{
public:
    enum class Delivery { None, Threaded };

    explicit RecordingEventManager(Delivery delivery = Delivery::None) :
        EventManager(false), delivery(delivery)
    {}

    using EventManager::triggerEvent;

    void triggerEvent(const core::event::Event& event) override
    {
        record(event);
        if (delivery == Delivery::Threaded)
            EventManager::triggerEvent(event);
    }

    /// All recorded events, in the order of triggering.
    std::vector<core::event::Event> getEvents() const
    {
        const std::lock_guard<std::mutex> lock(mutex);
        return events;
    }

    /// The data of the recorded events of one type.
    std::vector<std::string> getData(const std::string& type) const
    {
        std::vector<std::string> data;
        for (const auto& event : getEvents())
            if (event.getEventType().getName() == type)
                data.push_back(event.getEventData().getData());
        return data;
    }

    std::size_t getCount() const { return getEvents().size(); }
    std::size_t getCount(const std::string& type) const { return getData(type).size(); }

    void clear()
    {
        const std::lock_guard<std::mutex> lock(mutex);
        events.clear();
    }

    /// Whether `count` events of the type were recorded before the time ran out.
    bool waitForCount(const std::string& type, std::size_t count,
                      std::chrono::milliseconds limit = std::chrono::seconds(10))
    {
        const auto enough = [&] {
            std::size_t found = 0;
            for (const auto& event : events)
                found += event.getEventType().getName() == type ? 1 : 0;
            return found >= count;
        };
        std::unique_lock<std::mutex> lock(mutex);
        return recorded.wait_for(lock, limit, enough);
    }

protected:
    void record(const core::event::Event& event)
    {
        const std::lock_guard<std::mutex> lock(mutex);
        events.push_back(event);
        recorded.notify_all();
    }

private:
    const Delivery delivery;
    mutable std::mutex mutex;
    std::condition_variable recorded;
    std::vector<core::event::Event> events;
};

} // namespace halvern::test
