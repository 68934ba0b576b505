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
    using value_type = std::pair<K, V>;
    using iterator = typename Array<value_type>::iterator;
    using const_iterator = typename Array<value_type>::const_iterator;

    FlatMap() = default;
    FlatMap(std::initializer_list<value_type> values)
    {
        for (const auto& [k, v] : values)
            insertOrAssign(k, v);
    }

    template <class Key> iterator find(const Key& key) { return items.begin() + (std::as_const(*this).find(key) - items.cbegin()); }
    template <class Key> const_iterator find(const Key& key) const
    {
        const auto it = lowerBound(key);
        return it != items.end() && !Compare {}(key, it->first) ? it : items.end();
    }
    template <class Key> bool contains(const Key& key) const { return find(key) != end(); }

    /// The value of a key, or null when the key is absent.
    template <class Key> V* get(const Key& key)
    {
        const auto it = find(key);
        return it == items.end() ? nullptr : &it->second;
    }
    template <class Key> const V* get(const Key& key) const
    {
        const auto it = find(key);
        return it == items.end() ? nullptr : &it->second;
    }

    std::pair<iterator, bool> insertOrAssign(K key, V value)
    {
        auto it = items.begin() + (lowerBound(key) - items.cbegin());
        if (it != items.end() && !Compare {}(key, it->first)) {
            it->second = std::move(value);
            return { it, false };
        }
        return { items.insert(it, value_type(std::move(key), std::move(value))), true };
    }

    V& operator[](const K& key)
    {
        auto it = items.begin() + (lowerBound(key) - items.cbegin());
        if (it == items.end() || Compare {}(key, it->first))
            it = items.insert(it, value_type(key, V {}));
        return it->second;
    }

    template <class Key> bool erase(const Key& key)
    {
        const auto it = find(key);
        if (it == items.end())
            return false;
        items.erase(it);
        return true;
    }

    iterator begin() { return items.begin(); }
    iterator end() { return items.end(); }
    const_iterator begin() const { return items.begin(); }
    const_iterator end() const { return items.end(); }
    std::size_t size() const { return items.size(); }
    bool empty() const { return items.empty(); }
    void clear() { items.clear(); }

    bool operator==(const FlatMap&) const = default;

private:
    template <class Key> const_iterator lowerBound(const Key& key) const
    {
        return std::lower_bound(items.begin(), items.end(), key,
            [](const value_type& item, const Key& k) { return Compare {}(item.first, k); });
    }

    Array<value_type> items;
};

} // namespace Marlix
