#include <MarlixLib/base/Exception.h>
#include <MarlixLib/tasks/Task.h>
#include <MarlixLib/tasks/UnhandledFailure.h>

namespace Marlix {

Task::Task(Function<void()> work)
    : work(std::move(work))
{
    if (!this->work)
        Detail::throwStopException("tasks/Task", __LINE__);
}

Task::~Task()
{
    if (getState() == State::Failed && !failureSeen.load())
        reportUnhandledFailure("task", failure);
}

bool Task::isDone() const noexcept
{
    const State s = getState();
    return s == State::Finished || s == State::Failed;
}

bool Task::run()
{
    State expected = State::Queued;
    if (!state.compare_exchange_strong(expected, State::Running, std::memory_order_acq_rel))
        return false;
    State result = State::Finished;
    try {
        work();
    } catch (...) {
        failure = std::current_exception();
        result = State::Failed;
    }
    // The captures may hold large buffers or entity copies: release them as soon as the work is over.
    work = nullptr;

    Array<Function<void(Task&)>> handlers;
    {
        std::lock_guard lock(doneMutex);
        state.store(result, std::memory_order_release);
        handlers.swap(doneHandlers);
    }
    state.notify_all();
    for (const auto& handler : handlers) {
        try {
            handler(*this);
        } catch (...) {
            reportUnhandledFailure("task completion handler", std::current_exception());
        }
    }
    return true;
}

void Task::wait()
{
    if (run())
        return;
    for (State s = getState(); s == State::Queued || s == State::Running; s = getState())
        state.wait(s, std::memory_order_acquire);
}

std::exception_ptr Task::getFailure() const
{
    if (getState() != State::Failed)
        return nullptr;
    failureSeen.store(true);
    return failure;
}

String Task::getFailureMessage() const
{
    return describeFailure(getFailure());
}

void Task::rethrowFailure()
{
    wait();
    if (const auto f = getFailure())
        std::rethrow_exception(f);
}

void Task::whenDone(Function<void(Task&)> f)
{
    {
        std::lock_guard lock(doneMutex);
        if (!isDone()) {
            doneHandlers.push_back(std::move(f));
            return;
        }
    }
    f(*this);
}

} // namespace Marlix
