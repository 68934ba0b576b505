#include <MarlixLib/base/Exception.h>
#include <MarlixLib/tasks/Scheduler.h>
#include <MarlixLib/tasks/StandbyThread.h>

#include <algorithm>
#include <thread>

namespace Marlix {

namespace {

std::size_t defaultThreadCount()
{
    return std::max(1u, std::thread::hardware_concurrency());
}

} // namespace

Scheduler::Scheduler(String name, std::size_t threadCount)
    : name(std::move(name))
{
    if (threadCount == 0)
        Detail::throwStopException("tasks/Scheduler", __LINE__);
    workers.reserve(threadCount);
    for (std::size_t i = 0; i < threadCount; ++i)
        workers.push_back(std::make_unique<StandbyThread>(
            this->name + "." + std::to_string(i), 0, [this](std::stop_token stop) { work(std::move(stop)); }));
}

Scheduler::~Scheduler()
{
    {
        std::lock_guard lock(mutex);
        accepting = false;
    }
    // Each worker drains the queue before it honours the stop request.
    workers.clear();
}

Scheduler& Scheduler::highPriorityInstance()
{
    static Scheduler instance("MarlixHigh", defaultThreadCount());
    return instance;
}

Scheduler& Scheduler::normalPriorityInstance()
{
    static Scheduler instance("MarlixNormal", defaultThreadCount());
    return instance;
}

SharedPtr<Task> Scheduler::submit(Function<void()> f)
{
    auto task = makeSharedPtr<Task>(std::move(f));
    {
        std::lock_guard lock(mutex);
        if (!accepting)
            Detail::throwStopException("tasks/Scheduler", __LINE__);
        queue.push_back(task);
        ++unfinished;
    }
    queueChanged.notify_one();
    return task;
}

void Scheduler::waitForIdle()
{
    std::unique_lock lock(mutex);
    idle.wait(lock, [this] { return unfinished == 0; });
}

void Scheduler::work(std::stop_token stop)
{
    for (;;) {
        SharedPtr<Task> task;
        {
            std::unique_lock lock(mutex);
            queueChanged.wait(lock, stop, [this] { return !queue.empty(); });
            if (queue.empty())
                return;
            task = std::move(queue.front());
            queue.pop_front();
        }
        // A waiting thread may have claimed the task and still be running it: it counts as unfinished until it ends.
        if (!task->run())
            task->wait();
        task.reset();
        bool nowIdle;
        {
            std::lock_guard lock(mutex);
            nowIdle = --unfinished == 0;
        }
        if (nowIdle)
            idle.notify_all();
    }
}

} // namespace Marlix
