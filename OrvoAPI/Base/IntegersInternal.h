#pragma once

#include <cstdint>

namespace orvo::detail {

/// Rounds down, below zero as well; `b` is above zero.
constexpr std::int64_t floorDivide(std::int64_t a, std::int64_t b) {
  return a / b - (a % b < 0 ? 1 : 0);
}

}  // namespace orvo::detail
