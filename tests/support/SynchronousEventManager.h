#pragma once

#include "tests/support/RecordingEventManager.h"

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace halvern::test {

/// A host's own manager: delivers inside triggerEvent, in the sender's thread, and records. Several
/// threads may deliver at a time. An exception out of a listener is caught and counted.
class SynchronousEventManager : public RecordingEventManager
{
public:
    using RecordingEventManager::triggerEvent;

    void triggerEvent(const core::event::Event& event) override
    {
        record(event);
        for (auto* listener : getListeners(event.getEventType()))
            deliver(listener, event);
    }

    bool isRegistered(core::event::EventListener* listener) override
    {
        const std::lock_guard<std::mutex> lock(mutex);
        return std::any_of(registrations.begin(), registrations.end(),
                           [listener](const auto& entry) { return entry.first == listener; });
    }

    void registerEventListener(core::event::EventListener* listener, core::event::EventType type) override
    {
        const std::lock_guard<std::mutex> lock(mutex);
        const Registration registration(listener, type);
        const auto found = std::find(registrations.begin(), registrations.end(), registration);
        if (listener && found == registrations.end())
            registrations.push_back(registration);
    }

    void removeEventListener(core::event::EventListener* listener) override
    {
        remove(listener, [listener](const Registration& entry) { return entry.first == listener; });
    }

    void removeEventListener(core::event::EventListener* listener, core::event::EventType type) override
    {
        remove(listener, [&](const Registration& entry) { return entry == Registration(listener, type); });
    }

    /// Every event was delivered when its triggerEvent returned.
    void waitUntilIdle() override {}

    std::size_t getExceptionCount() const
    {
        const std::lock_guard<std::mutex> lock(mutex);
        return exceptions;
    }

private:
    using Registration = std::pair<core::event::EventListener*, core::event::EventType>;
    using Running = std::pair<core::event::EventListener*, std::thread::id>;

    std::vector<core::event::EventListener*> getListeners(const core::event::EventType& type) const
    {
        const std::lock_guard<std::mutex> lock(mutex);
        std::vector<core::event::EventListener*> listeners;
        for (const auto& entry : registrations)
            if (entry.second == type)
                listeners.push_back(entry.first);
        return listeners;
    }

    bool begin(core::event::EventListener* listener, const core::event::EventType& type)
    {
        const std::lock_guard<std::mutex> lock(mutex);
        const Registration registration(listener, type);
        if (std::find(registrations.begin(), registrations.end(), registration) == registrations.end())
            return false;
        running.emplace_back(listener, std::this_thread::get_id());
        return true;
    }

    void deliver(core::event::EventListener* listener, const core::event::Event& event)
    {
        if (!begin(listener, event.getEventType()))
            return;
        bool thrown = false;
        try {
            listener->handleEvent(event);
        } catch (...) {
            thrown = true;
        }
        const std::lock_guard<std::mutex> lock(mutex);
        exceptions += thrown ? 1 : 0;
        running.erase(
            std::find(running.begin(), running.end(), Running(listener, std::this_thread::get_id())));
        finished.notify_all();
    }

    /// Removes what matches and waits for the listener's deliveries in other threads.
    template <class Matches>
    void remove(core::event::EventListener* listener, Matches matches)
    {
        std::unique_lock<std::mutex> lock(mutex);
        registrations.erase(std::remove_if(registrations.begin(), registrations.end(), matches),
                            registrations.end());
        finished.wait(lock, [&] {
            return std::none_of(running.begin(), running.end(), [listener](const Running& entry) {
                return entry.first == listener && entry.second != std::this_thread::get_id();
            });
        });
    }

    mutable std::mutex mutex;
    std::condition_variable finished;
    std::vector<Registration> registrations;
    std::vector<Running> running;
    std::size_t exceptions = 0;
};

} // namespace halvern::test
