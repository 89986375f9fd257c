#pragma once

#include <concepts>

namespace orvo {

/// How long, in seconds, a cached copy stays valid where its document says nothing about it.
inline constexpr double DefaultCacheableTTL = 300;

/// A value that may be cached: it knows how long, in seconds, a copy of it stays valid.
template <class T>
concept Cacheable = requires(const T& element) {
  { element.ttl() } -> std::same_as<double>;
};

}  // namespace orvo
