#include <OrvoAPI/Base/IntegersInternal.h>
#include <OrvoAPI/Platform/Calendar.h>

#include <time.h>

#include <algorithm>
#include <iterator>
#include <optional>

namespace orvo {

namespace {

/// Seconds since 1970: of an instant; of the time that a wall clock shows, read as if it were UTC.
/// The difference is the zone's offset.
using Instant = std::int64_t;
using WallTime = std::int64_t;

constexpr std::int64_t secondsPerDay = 86'400;

static_assert(sizeof(time_t) == sizeof(Instant), "dates beyond 2038 need _TIME_BITS=64");

Instant instantOf(Date date) { return detail::floorDivide(date.millisecondsSince1970(), 1000); }
Date dateOf(Instant instant) { return Date(instant * 1000); }

/// How far the zone is east of UTC at an instant. The C library's own conversion, because the other
/// direction, mktime, would read the app's TZ anew and does not specify what becomes of a time that
/// the clocks skip.
std::int64_t offsetAt(Instant instant) {
  tm parts{};
  const time_t time = instant;
  return localtime_r(&time, &parts) ? parts.tm_gmtoff : 0;
}

/// The first instant in (`before`, `after`] at which the offset is that of `after`; it changes once
/// in between.
Instant changeBetween(Instant before, Instant after) {
  const auto offset = offsetAt(after);
  while (after - before > 1) {
    const Instant middle = before + (after - before) / 2;
    (offsetAt(middle) == offset ? after : before) = middle;
  }
  return after;
}

/// What the clocks do around a wall-clock time: their offsets before and after, and when they
/// change, if they do.
class Surroundings {
 public:
  explicit Surroundings(WallTime wall) : wall_(wall) {
    const Instant near = wall - offsetAt(wall);
    // A day on either side covers any change that matters, even one by a whole day.
    before_ = near - secondsPerDay;
    after_ = near + secondsPerDay;
    offsetBefore_ = offsetAt(before_);
    offsetAfter_ = offsetAt(after_);
  }

  /// When the clocks first show this time, if they do.
  [[nodiscard]] std::optional<Instant> first() const {
    for (const auto offset :
         {std::max(offsetBefore_, offsetAfter_), std::min(offsetBefore_, offsetAfter_)}) {
      if (offsetAt(wall_ - offset) == offset) return wall_ - offset;
    }
    return std::nullopt;
  }
  /// When it is this time by the clocks as they were before the change.
  [[nodiscard]] Instant byUnchangedClocks() const { return wall_ - offsetBefore_; }
  [[nodiscard]] Instant change() const { return changeBetween(before_, after_); }

 private:
  WallTime wall_;
  Instant before_;
  Instant after_;
  std::int64_t offsetBefore_;
  std::int64_t offsetAfter_;
};

}  // namespace

const Calendar::Stretch& Calendar::otherStretch(Date date) {
  auto next = std::ranges::upper_bound(stretches_, date, {}, &Stretch::begin);
  if (next == stretches_.begin() || !std::prev(next)->holds(date)) {
    // Only a hostile document has more than a year of days, and each insertion moves the rest.
    constexpr std::size_t kMostStretches = 400;
    if (stretches_.size() == kMostStretches) {
      stretches_.clear();
      next = stretches_.end();
    }
    next = std::next(stretches_.insert(next, findStretch(date)));
  }
  latest_ = static_cast<std::size_t>(std::prev(next) - stretches_.begin());
  return stretches_[latest_];
}

Calendar::Stretch Calendar::findStretch(Date date) {
  const Instant instant = instantOf(date);
  const auto offset = offsetAt(instant);
  const auto day = detail::floorDivide(instant + offset, secondsPerDay);
  const WallTime midnight = day * secondsPerDay;
  Instant begin = midnight - offset;
  Instant end = begin + secondsPerDay;
  Instant start = begin;
  if (offsetAt(begin - secondsPerDay) != offset || offsetAt(end) != offset) {
    if (offsetAt(begin) != offset) begin = changeBetween(begin, instant);
    if (offsetAt(end - 1) != offset) end = changeBetween(instant, end - 1);
    const Surroundings surroundings(midnight);
    const auto first = surroundings.first();
    start = first ? *first : surroundings.change();
  }
  // 1 January 1970 was a Thursday.
  const auto weekday = static_cast<int>((day % 7 + 7 + 4) % 7) + 1;
  const auto wallTime = std::chrono::seconds(begin + offset - midnight);
  return {dateOf(begin), dateOf(end), dateOf(start), wallTime, offset, weekday};
}

Date Calendar::addingDays(Date from, int days) {
  const Date date = countable(from);
  const auto offset = stretch(date).secondsEastOfUTC;
  const Instant instant = instantOf(date);
  const Instant unchanged = instant + days * secondsPerDay;
  if (offsetAt(unchanged) == offset) return date + std::chrono::days(days);
  const Surroundings surroundings(unchanged + offset);
  const Instant changed = surroundings.first().value_or(surroundings.byUnchangedClocks());
  return dateOf(changed) + (date - dateOf(instant));
}

Date Calendar::addingHours(Date date, int hours) { return date + std::chrono::hours(hours); }

}  // namespace orvo
