#pragma once

#include <array>
#include <cstddef>

namespace orvo::detail {

/// Storage for the one object of a type that is never destroyed, because it may be used while the
/// process exits, and that needs no memory when it is first used:
///
///     static auto* const thing = new (immortalPlace<Thing>()) Thing;
template <class T>
[[nodiscard]] void* immortalPlace() {
  alignas(T) static std::array<std::byte, sizeof(T)> place;
  return place.data();
}

}  // namespace orvo::detail
