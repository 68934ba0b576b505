#pragma once

#include <MarlixLib/MarlixLibExport.h>
#include <MarlixLib/base/Aliases.h>
#include <MarlixLib/base/FlatMap.h>

#include <any>
#include <utility>

namespace Marlix {

/// Typed attributes under string keys. An entry of another type than the one asked for reads as absent, so a key
/// reused by someone else for a different record never reinterprets memory.
class MARLIXLIB_EXPORT UserData
{
public:
    UserData() = default; ///< No entries.

    /// The entry under \p key; null when there is none or it holds another type than `T`.
    template <class T> const T* get(StringView key) const
    {
        const std::any* entry = entries.get(key);
        return entry ? std::any_cast<T>(entry) : nullptr;
    }

    /// \overload
    template <class T> T* get(StringView key)
    {
        std::any* entry = entries.get(key);
        return entry ? std::any_cast<T>(entry) : nullptr;
    }

    /// Stores `value` under `key`, replacing any earlier entry of whatever type.
    template <class T> UserData& set(String key, T value)
    {
        entries.insertOrAssign(std::move(key), std::any(std::move(value)));
        return *this;
    }

    /// True when an entry of any type is stored under \p key.
    bool contains(StringView key) const { return entries.contains(key); }
    /// Removes the entry under \p key; false when there was none.
    bool remove(StringView key) { return entries.erase(key); }
    std::size_t size() const { return entries.size(); } ///< The number of entries.
    bool isEmpty() const { return entries.empty(); } ///< True when there are no entries.

    /// Every key, in sorted order.
    Array<String> getKeys() const
    {
        Array<String> keys;
        keys.reserve(entries.size());
        for (const auto& [key, value] : entries)
            keys.push_back(key);
        return keys;
    }

private:
    FlatMap<String, std::any> entries;
};

} // namespace Marlix
