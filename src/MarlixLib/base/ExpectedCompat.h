#pragma once

#include <concepts>
#include <exception>
#include <functional>
#include <optional>
#include <type_traits>
#include <utility>
#include <variant>

// The subset of std::expected the framework uses, for standard libraries that lack it: clang 14 with libstdc++ 12,
// the toolchain of the fuzzing build, cannot compile libstdc++'s <expected>. Aliases.h picks it only there.
namespace Marlix::Detail {

template <class E> class UnexpectedCompat
{
public:
    template <class Err = E>
    requires(!std::same_as<std::remove_cvref_t<Err>,
                 UnexpectedCompat> && std::constructible_from<E, Err>) constexpr explicit UnexpectedCompat(Err&& e)
        : value(std::forward<Err>(e))
    {
    }

    constexpr const E& error() const& noexcept { return value; }
    constexpr E& error() & noexcept { return value; }
    constexpr E&& error() && noexcept { return std::move(value); }

    friend constexpr bool operator==(const UnexpectedCompat&, const UnexpectedCompat&) = default;

private:
    E value;
};

template <class E> UnexpectedCompat(E) -> UnexpectedCompat<E>;

class BadExpectedAccess : public std::exception
{
public:
    const char* what() const noexcept override { return "access to the value of an Expected that holds an error"; }
};

template <class T> struct IsUnexpectedCompat : std::false_type
{
};
template <class E> struct IsUnexpectedCompat<UnexpectedCompat<E>> : std::true_type
{
};

template <class T, class E> class ExpectedCompat
{
public:
    using value_type = T;
    using error_type = E;

    constexpr ExpectedCompat() requires std::default_initializable<T> : storage(std::in_place_index<0>) { }
    template <class U = T>
    requires(!std::same_as<std::remove_cvref_t<U>, ExpectedCompat> && !IsUnexpectedCompat<std::remove_cvref_t<U>>::value
        && !std::same_as<std::remove_cvref_t<U>,
            std::in_place_t> && std::constructible_from<T, U>) constexpr ExpectedCompat(U&& value)
        : storage(std::in_place_index<0>, std::forward<U>(value))
    {
    }
    template <class G>
    constexpr ExpectedCompat(const UnexpectedCompat<G>& e)
        : storage(std::in_place_index<1>, e.error())
    {
    }
    template <class G>
    constexpr ExpectedCompat(UnexpectedCompat<G>&& e)
        : storage(std::in_place_index<1>, std::move(e).error())
    {
    }
    template <class... A>
    constexpr explicit ExpectedCompat(std::in_place_t, A&&... args)
        : storage(std::in_place_index<0>, std::forward<A>(args)...)
    {
    }

    constexpr bool has_value() const noexcept { return storage.index() == 0; }
    constexpr explicit operator bool() const noexcept { return has_value(); }

    constexpr const T& operator*() const& noexcept { return *std::get_if<0>(&storage); }
    constexpr T& operator*() & noexcept { return *std::get_if<0>(&storage); }
    constexpr T&& operator*() && noexcept { return std::move(*std::get_if<0>(&storage)); }
    constexpr const T* operator->() const noexcept { return std::get_if<0>(&storage); }
    constexpr T* operator->() noexcept { return std::get_if<0>(&storage); }

    constexpr const T& value() const&
    {
        check();
        return **this;
    }
    constexpr T& value() &
    {
        check();
        return **this;
    }
    constexpr T&& value() &&
    {
        check();
        return std::move(**this);
    }
    constexpr const E& error() const& noexcept { return *std::get_if<1>(&storage); }
    constexpr E& error() & noexcept { return *std::get_if<1>(&storage); }
    constexpr E&& error() && noexcept { return std::move(*std::get_if<1>(&storage)); }

    template <class U> constexpr T value_or(U&& fallback) const&
    {
        return has_value() ? **this : static_cast<T>(std::forward<U>(fallback));
    }

    template <class F> constexpr auto and_then(F&& f) const&
    {
        using R = std::remove_cvref_t<std::invoke_result_t<F, const T&>>;
        return has_value() ? std::invoke(std::forward<F>(f), **this) : R(UnexpectedCompat<E>(error()));
    }
    template <class F> constexpr auto transform(F&& f) const&
    {
        using U = std::remove_cv_t<std::invoke_result_t<F, const T&>>;
        if (!has_value())
            return ExpectedCompat<U, E>(UnexpectedCompat<E>(error()));
        if constexpr (std::is_void_v<U>) {
            std::invoke(std::forward<F>(f), **this);
            return ExpectedCompat<U, E>();
        } else {
            return ExpectedCompat<U, E>(std::invoke(std::forward<F>(f), **this));
        }
    }
    template <class F> constexpr auto or_else(F&& f) const&
    {
        return has_value() ? ExpectedCompat(*this) : ExpectedCompat(std::invoke(std::forward<F>(f), error()));
    }

    friend constexpr bool operator==(const ExpectedCompat&, const ExpectedCompat&) = default;
    template <class U>
    requires(!IsUnexpectedCompat<U>::value && !std::same_as<U, ExpectedCompat>) friend constexpr bool operator==(
        const ExpectedCompat& x, const U& v)
    {
        return x.has_value() && *x == v;
    }
    template <class G> friend constexpr bool operator==(const ExpectedCompat& x, const UnexpectedCompat<G>& e)
    {
        return !x.has_value() && x.error() == e.error();
    }

private:
    constexpr void check() const
    {
        if (!has_value())
            throw BadExpectedAccess();
    }

    std::variant<T, E> storage;
};

template <class E> class ExpectedCompat<void, E>
{
public:
    using value_type = void;
    using error_type = E;

    constexpr ExpectedCompat() = default;
    template <class G>
    constexpr ExpectedCompat(const UnexpectedCompat<G>& e)
        : failure(e.error())
    {
    }
    template <class G>
    constexpr ExpectedCompat(UnexpectedCompat<G>&& e)
        : failure(std::move(e).error())
    {
    }

    constexpr bool has_value() const noexcept { return !failure.has_value(); }
    constexpr explicit operator bool() const noexcept { return has_value(); }
    constexpr void operator*() const noexcept { }
    constexpr void value() const
    {
        if (failure)
            throw BadExpectedAccess();
    }
    constexpr const E& error() const& noexcept { return *failure; }
    constexpr E& error() & noexcept { return *failure; }
    constexpr E&& error() && noexcept { return std::move(*failure); }

    template <class F> constexpr auto and_then(F&& f) const&
    {
        using R = std::remove_cvref_t<std::invoke_result_t<F>>;
        return has_value() ? std::invoke(std::forward<F>(f)) : R(UnexpectedCompat<E>(error()));
    }
    template <class F> constexpr auto transform(F&& f) const&
    {
        using U = std::remove_cv_t<std::invoke_result_t<F>>;
        if (!has_value())
            return ExpectedCompat<U, E>(UnexpectedCompat<E>(error()));
        if constexpr (std::is_void_v<U>) {
            std::invoke(std::forward<F>(f));
            return ExpectedCompat<U, E>();
        } else {
            return ExpectedCompat<U, E>(std::invoke(std::forward<F>(f)));
        }
    }

    friend constexpr bool operator==(const ExpectedCompat&, const ExpectedCompat&) = default;

private:
    std::optional<E> failure;
};

} // namespace Marlix::Detail
