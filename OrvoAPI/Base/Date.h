#pragma once

#include <chrono>
#include <compare>
#include <cstdint>
#include <limits>

namespace orvo {

/// A point in absolute time, in whole milliseconds since 1970-01-01 00:00:00 UTC (earlier ones are
/// negative). Sums and differences saturate at the limits of 64 bits. A value; thread-safe.
///
/// To and from the standard library's clock: `Date(std::chrono::system_clock::now())`,
/// `date.timePoint()`. Fractions of a millisecond are truncated towards the past.
class Date {
 public:
  constexpr Date() = default;
  constexpr explicit Date(std::int64_t millisecondsSince1970)
      : milliseconds_(millisecondsSince1970) {}
  constexpr explicit Date(std::chrono::system_clock::time_point time)
      : milliseconds_(
            std::chrono::floor<std::chrono::milliseconds>(time.time_since_epoch()).count()) {}

  [[nodiscard]] constexpr std::int64_t millisecondsSince1970() const { return milliseconds_; }

  /// A date beyond the clock's range gives the nearest time point within it.
  [[nodiscard]] constexpr std::chrono::system_clock::time_point timePoint() const {
    using Time = std::chrono::system_clock::time_point;
    using std::chrono::ceil;
    using std::chrono::floor;
    constexpr auto kFirst = ceil<std::chrono::milliseconds>((Time::min)().time_since_epoch());
    constexpr auto kLast = floor<std::chrono::milliseconds>((Time::max)().time_since_epoch());
    if (milliseconds_ < kFirst.count()) return (Time::min)();
    if (milliseconds_ > kLast.count()) return (Time::max)();
    return Time(std::chrono::milliseconds(milliseconds_));
  }

  /// The date itself: in a schedule a date is its own start.
  [[nodiscard]] constexpr Date startTime() const { return *this; }

  friend constexpr auto operator<=>(Date, Date) = default;

  friend constexpr Date operator+(Date date, std::chrono::milliseconds span) {
    std::int64_t sum = 0;
    const bool isBeyond = __builtin_add_overflow(date.milliseconds_, span.count(), &sum);
    return Date(isBeyond ? limit(span.count() < 0) : sum);
  }
  friend constexpr Date operator-(Date date, std::chrono::milliseconds span) {
    return Date((date - Date(span.count())).count());
  }
  friend constexpr std::chrono::milliseconds operator-(Date later, Date earlier) {
    std::int64_t span = 0;
    const bool isBeyond = __builtin_sub_overflow(later.milliseconds_, earlier.milliseconds_, &span);
    return std::chrono::milliseconds(isBeyond ? limit(later < earlier) : span);
  }

 private:
  static constexpr std::int64_t limit(bool isFirst) {
    using Limits = std::numeric_limits<std::int64_t>;
    return isFirst ? (Limits::min)() : (Limits::max)();
  }

  std::int64_t milliseconds_ = 0;
};

}  // namespace orvo
