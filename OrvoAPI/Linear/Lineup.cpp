#include <OrvoAPI/Linear/LinearReadersInternal.h>
#include <OrvoAPI/Linear/Lineup.h>
#include <OrvoAPI/Linear/LineupScheduled.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <numeric>
#include <span>
#include <utility>

namespace orvo {
namespace detail {

/// Sorts a lineup's slots into hours and days. Used by one thread.
class LineupGrouping {
 public:
  [[nodiscard]] static Lineup of(std::vector<LineupSlot> all);

 private:
  [[nodiscard]] static std::vector<LineupHour> groupHours(
      const Shared<LineupSlots::Storage>& storage, std::size_t first,
      const std::vector<Date>& hourOfSlot);
};

/// Hours of `positions`, which are sorted by hour and lie at `first` in the storage.
std::vector<LineupHour> LineupGrouping::groupHours(const Shared<LineupSlots::Storage>& storage,
                                                   std::size_t first,
                                                   const std::vector<Date>& hourOfSlot) {
  std::vector<LineupHour> hours;
  const auto& positions = storage->positions;
  for (std::size_t begin = first, end = first; begin < positions.size(); begin = end) {
    const Date hour = hourOfSlot[positions[begin]];
    while (end < positions.size() && hourOfSlot[positions[end]] == hour) ++end;
    hours.push_back({.startTime = hour, .slots_ = {storage, begin, end - begin}});
  }
  return hours;
}

namespace {

std::vector<LineupDay> groupDays(std::vector<LineupHour> hours, Calendar& calendar) {
  std::vector<LineupDay> days;
  for (LineupHour& hour : hours) {
    const Date day = scheduleDay(hour, calendar);
    // At the end, unless clocks went back over midnight.
    auto at = std::ranges::lower_bound(days, day, {}, &LineupDay::startTime);
    if (at == days.end() || at->startTime != day) at = days.insert(at, {.startTime = day});
    at->hours.push_back(std::move(hour));
  }
  return days;
}

/// Puts positions, which ascend, in the order of their hours.
void sortByHour(std::span<std::uint32_t> positions, const std::vector<Date>& hourOfSlot) {
  // Many documents are in chronological order.
  if (std::ranges::is_sorted(hourOfSlot)) return;
  // A schedule has many slots and few hours, so they are counted, unless a server sends single
  // slots from far-off times, or the local clocks change by less than an hour.
  const auto first =
      static_cast<std::uint64_t>(std::ranges::min(hourOfSlot).millisecondsSince1970());
  std::vector<std::uint32_t> begins(positions.size() + 1);
  std::vector<std::uint32_t> places;
  places.reserve(positions.size());
  for (const Date hour : hourOfSlot) {
    constexpr std::uint64_t kHour = 3'600'000;
    const auto after = static_cast<std::uint64_t>(hour.millisecondsSince1970()) - first;
    if (after % kHour != 0 || after / kHour >= positions.size()) {
      std::ranges::stable_sort(positions, {}, [&](std::uint32_t at) { return hourOfSlot[at]; });
      return;
    }
    places.push_back(static_cast<std::uint32_t>(after / kHour));
    ++begins[places.back() + 1];
  }
  std::partial_sum(begins.begin(), begins.end(), begins.begin());
  for (std::uint32_t at = 0; at < places.size(); ++at) positions[begins[places[at]]++] = at;
}

}  // namespace

Lineup LineupGrouping::of(std::vector<LineupSlot> all) {
  const std::size_t count = all.size();
  Calendar calendar;
  std::vector<Date> hourOfSlot;
  hourOfSlot.reserve(count);
  for (const LineupSlot& slot : all) hourOfSlot.push_back(scheduleHour(slot, calendar));

  // First the positions in document order, then once more by hour.
  std::vector<std::uint32_t> positions(2 * count);
  const auto byHour = std::span(positions).subspan(count);
  std::iota(positions.begin(), positions.begin() + static_cast<std::ptrdiff_t>(count), 0U);
  std::iota(byHour.begin(), byHour.end(), 0U);
  sortByHour(byHour, hourOfSlot);

  const auto storage = std::make_shared<const LineupSlots::Storage>(
      LineupSlots::Storage{std::move(all), std::move(positions)});
  return {.slots_ = {storage, 0, count},
          .days = groupDays(groupHours(storage, count, hourOfSlot), calendar)};
}

}  // namespace detail

Lineup Lineup::grouping(std::vector<LineupSlot> all) {
  return detail::LineupGrouping::of(std::move(all));
}

Lineup LineupParser::parse(const JSONObjects& json) {
  return Lineup::grouping(detail::parsedItems<detail::LineupSlotReader>(json));
}

}  // namespace orvo
