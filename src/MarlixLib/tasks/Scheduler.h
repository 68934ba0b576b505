#pragma once

#include <MarlixLib/MarlixLibExport.h>
#include <MarlixLib/base/Aliases.h>
#include <MarlixLib/base/Function.h>
#include <MarlixLib/tasks/Task.h>

#include <condition_variable>
#include <cstddef>
#include <deque>

namespace Marlix {

class StandbyThread;

/// A fixed pool of worker threads that run submitted tasks in submission order. Safe to use from any thread.
///
/// The process has two shared instances: the high-priority one for short work a user waits for (histograms, previews)
/// and the normal-priority one for long background work. They are separate pools, so a queue of long work never
/// delays short work.
class MARLIXLIB_EXPORT Scheduler
{
public:
    /// Worker threads are named "<name>.<index>" (cut to the system's limit).
    Scheduler(String name, std::size_t threadCount);
    /// Runs every queued task to its end, then joins the workers.
    ~Scheduler();
    Scheduler(const Scheduler&) = delete;
    Scheduler& operator=(const Scheduler&) = delete;

    /// The shared pool for short work a user waits for, one thread per core ("MarlixHigh"); made on first use.
    static Scheduler& highPriorityInstance();
    /// The shared pool for long background work, one thread per core ("MarlixNormal"); made on first use.
    static Scheduler& normalPriorityInstance();

    /// Queues the work; the returned task tells its state and keeps its failure.
    SharedPtr<Task> submit(Function<void()> work);

    /// Blocks until no task is queued or running.
    void waitForIdle();

    const String& getName() const noexcept { return name; } ///< The name the worker threads are named after.
    std::size_t getThreadCount() const noexcept { return workers.size(); } ///< The number of worker threads.

private:
    void work(std::stop_token stop);

    String name;
    Mutex mutex;
    std::condition_variable_any queueChanged;
    std::condition_variable_any idle;
    std::deque<SharedPtr<Task>> queue;
    std::size_t unfinished = 0;
    bool accepting = true;
    Array<UniquePtr<StandbyThread>> workers;
};

} // namespace Marlix
