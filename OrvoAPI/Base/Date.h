#pragma once

#include <chrono>
#include <compare>
#include <cstdint>

namespace orvo {

/// A point in absolute time, in whole milliseconds since 1970-01-01 00:00:00 UTC (earlier ones are
/// negative). A value; safe to use from any thread.
class Date {
 public:
  constexpr Date() = default;
  constexpr explicit Date(std::int64_t millisecondsSince1970)
      : milliseconds_(millisecondsSince1970) {}

  [[nodiscard]] constexpr std::int64_t millisecondsSince1970() const { return milliseconds_; }

  /// The date itself: a date takes part in a schedule as its own start.
  [[nodiscard]] constexpr Date startTime() const { return *this; }

  friend constexpr auto operator<=>(Date, Date) = default;

  friend constexpr Date operator+(Date date, std::chrono::milliseconds span) {
    return Date(date.milliseconds_ + span.count());
  }
  friend constexpr Date operator-(Date date, std::chrono::milliseconds span) {
    return Date(date.milliseconds_ - span.count());
  }
  friend constexpr std::chrono::milliseconds operator-(Date later, Date earlier) {
    return std::chrono::milliseconds(later.milliseconds_ - earlier.milliseconds_);
  }

 private:
  std::int64_t milliseconds_ = 0;
};

}  // namespace orvo
