#include <OrvoAPI/Linear/Lineup.h>
#include <OrvoAPI/Linear/LineupScheduled.h>
#include <OrvoAPI/Parsing/DateFormatter.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>

#include "tests/support/Zone.h"

namespace orvo {
namespace {

Lineup lineupOf(std::initializer_list<std::string_view> starts) {
  std::vector<LineupSlot> slots;
  for (const auto start : starts) {
    slots.push_back({.start = from8601(start).force(), .title = std::string(start.substr(11, 5))});
  }
  return Lineup::grouping(std::move(slots));
}

/// Each day's start, then its hours with the slots' titles; in UTC.
std::string listing(const Lineup& lineup) {
  std::string text;
  for (const LineupDay& day : lineup.days) {
    text += to8601(day.startTime).substr(0, 16) + ":";
    for (const LineupHour& hour : day.hours) {
      text += " " + to8601(hour.startTime).substr(11, 5) + "(";
      for (const LineupSlot& slot : hour.slots_) text += slot.title + " ";
      text.back() = ')';
    }
    text += "\n";
  }
  return text;
}

TEST(LineupScheduled, IsOrderedByItsStarts) {
  const Lineup lineup = lineupOf({"2017-05-02T00:00:00Z", "2017-05-01T11:00:00Z"});
  EXPECT_TRUE(before(lineup.days[0], lineup.slots_[0]));
  EXPECT_TRUE(before(lineup.slots_[1], Date(lineup.slots_[0].start)));
  EXPECT_FALSE(before(lineup.slots_[0], lineup.slots_[0].start));
}

TEST(Lineup, IsGroupedInTheDevicesZone) {
  const Zone zone("Asia/Kolkata");  // 5:30 ahead
  EXPECT_EQ(listing(lineupOf({"2017-05-01T18:29:00Z", "2017-05-01T18:31:00Z"})),
            "2017-04-30T18:30: 17:30(18:29)\n2017-05-01T18:30: 18:30(18:31)\n");
  const Zone other("UTC");
  EXPECT_EQ(listing(lineupOf({"2017-05-01T12:00:00Z", "2017-05-01T10:00:00Z"})),
            "2017-05-01T00:00: 10:00(10:00) 12:00(12:00)\n");
}

TEST(Lineup, CountsElapsedHoursWhenClocksChange) {
  const Zone zone("Europe/Vienna");
  // Clocks go from 2:00 to 3:00 at 1:00 UTC: the wall clock's 3:30 counts as the third hour of the
  // day, and 23:30 as the first of the next.
  EXPECT_EQ(listing(lineupOf({"2017-03-26T00:30:00Z", "2017-03-26T01:30:00Z",
                              "2017-03-26T21:30:00Z", "2017-03-26T22:30:00Z"})),
            "2017-03-25T23:00: 00:00(00:30) 02:00(01:30)\n"
            "2017-03-26T22:00: 22:00(21:30 22:30)\n");
  // Clocks go back from 3:00 to 2:00 at 1:00 UTC: the wall clock's two hours from 2:00 are one.
  EXPECT_EQ(listing(lineupOf({"2017-10-29T00:30:00Z", "2017-10-29T01:30:00Z",
                              "2017-10-29T02:30:00Z", "2017-10-29T22:30:00Z"})),
            "2017-10-28T22:00: 00:00(00:30 01:30) 01:00(02:30) 21:00(22:30)\n");
}

TEST(Lineup, MayHoldMoreDaysThanACalendarRemembers) {
  std::vector<LineupSlot> slots(2'000);
  for (std::size_t i = 0; i < slots.size(); ++i) {
    slots[i].start = Date(static_cast<std::int64_t>(i * 7 % 1'000) * 86'400'000);
  }
  const Lineup lineup = Lineup::grouping(slots);
  EXPECT_EQ(lineup.days.size(), 1'000U);
  EXPECT_TRUE(std::ranges::is_sorted(lineup.days, {}, &LineupDay::startTime));
}

TEST(Lineup, LeavesItsHoursAndDaysReadable) {
  std::optional<Lineup> lineup = lineupOf({"2017-05-01T10:05:00Z", "2017-05-01T11:05:00Z"});
  const LineupDay day = lineup->days[0];
  const LineupHour hour = lineup->days[0].hours[1];
  const LineupSlots slots = lineup->slots_;
  lineup.reset();
  EXPECT_EQ(hour.slots_[0].title + day.hours[0].slots_.begin()->title, "11:0510:05");
  EXPECT_EQ(slots.size(), 2U);
  EXPECT_EQ(Lineup::grouping({slots[0], slots[1]}).slots_, slots) << "whatever holds them";
  EXPECT_NE(Lineup::grouping({slots[1], slots[0]}).slots_, slots);
}

}  // namespace
}  // namespace orvo
