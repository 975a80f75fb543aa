#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace halvern::test {

/// Closed until opened; then it stays open. Lets one thread wait for another without sleeping.
class Gate
{
public:
    void open()
    {
        const std::lock_guard<std::mutex> lock(mutex);
        isOpen = true;
        changed.notify_all();
    }

    /// Whether the gate was opened before the time ran out.
    [[nodiscard]] bool wait(std::chrono::milliseconds limit = std::chrono::seconds(10))
    {
        std::unique_lock<std::mutex> lock(mutex);
        return changed.wait_for(lock, limit, [this] { return isOpen; });
    }

private:
    std::mutex mutex;
    std::condition_variable changed;
    bool isOpen = false;
};

} // namespace halvern::test
