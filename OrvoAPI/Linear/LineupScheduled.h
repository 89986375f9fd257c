#pragma once

#include <OrvoAPI/Base/Date.h>
#include <OrvoAPI/Platform/Calendar.h>

#include <concepts>

namespace orvo {

/// The start of a scheduled item: its `startTime`, a field or a function.
template <class T>
requires requires(const T& item) {
  { item.startTime() } -> std::same_as<Date>;
}
[[nodiscard]] Date startTime(const T& item) { return item.startTime(); }

template <class T>
requires std::same_as<decltype(T::startTime), Date>
[[nodiscard]] Date startTime(const T& item) { return item.startTime; }

/// Something with a place in a lineup: a slot, an hour, a day, or a date itself.
template <class T>
concept LineupScheduled = requires(const T& item) {
  { startTime(item) } -> std::same_as<Date>;
};

/// The start of the day on which the item begins, in the device's time zone. A calendar that is
/// used again remembers the days that it has seen.
template <LineupScheduled T>
[[nodiscard]] Date scheduleDay(const T& item, Calendar& calendar) {
  return calendar.startOfDay(startTime(item));
}
template <LineupScheduled T>
[[nodiscard]] Date scheduleDay(const T& item) {
  Calendar calendar;
  return scheduleDay(item, calendar);
}

/// The start of the hour in which the item begins: its day's start plus as many elapsed hours as a
/// wall clock shows. On a day when the clocks change that may be another hour than the wall
/// clock's; that is deliberate, because it keeps hours at a fixed distance from each other.
template <LineupScheduled T>
[[nodiscard]] Date scheduleHour(const T& item, Calendar& calendar) {
  const Date start = startTime(item);
  return Calendar::addingHours(calendar.startOfDay(start), calendar.hour(start));
}
template <LineupScheduled T>
[[nodiscard]] Date scheduleHour(const T& item) {
  Calendar calendar;
  return scheduleHour(item, calendar);
}

/// The order of a schedule.
template <LineupScheduled L, LineupScheduled R>
[[nodiscard]] bool before(const L& lhs, const R& rhs) {
  return startTime(lhs) < startTime(rhs);
}

}  // namespace orvo
