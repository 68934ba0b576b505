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

template <class T> using SharedPtr = std::shared_ptr<T>;
template <class T> using WeakPtr = std::weak_ptr<T>;
template <class T> using UniquePtr = std::unique_ptr<T>;

template <class T, class... A> SharedPtr<T> makeSharedPtr(A&&... args)
{
    return std::make_shared<T>(std::forward<A>(args)...);
}

using String = std::string;
using StringView = std::string_view;

template <class T> using Array = std::vector<T>;
template <class T> using Stack = std::vector<T>;
template <class T, std::size_t N = std::dynamic_extent> using ArrayView = std::span<T, N>;
template <class T> using Optional = std::optional<T>;
#if defined(__cpp_lib_expected)
template <class T, class E> using Expected = std::expected<T, E>;
template <class E> using Unexpected = std::unexpected<E>;
#else
template <class T, class E> using Expected = Detail::ExpectedCompat<T, E>;
template <class E> using Unexpected = Detail::UnexpectedCompat<E>;
#endif

using Mutex = std::mutex;
using RecursiveMutex = std::recursive_mutex;

namespace Io {
using Path = std::filesystem::path;
} // namespace Io

} // namespace Marlix
