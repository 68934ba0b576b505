#pragma once

#include <MarlixLib/MarlixLibExport.h>
#include <MarlixLib/base/Aliases.h>
#include <MarlixLib/base/Function.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <exception>
#include <thread>
#include <utility>

namespace Marlix {

namespace Detail {
/// What a lifetime needs of its list: removing one entry. Lists are reached through weak pointers, so a lifetime that
/// outlives its list does nothing.
class CallbackRemover
{
public:
    virtual ~CallbackRemover() = default;
    virtual void removeCallback(std::uint64_t id) = 0;
};
} // namespace Detail

/// One registration in a CallbackList; destroying or resetting it removes the entry.
class MARLIXLIB_EXPORT CallbackLifetime
{
public:
    CallbackLifetime() = default; ///< Ends nothing: a lifetime to assign a registration to later.
    /// Made by CallbackList::add for entry \p id of \p list; hosts receive lifetimes, they do not make them.
    CallbackLifetime(WeakPtr<Detail::CallbackRemover> list, std::uint64_t id);
    CallbackLifetime(CallbackLifetime&& other) noexcept; ///< Takes over the registration; \p other ends nothing.
    /// Ends the registration held so far, then takes over the one of \p other.
    CallbackLifetime& operator=(CallbackLifetime&& other) noexcept;
    CallbackLifetime(const CallbackLifetime&) = delete;
    CallbackLifetime& operator=(const CallbackLifetime&) = delete;
    ~CallbackLifetime(); ///< Ends the registration, as reset() does.

    /// Removes the entry from its list now (it is not called again, even by a round in progress); no-op when the
    /// list is gone or the lifetime is empty. Safe from any thread.
    void reset();
    bool isActive() const; ///< Whether the lifetime holds an entry of a list that still exists.

private:
    WeakPtr<Detail::CallbackRemover> list;
    std::uint64_t id = 0;
};

/// Owns registrations and ends them all when it is destroyed or cleared.
class MARLIXLIB_EXPORT CallbacksOwner
{
public:
    CallbacksOwner() = default;
    CallbacksOwner(CallbacksOwner&&) noexcept = default; ///< Takes over the registrations of the other owner.
    /// Ends the registrations held so far, then takes over those of \p other.
    CallbacksOwner& operator=(CallbacksOwner&& other) noexcept;
    ~CallbacksOwner(); ///< Ends every registration, as clear() does.

    void add(CallbackLifetime&& lifetime); ///< Keeps the registration until clear() or the owner's end.
    /// Ends every registration, the latest first, since later ones may depend on earlier ones.
    void clear();
    std::size_t size() const { return lifetimes.size(); } ///< The number of registrations held (ended or not).

private:
    Array<CallbackLifetime> lifetimes;
};

namespace Detail {
/// A mutex that the thread holding it may take again: callbacks run while their list is locked, and they may add or
/// remove entries of that list. Every list call takes it, so its uncontended paths are inline, one atomic exchange
/// each way, with no library call; a thread that finds it held sleeps until it is released (futex-style, through
/// std::atomic::wait).
class ReentrantMutex
{
public:
    /// False when this thread holds the mutex already; only a call that returned true is followed by unlock().
    [[gnu::always_inline]] bool lock()
    {
        const std::thread::id self = std::this_thread::get_id();
        // Only this thread stores its own identity here, so a stale value read by it is never its own.
        if (owner.load(std::memory_order_relaxed) == self)
            return false;
        int expected = FREE;
        if (!state.compare_exchange_strong(expected, LOCKED, std::memory_order_acquire, std::memory_order_relaxed))
            waitAndLock();
        owner.store(self, std::memory_order_relaxed);
        return true;
    }

    [[gnu::always_inline]] void unlock()
    {
        owner.store(std::thread::id(), std::memory_order_relaxed);
        if (state.exchange(FREE, std::memory_order_release) == CONTENDED)
            state.notify_one();
    }

private:
    static constexpr int FREE = 0;
    static constexpr int LOCKED = 1;
    static constexpr int CONTENDED = 2; // locked, and a thread may be waiting

    void waitAndLock()
    {
        // Whoever takes it from here marks it contended: there may be more waiters, and the next unlock must wake one.
        while (state.exchange(CONTENDED, std::memory_order_acquire) != FREE)
            state.wait(CONTENDED, std::memory_order_relaxed);
    }

    std::atomic<int> state { FREE };
    std::atomic<std::thread::id> owner;
};

/// Holds a ReentrantMutex for one scope; releases it at the end only if it was the one that took it.
class ReentrantLock
{
public:
    [[gnu::always_inline]] explicit ReentrantLock(ReentrantMutex& mutex)
        : mutex(mutex)
        , taken(mutex.lock())
    {
    }
    [[gnu::always_inline]] ~ReentrantLock() { unlock(); }
    ReentrantLock(const ReentrantLock&) = delete;
    ReentrantLock& operator=(const ReentrantLock&) = delete;

