#pragma once

#include <MarlixLib/base/Aliases.h>

#include <concepts>
#include <functional>
#include <type_traits>
#include <utility>

namespace Marlix {

template <class Signature> class Function;

/// A type-erased callable. A plain function pointer is kept as it is and called directly; any other callable lives in
/// one shared heap wrapper, so copying a Function never copies the callable and copies call the same object.
template <class R, class... A> class Function<R(A...)>
{
public:
    using Pointer = R (*)(A...); ///< The plain function pointer kept without allocation.

    Function() = default;
    Function(std::nullptr_t) { } ///< An empty function, as the default one.
    /// Calls \p pointer directly; a null pointer makes an empty function.
    Function(Pointer pointer)
        : pointer(pointer)
    {
    }

    /// Moves or copies \p callable into a shared wrapper; copies of the Function call that one object.
    template <class F>
        requires(!std::same_as<std::remove_cvref_t<F>, Function> && !std::is_convertible_v<F, Pointer>
                 && std::is_invocable_r_v<R, std::remove_cvref_t<F>&, A...>)
    Function(F&& callable)
        : wrapper(std::make_shared<Wrapper<std::remove_cvref_t<F>>>(std::forward<F>(callable)))
    {
    }

    /// \overload
    /// A captureless lambda is kept as the function pointer it decays to, without allocation.
    template <class F>
        requires(!std::same_as<std::remove_cvref_t<F>, Function> && std::is_convertible_v<F, Pointer>
                 && !std::is_same_v<std::remove_cvref_t<F>, Pointer>)
    Function(F&& callable)
        : pointer(static_cast<Pointer>(callable))
    {
    }

    explicit operator bool() const noexcept { return pointer || wrapper; } ///< Whether there is something to call.

    /// Calls the function; an empty one throws std::bad_function_call.
    R operator()(A... args) const
    {
        if (pointer)
            return pointer(std::forward<A>(args)...);
        if (!wrapper)
            throw std::bad_function_call();
        return wrapper->call(std::forward<A>(args)...);
    }

    /// True when both call the same function pointer or share the same wrapper.
    bool isSameAs(const Function& other) const noexcept
    {
        return pointer == other.pointer && wrapper == other.wrapper;
    }

private:
    struct WrapperBase
    {
        virtual ~WrapperBase() = default;
        virtual R call(A... args) = 0;
    };

    template <class F> struct Wrapper final : WrapperBase
    {
        template <class G>
        explicit Wrapper(G&& g)
            : callable(std::forward<G>(g))
        {
        }
        R call(A... args) override { return static_cast<R>(std::invoke(callable, std::forward<A>(args)...)); }
        F callable;
    };

    Pointer pointer = nullptr;
    SharedPtr<WrapperBase> wrapper;
};

} // namespace Marlix
