#pragma once

#include <MarlixLib/base/Aliases.h>

#include <algorithm>
#include <functional>
#include <initializer_list>
#include <utility>

namespace Marlix {

/// A sorted vector of key-value pairs used as a map: small, cache-friendly, iteration in key order.
template <class K, class V, class Compare = std::less<>> class FlatMap
{
public:
    using value_type = std::pair<K, V>; ///< A key and its value; iteration yields these in key order.
    using iterator = typename Array<value_type>::iterator; ///< Do not change the key through it: the order breaks.
    using const_iterator = typename Array<value_type>::const_iterator; ///< Read-only iterator in key order.

    FlatMap() = default;
    /// Pairs in any order; of equal keys, the last one counts.
    FlatMap(std::initializer_list<value_type> values)
    {
        for (const auto& [k, v] : values)
            insertOrAssign(k, v);
    }

    /// The pair of \p key (any type that compares with `K`, such as a StringView for a String key), or end().
    template <class Key> iterator find(const Key& key) { return items.begin() + (std::as_const(*this).find(key) - items.cbegin()); }
    /// \overload
    template <class Key> const_iterator find(const Key& key) const
    {
        const auto it = lowerBound(key);
        return it != items.end() && !Compare {}(key, it->first) ? it : items.end();
    }
    template <class Key> bool contains(const Key& key) const { return find(key) != end(); } ///< Whether \p key is in.

    /// The value of a key, or null when the key is absent. The pointer is valid until the map changes.
    template <class Key> V* get(const Key& key)
    {
        const auto it = find(key);
        return it == items.end() ? nullptr : &it->second;
    }
    /// \overload
    template <class Key> const V* get(const Key& key) const
    {
        const auto it = find(key);
        return it == items.end() ? nullptr : &it->second;
    }

    /// Sets the value of \p key, adding the key when absent; the bool is true when it was added.
    std::pair<iterator, bool> insertOrAssign(K key, V value)
    {
        auto it = items.begin() + (lowerBound(key) - items.cbegin());
        if (it != items.end() && !Compare {}(key, it->first)) {
            it->second = std::move(value);
            return { it, false };
        }
        return { items.insert(it, value_type(std::move(key), std::move(value))), true };
    }

    /// The value of \p key, added as `V {}` when absent. The reference is valid until the map changes.
    V& operator[](const K& key)
    {
        auto it = items.begin() + (lowerBound(key) - items.cbegin());
        if (it == items.end() || Compare {}(key, it->first))
            it = items.insert(it, value_type(key, V {}));
        return it->second;
    }

    /// Removes \p key; false when it was not there.
    template <class Key> bool erase(const Key& key)
    {
        const auto it = find(key);
        if (it == items.end())
            return false;
        items.erase(it);
        return true;
    }

    iterator begin() { return items.begin(); } ///< The pair of the smallest key.
    iterator end() { return items.end(); } ///< Past the pair of the largest key.
    const_iterator begin() const { return items.begin(); } ///< \overload
    const_iterator end() const { return items.end(); } ///< \overload
    std::size_t size() const { return items.size(); } ///< The number of keys.
    bool empty() const { return items.empty(); } ///< Whether there is no key.
    void clear() { items.clear(); } ///< Removes every pair.

    bool operator==(const FlatMap&) const = default; ///< Equal when both hold the same pairs.

private:
    template <class Key> const_iterator lowerBound(const Key& key) const
    {
        return std::lower_bound(items.begin(), items.end(), key,
            [](const value_type& item, const Key& k) { return Compare {}(item.first, k); });
    }

    Array<value_type> items;
};

} // namespace Marlix
