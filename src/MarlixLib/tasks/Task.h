#pragma once

#include <MarlixLib/MarlixLibExport.h>
#include <MarlixLib/base/Aliases.h>
#include <MarlixLib/base/Function.h>

#include <atomic>
#include <cstdint>
#include <exception>

namespace Marlix {

class Scheduler;

/// Where a Task is in its life; it only moves forward, Queued to Running to Finished or Failed.
enum class TaskState : std::uint8_t
{
    Queued, ///< Waiting for a worker, or for a wait() that runs it.
    Running, ///< The work is running on some thread.
    Finished, ///< The work returned.
    Failed, ///< The work threw; the task keeps the exception.
};

/// One piece of work handed to a Scheduler. An exception thrown by the work is kept: it is reported by getFailure()
/// and rethrowFailure(), and a failure that nobody has read when the task is destroyed goes to the unhandled failure
/// handler, so no failure passes unnoticed.
class MARLIXLIB_EXPORT Task
{
public:
    using State = TaskState; ///< Task::State::Running reads better at the call site.

    /// A queued task for \p work; an empty function raises the stop exception. Usually made by Scheduler::submit.
    explicit Task(Function<void()> work);
    ~Task();
    Task(const Task&) = delete;
    Task& operator=(const Task&) = delete;

    State getState() const noexcept { return state.load(std::memory_order_acquire); } ///< Safe from any thread.
    /// Finished or failed.
    bool isDone() const noexcept;

    /// Blocks until the task is done. A task that no worker has started yet runs on the calling thread instead, so
    /// waiting from inside another task never deadlocks the pool.
    void wait();

    /// The exception the work threw, null unless the state is Failed. Reading it counts as handling it.
    std::exception_ptr getFailure() const;
    /// The failure's message, empty unless the state is Failed. Reading it counts as handling it.
    String getFailureMessage() const;
    /// Waits, then throws the task's exception again if it failed.
    void rethrowFailure();

    /// Calls f once the task is done, on the thread that completed it; at once on this thread if it is done already.
    void whenDone(Function<void(Task&)> f);

    /// Runs the work on this thread unless another thread has claimed it; true when this call ran it.
    bool run();

private:
    std::atomic<State> state { State::Queued };
    Function<void()> work;
    std::exception_ptr failure;
    mutable std::atomic<bool> failureSeen { false };
    Mutex doneMutex;
    Array<Function<void(Task&)>> doneHandlers;
};

} // namespace Marlix
