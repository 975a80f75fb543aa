#pragma once

#include <functional>
#include <memory>
#include <mutex>

namespace halvern::scene {

/// A thread that runs a cycle sixty times a second; a deadline that has passed is skipped. Any thread.
class SceneThread
{
public:
    SceneThread();

    /// The same as stop().
    ~SceneThread();

    /// Runs the cycle until stop(), or until it returns false. Running already, this does nothing.
    void start(std::function<bool()> cycle);

    /// Waits for a running cycle, except when called from inside it.
    void stop();

private:
    class Loop;
    std::mutex mutex; // guards the pointer
    std::shared_ptr<Loop> loop;
};

} // namespace halvern::scene
