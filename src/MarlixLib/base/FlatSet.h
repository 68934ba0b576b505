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
    using value_type = T; ///< The element type.
    using const_iterator = typename Array<T>::const_iterator; ///< Iterates in sorted order.
    using iterator = const_iterator; ///< Read-only as well: a changed element would break the order.

    FlatSet() = default;
    /// The values in any order; duplicates are kept once.
    FlatSet(std::initializer_list<T> values)
    {
        for (const T& v : values)
            insert(v);
    }

    /// Adds \p value unless an equal one is there; the bool is true when it was added. Iterators are invalidated.
    std::pair<const_iterator, bool> insert(T value)
    {
        auto it = std::lower_bound(items.begin(), items.end(), value, Compare {});
        if (it != items.end() && !Compare {}(value, *it))
            return { it, false };
        it = items.insert(it, std::move(value));
        return { it, true };
    }

    /// Removes the element equal to \p key; false when there is none.
    template <class K> bool erase(const K& key)
    {
        const auto it = find(key);
        if (it == end())
            return false;
        items.erase(items.begin() + (it - items.cbegin()));
        return true;
    }

    /// The element equal to \p key (any type that compares with `T`), or end().
    template <class K> const_iterator find(const K& key) const
    {
        const auto it = std::lower_bound(items.begin(), items.end(), key, Compare {});
        return it != items.end() && !Compare {}(key, *it) ? it : items.end();
    }
    template <class K> bool contains(const K& key) const { return find(key) != end(); } ///< Whether \p key is in.

    const_iterator begin() const { return items.begin(); } ///< The smallest element.
    const_iterator end() const { return items.end(); } ///< Past the largest element.
    std::size_t size() const { return items.size(); } ///< The number of elements.
    bool empty() const { return items.empty(); } ///< Whether there is no element.
    void clear() { items.clear(); } ///< Removes every element.
    void reserve(std::size_t n) { items.reserve(n); } ///< Makes room for \p n elements without reallocation.
    const Array<T>& values() const { return items; } ///< The elements, sorted, as one contiguous array.

    bool operator==(const FlatSet&) const = default; ///< Equal when both hold the same elements.

private:
    Array<T> items;
};

} // namespace Marlix
