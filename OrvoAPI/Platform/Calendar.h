#pragma once

#include <OrvoAPI/Base/Date.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace orvo {

/// The Gregorian calendar in the device's time zone, as the C library has it. Not thread-safe, and
/// cheap to make: make one for each piece of work.
///
/// An instant more than a hundred million days from 1970 counts as the nearest that is not.
///
/// It remembers the days that it has seen and asks the C library only for new ones. When the app
/// changes its zone with `tzset`, the next calendar that is made follows it.
class Calendar {
 public:
  /// The first instant of the day. That is not midnight where the clocks skip midnight.
  [[nodiscard]] Date startOfDay(Date date) { return stretch(date).startOfDay; }
  /// The hour that a wall clock shows, 0 to 23.
  [[nodiscard]] int hour(Date date) {
    const Stretch& found = stretch(date);
    const auto last = found.end - std::chrono::milliseconds(1);
    const auto elapsed = std::clamp(date, found.begin, last) - found.begin;
    return static_cast<int>((elapsed + found.wallTimeAtBegin) / std::chrono::hours(1));
  }
  /// From 1, Sunday, to 7, Saturday.
  [[nodiscard]] int weekday(Date date) { return stretch(date).weekday; }

  /// The same wall-clock time that many days later (earlier, if negative). A time that the clocks
  /// skip then moves later by as much as they skip; of one that they show twice it is the one with
  /// the offset of `date`.
  [[nodiscard]] Date addingDays(Date date, int days);
  /// That many times 3,600 seconds later, whatever the clocks do.
  [[nodiscard]] static Date addingHours(Date date, int hours);

  [[nodiscard]] bool isSameDay(Date lhs, Date rhs) { return startOfDay(lhs) == startOfDay(rhs); }
  [[nodiscard]] bool isToday(Date date, Date now) { return isSameDay(date, now); }
  [[nodiscard]] bool isTomorrow(Date date, Date now) {
    return isSameDay(date, addingDays(startOfDay(now), 1));
  }

 private:
  /// A stretch of time on one day without a change of the clocks: nearly always a whole day.
  struct Stretch {
    [[nodiscard]] bool holds(Date date) const { return begin <= date && date < end; }

    Date begin;
    Date end;
    Date startOfDay;
    /// What a wall clock shows at the beginning.
    std::chrono::milliseconds wallTimeAtBegin;
    std::int64_t secondsEastOfUTC;
    int weekday;
  };

  const Stretch& stretch(Date date) {
    if (latest_ < stretches_.size() && stretches_[latest_].holds(date)) return stretches_[latest_];
    return otherStretch(countable(date));
  }
  static constexpr Date countable(Date date) {
    constexpr std::int64_t kMost = 8'640'000'000'000'000;
    return std::clamp(date, Date(-kMost), Date(kMost));
  }
  const Stretch& otherStretch(Date date);
  static Stretch findStretch(Date date);

  /// In ascending order.
  std::vector<Stretch> stretches_;
  std::size_t latest_ = 0;
};

/// The names of the weekdays, Sunday first, in the device's language, upper-cased by its rules. The
/// environment says which locale that is (LC_ALL, LC_TIME or LANG); the process's own stays as it
/// is. English where the locale is not installed. UTF-8.
[[nodiscard]] std::array<std::string, 7> capitalWeekdayNames();

}  // namespace orvo
