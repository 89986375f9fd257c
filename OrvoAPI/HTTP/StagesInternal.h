#pragma once

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>

namespace orvo::detail {

/// Completes the times of stages, of which those that were not noted are zero and the first was, so
/// that they only grow: what was left out takes no time, and what was not reached any more had not
/// begun at the `end`, which is that of the last stage.
template <std::size_t count>
void settleStages(std::array<std::chrono::steady_clock::time_point, count>& times,
                  std::chrono::steady_clock::time_point end) {
  times[count - 1] = end;
  std::size_t reached = count - 2;
  while (reached > 0 && times[reached] == decltype(end)()) --reached;
  for (std::size_t i = 1; i < count; ++i) {
    times[i] = i > reached ? end : std::min(times[i], end);
    times[i] = std::max(times[i], times[i - 1]);
  }
}

}  // namespace orvo::detail
