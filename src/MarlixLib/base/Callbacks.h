#pragma once

#include <MarlixLib/MarlixLibExport.h>
#include <MarlixLib/base/Aliases.h>
#include <MarlixLib/base/Function.h>

#include <algorithm>
#include <cstdint>
#include <exception>

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
    CallbackLifetime() = default;
    CallbackLifetime(WeakPtr<Detail::CallbackRemover> list, std::uint64_t id);
    CallbackLifetime(CallbackLifetime&& other) noexcept;
    CallbackLifetime& operator=(CallbackLifetime&& other) noexcept;
    CallbackLifetime(const CallbackLifetime&) = delete;
    CallbackLifetime& operator=(const CallbackLifetime&) = delete;
    ~CallbackLifetime();

    void reset();
    bool isActive() const;

private:
    WeakPtr<Detail::CallbackRemover> list;
    std::uint64_t id = 0;
};

/// Owns registrations and ends them all when it is destroyed or cleared.
class MARLIXLIB_EXPORT CallbacksOwner
{
public:
    CallbacksOwner() = default;
    CallbacksOwner(CallbacksOwner&&) noexcept = default;
    CallbacksOwner& operator=(CallbacksOwner&& other) noexcept;
    ~CallbacksOwner();

    void add(CallbackLifetime&& lifetime);
    void clear();
    std::size_t size() const { return lifetimes.size(); }

private:
    Array<CallbackLifetime> lifetimes;
};

/// Callbacks called in registration order. A callback may add or remove entries of the list that is calling it: a
/// removed entry is not called again, an added one is called from the next round on. An exception thrown by one
/// callback does not stop the others; the first one reaches the caller after all of them ran.
template <class... A> class CallbackList
{
public:
    using Callback = Function<void(A...)>;

    CallbackList() = default;
    CallbackList(const CallbackList&) = delete;
    CallbackList& operator=(const CallbackList&) = delete;

    [[nodiscard]] CallbackLifetime add(Callback callback)
    {
        std::lock_guard lock(state->mutex);
        const std::uint64_t id = ++state->lastId;
        state->entries.push_back({ id, std::move(callback), false });
        return CallbackLifetime(state, id);
    }

    void call(const A&... args) const
    {
        const SharedPtr<State> keepAlive = state;
        std::lock_guard lock(keepAlive->mutex);
        ++keepAlive->callingDepth;
        std::exception_ptr first;
        // Entries added while calling are appended past `count`; removed ones are only marked until the last round ends.
        const std::size_t count = keepAlive->entries.size();
        for (std::size_t i = 0; i < count; ++i) {
            const Entry& entry = keepAlive->entries[i];
            if (entry.removed)
                continue;
            // Called in place, not through a copy: a copy costs two atomic operations per observer on every
            // notification. An entry that removes itself while it runs is kept alive by removeCallback instead.
            keepAlive->running.push_back(entry.id);
            const Callback& callback = entry.callback;
            try {
                callback(args...);
            } catch (...) {
                if (!first)
                    first = std::current_exception();
            }
            keepAlive->running.pop_back();
        }
        if (--keepAlive->callingDepth == 0)
            keepAlive->compact();
        if (first)
            std::rethrow_exception(first);
    }

    std::size_t size() const
    {
        std::lock_guard lock(state->mutex);
        return static_cast<std::size_t>(std::ranges::count_if(state->entries, [](const Entry& e) { return !e.removed; }));
    }
    bool isEmpty() const { return size() == 0; }

private:
    struct Entry
    {
        std::uint64_t id;
        Callback callback;
        bool removed;
    };

    struct State final : Detail::CallbackRemover
    {
        void removeCallback(std::uint64_t id) override
        {
            std::lock_guard lock(mutex);
            const auto it = std::ranges::find(entries, id, &Entry::id);
            if (it == entries.end())
                return;
            if (callingDepth > 0) {
                it->removed = true;
                // Drop the callable now: its captures may own resources the remover expects to be released. Only a
                // callable that is running (it removed itself) waits for the end of the round.
                if (std::ranges::find(running, id) != running.end())
                    finished.push_back(std::move(it->callback));
                it->callback = {};
                hasRemoved = true;
            } else {
                entries.erase(it);
            }
        }

        void compact()
        {
            if (!hasRemoved)
                return;
            std::erase_if(entries, [](const Entry& e) { return e.removed; });
            finished.clear();
            hasRemoved = false;
        }

        mutable RecursiveMutex mutex;
        Array<Entry> entries;
        Array<std::uint64_t> running; // ids of the entries being called, innermost last
        Array<Callback> finished; // removed while running; released when the outermost round ends
        std::uint64_t lastId = 0;
        int callingDepth = 0;
        bool hasRemoved = false;
    };

    SharedPtr<State> state = std::make_shared<State>();
};

} // namespace Marlix
