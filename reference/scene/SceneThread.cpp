#include "reference/scene/SceneThread.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <thread>
#include <utility>

namespace halvern::scene {

using Clock = std::chrono::steady_clock;

static constexpr Clock::duration CycleTime = std::chrono::nanoseconds(1'000'000'000 / 60);

/// The thread from a start() to a stop(). It holds this itself: a stop() from inside a cycle does not
/// wait for it.
class SceneThread::Loop
{
public:
    static std::shared_ptr<Loop> make(std::function<bool()> cycle)
    {
        auto loop = std::make_shared<Loop>();
        loop->thread = std::thread([loop, cycle = std::move(cycle)] { loop->run(cycle); });
        return loop;
    }

    ~Loop()
    {
        if (thread.joinable())
            thread.detach(); // at the end of the thread itself
    }

    bool isStopped()
    {
        std::lock_guard lock(mutex);
        return stopped;
    }

    void stop()
    {
        {
            std::lock_guard lock(mutex);
            stopped = true;
        }
        wake.notify_all();
    }

    /// Not for the thread itself.
    void join()
    {
        if (threadID.load() == std::this_thread::get_id())
            return;
        std::lock_guard lock(joining);
        if (thread.joinable())
            thread.join();
    }

private:
    void run(const std::function<bool()>& cycle)
    {
        threadID = std::this_thread::get_id();
        Clock::time_point deadline = Clock::now();
        while (!isStopped() && cycle()) {
            const Clock::duration late = Clock::now() - deadline;
            deadline += CycleTime * (late / CycleTime + 1);
            std::unique_lock lock(mutex);
            wake.wait_until(lock, deadline, [&] { return stopped; });
        }
    }

    std::thread thread;
    std::atomic<std::thread::id> threadID{std::thread::id()};
    std::mutex joining; // held while one of the callers of join() waits

    std::mutex mutex; // guards what follows
    bool stopped = false;
    std::condition_variable wake;
};

SceneThread::SceneThread() = default;

SceneThread::~SceneThread()
{
    stop();
}

void SceneThread::start(std::function<bool()> cycle)
{
    std::shared_ptr<Loop> before;
    {
        std::lock_guard lock(mutex);
        if (loop && !loop->isStopped())
            return;
        before = std::exchange(loop, Loop::make(std::move(cycle)));
    }
    if (before)
        before->join(); // it was stopped from inside its last cycle
}

void SceneThread::stop()
{
    std::unique_lock lock(mutex);
    const auto running = loop;
    lock.unlock();
    if (!running)
        return;
    running->stop();
    running->join();
}

} // namespace halvern::scene
