/// What the event system costs, compared with the least that could do its work.
#include "bench/Measure.h"
#include "engine/core/event/EventManager.h"

#include <boost/function.hpp>

#include <condition_variable>
#include <cstdlib>
#include <deque>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

using namespace halvern::core::event;

/// A mutex, a condition, a queue: what delivery on a thread costs without types and registrations.
class PlainQueue
{
public:
    explicit PlainQueue(boost::function<void(Event)> function) : function(std::move(function)) {}

    ~PlainQueue()
    {
        push(Event(), true);
        thread.join();
    }

    void push(const Event& event, bool last = false)
    {
        {
            const std::lock_guard<std::mutex> lock(mutex);
            queue.push_back(event);
            stopping = last;
        }
        changed.notify_one();
    }

private:
    void run()
    {
        std::unique_lock<std::mutex> lock(mutex);
        while (true) {
            changed.wait(lock, [this] { return !queue.empty(); });
            Event event = std::move(queue.front());
            queue.pop_front();
            if (stopping && queue.empty())
                return;
            lock.unlock();
            function(std::move(event));
            lock.lock();
        }
    }

    const boost::function<void(Event)> function;
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<Event> queue;
    bool stopping = false;
    std::thread thread{[this] { run(); }};
};

class CountingListener : public EventListener
{
public:
    explicit CountingListener(int& count) : count(count) {}
    void handleEvent(Event event) override { count += event.getEventType().getName().empty() ? 0 : 1; }

private:
    int& count;
};

template <class Send>
void sendFrom(int senders, int events, Send send)
{
    std::vector<std::thread> threads;
    for (int i = 1; i < senders; ++i)
        threads.emplace_back([&] {
            for (int n = 0; n < events / senders; ++n)
                send();
        });
    for (int n = 0; n < events / senders; ++n)
        send();
    for (std::thread& thread : threads)
        thread.join();
}

bool compareDispatch(const char* question, int senders)
{
    constexpr int events = 300000;
    const Event event(EventType("NodeTransformationUpdate"), EventData("Node_1, QtScene"), "12345");
    int count = 0;
    CountingListener listener(count);
    const auto managed = [&] {
        EventManager manager(false);
        // As many types as a studio has.
        for (int i = 0; i < 20; ++i)
            manager.registerEventListener(&listener, EventType("Type" + std::to_string(i)));
        manager.registerEventListener(&listener, event.getEventType());
        sendFrom(senders, events, [&] { manager.triggerEvent(event); });
        manager.waitUntilIdle();
    };
    const auto plain = [&] {
        PlainQueue queue([&](Event received) { listener.handleEvent(std::move(received)); });
        sendFrom(senders, events, [&] { queue.push(event); });
    };
    return halvern::bench::compare(question, 1.3, 11, managed, plain);
}

std::size_t cutOnce(const std::string& text)
{
    std::size_t sum = 0;
    std::size_t begin = 0;
    for (std::size_t end = 0; end != std::string::npos; begin = end + 2) {
        end = text.find(", ", begin);
        sum += text.substr(begin, end - begin).size();
    }
    return sum;
}

bool compareArguments()
{
    constexpr int repeats = 300000;
    const std::string text = "Node_1, 4294967295, 12, 640, 480, DropMaterial";
    const EventData data(text);
    volatile std::size_t sink = 0;
    const auto arguments = [&] {
        for (int i = 0; i < repeats; ++i)
            for (int n = 1; n <= 6; ++n)
                sink = sink + data.getArg(n).size();
    };
    const auto cut = [&] {
        for (int i = 0; i < repeats; ++i)
            sink = sink + cutOnce(text);
    };
    return halvern::bench::compare("getArg of six arguments : one find-and-substr scan", 3, 21, arguments,
                                   cut);
}

} // namespace

int main()
{
    bool holds = compareDispatch("dispatch, one sender : mutex-and-condition queue", 1);
    holds &= compareDispatch("dispatch, three senders : mutex-and-condition queue", 3);
    holds &= compareArguments();
    return holds ? EXIT_SUCCESS : EXIT_FAILURE;
}
