#pragma once

#include <expected>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>
#include <version>

#if !defined(__cpp_lib_expected)
#include <MarlixLib/base/ExpectedCompat.h>
#endif

/// Names of the core framework that only stand for standard types: aliases, never wrappers.
namespace Marlix {

template <class T> using SharedPtr = std::shared_ptr<T>; ///< Shared ownership; entities and models are held so.
template <class T> using WeakPtr = std::weak_ptr<T>; ///< A non-owning reference that can tell when its target died.
template <class T> using UniquePtr = std::unique_ptr<T>; ///< Sole ownership.

/// A new `T` made from `args`, in one allocation with its control block (std::make_shared).
template <class T, class... A> SharedPtr<T> makeSharedPtr(A&&... args)
{
    return std::make_shared<T>(std::forward<A>(args)...);
}

using String = std::string; ///< Text, UTF-8 throughout the core.
using StringView = std::string_view; ///< A borrowed UTF-8 text; the caller keeps the characters alive.

template <class T> using Array = std::vector<T>; ///< A contiguous, growable sequence.
template <class T> using Stack = std::vector<T>; ///< A sequence used for results built up by appending.
/// A borrowed view of contiguous elements (an Array, a C array, one element); the caller keeps them alive.
template <class T, std::size_t N = std::dynamic_extent> using ArrayView = std::span<T, N>;
template <class T> using Optional = std::optional<T>; ///< A value or nothing.
#if defined(__cpp_lib_expected)
/// A result `T` or an error `E`: how readers of outside data report what is wrong without throwing.
template <class T, class E> using Expected = std::expected<T, E>;
template <class E> using Unexpected = std::unexpected<E>; ///< The error side, to return from an Expected function.
#else
/// A result `T` or an error `E` (a stand-in with the std::expected interface where the library has none).
template <class T, class E> using Expected = Detail::ExpectedCompat<T, E>;
template <class E> using Unexpected = Detail::UnexpectedCompat<E>; ///< The error side of Expected.
#endif

using Mutex = std::mutex; ///< A plain, non-recursive lock.
using RecursiveMutex = std::recursive_mutex; ///< A lock its holder may take again.

namespace Io {
using Path = std::filesystem::path; ///< A file path; made from `char8_t` text it keeps non-ASCII names intact.
} // namespace Io

} // namespace Marlix
