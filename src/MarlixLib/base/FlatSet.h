#pragma once

#include <MarlixLib/base/Aliases.h>

#include <algorithm>
#include <functional>
#include <initializer_list>

namespace Marlix {

/// A sorted vector used as a set: small, cache-friendly, iteration in key order.
template <class T, class Compare = std::less<>> class FlatSet
{
public:
    using value_type = T;
    using const_iterator = typename Array<T>::const_iterator;
    using iterator = const_iterator;

    FlatSet() = default;
    FlatSet(std::initializer_list<T> values)
    {
        for (const T& v : values)
            insert(v);
    }

    std::pair<const_iterator, bool> insert(T value)
    {
        auto it = std::lower_bound(items.begin(), items.end(), value, Compare {});
        if (it != items.end() && !Compare {}(value, *it))
            return { it, false };
        it = items.insert(it, std::move(value));
        return { it, true };
    }

    template <class K> bool erase(const K& key)
    {
        const auto it = find(key);
        if (it == end())
            return false;
        items.erase(items.begin() + (it - items.cbegin()));
        return true;
    }

    template <class K> const_iterator find(const K& key) const
    {
        const auto it = std::lower_bound(items.begin(), items.end(), key, Compare {});
        return it != items.end() && !Compare {}(key, *it) ? it : items.end();
    }
    template <class K> bool contains(const K& key) const { return find(key) != end(); }

    const_iterator begin() const { return items.begin(); }
    const_iterator end() const { return items.end(); }
    std::size_t size() const { return items.size(); }
    bool empty() const { return items.empty(); }
    void clear() { items.clear(); }
    void reserve(std::size_t n) { items.reserve(n); }
    const Array<T>& values() const { return items; }

    bool operator==(const FlatSet&) const = default;

private:
    Array<T> items;
};

} // namespace Marlix