    /// Releases the mutex early, if this lock took it.
    [[gnu::always_inline]] void unlock()
    {
        if (taken)
            mutex.unlock();
        taken = false;
    }

private:
    ReentrantMutex& mutex;
    bool taken;
};
} // namespace Detail

/// Callbacks called in registration order. A callback may add or remove entries of the list that is calling it: a
/// removed entry is not called again, an added one is called from the next round on. An exception thrown by one
/// callback does not stop the others; the first one reaches the caller after all of them ran. A callback may even
/// destroy the list: the round in progress finishes on the list's state, which goes with the round.
template <class... A> class CallbackList
{
public:
    using Callback = Function<void(A...)>; ///< What an entry calls; it receives the arguments of call().

    CallbackList() = default;
    CallbackList(const CallbackList&) = delete;
    CallbackList& operator=(const CallbackList&) = delete;

    ~CallbackList()
    {
        State& current = *state;
        const Detail::ReentrantLock lock(current.mutex);
        // Destroyed by one of its own callbacks: the outermost round releases the state when it ends, so the rounds
        // pay for a reference only in this rare case.
        if (current.rounds)
            current.orphan = std::move(state);
    }

    /// Appends \p callback; it is called until the returned lifetime ends. Safe from any thread, and from a callback
    /// of this list (the new entry is called from the next round on).
    [[nodiscard]] CallbackLifetime add(Callback callback)
    {
        const Detail::ReentrantLock lock(state->mutex);
        const std::uint64_t id = ++state->lastId;
        state->entries.push_back({ id, std::move(callback), false });
        return CallbackLifetime(state, id);
    }

    /// Calls every entry in registration order on this thread, with the list locked against other threads. Throws
    /// the first exception a callback threw, once all of them ran.
    void call(const A&... args) const
    {
        // Only this reference is used from here on: `this` may be destroyed by a callback (see ~CallbackList).
        State& current = *state;
        std::exception_ptr first;
        {
            Detail::ReentrantLock lock(current.mutex);
            Round round { 0, current.rounds };
            current.rounds = &round;
            // Entries added while calling are appended past `count`; removed ones are only marked until the last
            // round ends, so indices stay valid.
            const std::size_t count = current.entries.size();
            for (std::size_t i = 0; i < count; ++i) {
                const Entry& entry = current.entries[i];
                if (entry.removed)
                    continue;
                // Called in place, not through a copy: a copy costs two atomic operations per observer on every
                // notification. An entry that removes itself while it runs is kept alive by removeCallback instead.
                round.runningId = entry.id;
                try {
                    entry.callback(args...);
                } catch (...) {
                    if (!first)
                        first = std::current_exception();
                }
            }
            current.rounds = round.outer;
            if (!current.rounds && (current.hasRemoved || current.orphan)) [[unlikely]]
                endRounds(current, lock);
        }
        if (first)
            std::rethrow_exception(first);
    }

    /// The number of entries not removed.
    std::size_t size() const
    {
        const Detail::ReentrantLock lock(state->mutex);
        return static_cast<std::size_t>(std::ranges::count_if(state->entries, [](const Entry& e) { return !e.removed; }));
    }
    bool isEmpty() const { return size() == 0; } ///< Whether no entry remains.

private:
    struct Entry
    {
        std::uint64_t id;
        Callback callback;
        bool removed;
    };

    /// One call() in progress. Rounds nest when a callback makes its list call again; they live on the stack of the
    /// thread that holds the mutex.
    struct Round
    {
        std::uint64_t runningId;
        const Round* outer;
    };


    struct State final : Detail::CallbackRemover
    {
        void removeCallback(std::uint64_t id) override
        {
            const Detail::ReentrantLock lock(mutex);
            const auto it = std::ranges::find(entries, id, &Entry::id);
            if (it == entries.end())
                return;
            if (rounds) {
                it->removed = true;
                // Drop the callable now: its captures may own resources the remover expects to be released. Only a
                // callable that is running (it removed itself) waits for the end of the round.
                if (isRunning(id))
                    finished.push_back(std::move(it->callback));
                it->callback = {};
                hasRemoved = true;
            } else {
                entries.erase(it);
            }
        }

        bool isRunning(std::uint64_t id) const
        {
            for (const Round* round = rounds; round; round = round->outer)
                if (round->runningId == id)
                    return true;
            return false;
        }

        mutable Detail::ReentrantMutex mutex;
        Array<Entry> entries;
        const Round* rounds = nullptr; // innermost first
        Array<Callback> finished; // removed while running; released when the outermost round ends
        SharedPtr<State> orphan; // the list's own reference, handed over when a callback destroyed the list
        std::uint64_t lastId = 0;
        bool hasRemoved = false;
    };

    /// After the outermost round: erases the removed entries, then releases after the lock the callables that ran to
    /// their own removal and, when a callback destroyed the list, the state itself. User code runs in those
    /// destructors, and it may use the list again.
    static void endRounds(State& current, Detail::ReentrantLock& lock)
    {
        std::erase_if(current.entries, [](const Entry& e) { return e.removed; });
        current.hasRemoved = false;
        const Array<Callback> finished = std::exchange(current.finished, {});
        const SharedPtr<State> orphan = std::move(current.orphan);
        lock.unlock();
    }

    SharedPtr<State> state = std::make_shared<State>();
};

} // namespace Marlix
