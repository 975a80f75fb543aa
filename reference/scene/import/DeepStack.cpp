#include "reference/scene/import/DeepStack.h"

#include <pthread.h>

#include <exception>

namespace halvern::scene {

/// Address space only: what is not used takes no memory.
static constexpr size_t StackSize = size_t(512) * 1024 * 1024;

namespace {

struct Task
{
    const std::function<void()>& function;
    std::exception_ptr error;

    void run()
    {
        try {
            function();
        } catch (...) {
            error = std::current_exception();
        }
    }
};

void* runTask(void* task)
{
    static_cast<Task*>(task)->run();
    return nullptr;
}

} // namespace

void runOnDeepStack(const std::function<void()>& function)
{
    Task task{function, nullptr};
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, StackSize);
    pthread_t thread;
    const bool isStarted = pthread_create(&thread, &attributes, runTask, &task) == 0;
    pthread_attr_destroy(&attributes);
    if (isStarted)
        pthread_join(thread, nullptr);
    else
        task.run(); // better a small stack than none
    if (task.error)
        std::rethrow_exception(task.error);
}

} // namespace halvern::scene
