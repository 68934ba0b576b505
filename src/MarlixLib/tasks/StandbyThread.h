#pragma once

#include <MarlixLib/MarlixLibExport.h>
#include <MarlixLib/base/Aliases.h>
#include <MarlixLib/base/Function.h>

#include <atomic>
#include <cstddef>
#include <exception>
#include <stop_token>

namespace Marlix {

/// One named thread with a chosen stack size that runs its body until it is asked to stop.
///
/// The body receives a std::stop_token: it should return soon after a stop is requested. A body that sleeps on a
/// std::condition_variable_any can pass the token to wait() and is woken by the stop request. Destroying the object
/// requests the stop and joins the thread. An exception that escapes the body is kept (getFailure()) and, if nobody
/// has read it by then, reported to the unhandled failure handler when the object is destroyed.
class MARLIXLIB_EXPORT StandbyThread
{
public:
    using Body = Function<void(std::stop_token)>; ///< The thread's work; it returns when the token asks it to stop.

    /// The longest name the system shows for a thread, in bytes; longer names are cut there (on a character boundary)
    /// for the system but kept whole in getName().
    static constexpr std::size_t SYSTEM_NAME_LIMIT = 15;

    /// Starts the thread at once. A stack size of 0 takes the system default; others are rounded up to whole pages and
    /// at least the system minimum. Throws Exception when the system cannot create the thread.
    StandbyThread(String name, std::size_t stackSize, Body body);
    ~StandbyThread();
    StandbyThread(const StandbyThread&) = delete;
    StandbyThread& operator=(const StandbyThread&) = delete;

    const String& getName() const noexcept { return name; } ///< The whole name given at construction.
    /// The name as the system knows it (possibly cut, see SYSTEM_NAME_LIMIT).
    const String& getSystemName() const noexcept { return systemName; }
    /// The stack size the thread was created with, after rounding; 0 for the system default.
    std::size_t getStackSize() const noexcept { return stackSize; }

    void requestStop() noexcept; ///< Asks the body to return; does not wait for it (join() does). Any thread.
    bool isStopRequested() const noexcept; ///< Whether a stop was requested, by requestStop() or the destructor.
    std::stop_token getStopToken() const noexcept; ///< The token the body receives, for work it hands elsewhere.

    /// True until the body has returned.
    bool isRunning() const noexcept { return running.load(std::memory_order_acquire); }
    /// Waits for the body to return; it does not ask it to stop. Calling it from the thread itself is a stop error.
    void join();

    /// The exception that escaped the body, if any. Reading it counts as handling it.
    std::exception_ptr getFailure() const;

private:
    static void* entry(void* self);

    String name;
    String systemName;
    std::size_t stackSize;
    Body body;
    std::stop_source stopSource;
    std::atomic<bool> running { true };
    std::exception_ptr failure;
    mutable std::atomic<bool> failureSeen { false };
    Mutex joinMutex;
    bool joined = false;
    unsigned long handle = 0;
};

} // namespace Marlix
