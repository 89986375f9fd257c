#include <OrvoAPI/Linear/Lineup.h>
#include <OrvoAPI/Linear/LineupScheduled.h>
#include <OrvoAPI/Parsing/DateFormatError.h>
#include <OrvoAPI/Parsing/DateFormatter.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>

#include "tests/support/Document.h"
#include "tests/support/Zone.h"

namespace orvo {
namespace {

const Document kChannel{{"id", R"("c")"}, {"name", R"("C")"}, {"order", "3"}};
const Document kSlot{{"start", R"("2017-05-01T10:05:00.000Z")"},
                     {"end", R"("2017-05-01T12:00:00+01:00")"},
                     {"title", R"("T")"},
                     {"channel", kChannel.text()}};

LineupSlot slotAt(std::string_view start) {
  return {.start = from8601(start).force(), .title = std::string(start.substr(11, 5))};
}

Lineup lineupOf(std::initializer_list<std::string_view> starts) {
  std::vector<LineupSlot> slots;
  for (const auto start : starts) slots.push_back(slotAt(start));
  return Lineup::grouping(std::move(slots));
}

/// Each day's start, then its hours with the slots' titles; in UTC.
std::string listing(const Lineup& lineup) {
  std::string text;
  for (const LineupDay& day : lineup.days) {
    text += to8601(day.startTime).substr(0, 16) + ":";
    for (const LineupHour& hour : day.hours) {
      text += " " + to8601(hour.startTime).substr(11, 5) + "(";
      for (const LineupSlot& slot : hour.slots) text += slot.title + " ";
      text.back() = ')';
    }
    text += "\n";
  }
  return text;
}

TEST(LineupSlotParser, ReportsEachRequiredMember) {
  expectRequired("LineupSlot", kSlot, {"start", "end", "title", "channel"},
                 LineupSlotParser::parse);
  const auto parse = [](const Document& channel) {
    return LineupSlotParser::parse(kSlot.with("channel", channel.text()));
  };
  expectRequired("LineupSlot", kChannel,
                 {"id=channel/id", "name=channel/name", "order=channel/order"}, parse);
  EXPECT_EQ(failureOf(parse(kChannel.with("order", R"("3")"))), "LineupSlot: channel/order");

  const auto late = LineupSlotParser::parse(kSlot.with("end", R"("12 o'clock")").without("title"));
  const auto* error = late.error()->as<DateFormatError>();
  ASSERT_NE(error, nullptr);
  EXPECT_EQ(error->as<DateFormatError::stringDoesNotMatchFormat>()->string, "12 o'clock");
}

TEST(LineupSlotParser, KeepsTheImagesThatItCanRead) {
  using Key = LineupTemplateImage::ResourceKey;
  const auto slot = LineupSlotParser::parse(kSlot.with("images", R"({
          "icon": {"template": "i"}, "orvo_display_art_square": {"template": 1},
          "poster": {"template": "p"}, "orvo_background_portrait": "b",
          "orvo_cover_art_banner": {"template": "c"}})"))
                        .force();
  EXPECT_EQ(slot.start, from8601("2017-05-01T10:05:00Z").force());
  EXPECT_EQ(slot.end, from8601("2017-05-01T11:00:00Z").force());
  EXPECT_EQ(slot.title + slot.channelID + slot.channelName, "TcC");
  EXPECT_EQ(slot.channelOrder, 3);
  EXPECT_EQ(slot.imageResources.size(), 2U);
  EXPECT_EQ(slot.imageResources.find(Key::icon)->template_, "i");
  EXPECT_EQ(slot.imageResources.find(Key::coverBanner)->template_, "c");
}

TEST(LineupParser, DropsTheSlotsThatItCannotRead) {
  const auto parse = [](const std::string& json) {
    return LineupParser::parse(JSONDataParser::array(Data(json)).force());
  };
  const auto lineup = parse("[" + kSlot.without("channel").text() + "," + kSlot.text() + ",{}]");
  ASSERT_EQ(lineup.slots.size(), 1U);
  EXPECT_EQ(lineup.slots[0], LineupSlotParser::parse(kSlot).force());
  EXPECT_EQ(lineup.ttl(), 300);
  EXPECT_EQ(parse("[{}]"), Lineup{});
}

TEST(Lineup, IsGroupedByTheStartsOfItsSlots) {
  const Zone zone("UTC");
  const Lineup lineup =
      lineupOf({"2017-05-02T00:00:00Z", "2017-05-01T11:00:00Z", "2017-05-01T10:55:00Z",
                "2017-05-01T23:59:59Z", "2017-05-01T10:05:00Z", "2017-05-01T10:55:00Z"});
  EXPECT_EQ(listing(lineup),
            "2017-05-01T00:00: 10:00(10:55 10:05 10:55) 11:00(11:00) 23:00(23:59)\n"
            "2017-05-02T00:00: 00:00(00:00)\n");
  std::string order;
  for (const LineupSlot& slot : lineup.slots) order += slot.title + " ";
  EXPECT_EQ(order, "00:00 11:00 10:55 23:59 10:05 10:55 ") << "document order";
}

TEST(Lineup, IsGroupedInTheDevicesZone) {
  const Zone zone("Asia/Kolkata");  // 5:30 ahead
  EXPECT_EQ(listing(lineupOf({"2017-05-01T18:29:00Z", "2017-05-01T18:31:00Z"})),
            "2017-04-30T18:30: 17:30(18:29)\n2017-05-01T18:30: 18:30(18:31)\n");
}

TEST(Lineup, CountsElapsedHoursWhenClocksChange) {
  const Zone zone("Europe/Vienna");
  // Clocks go from 2:00 to 3:00 at 1:00 UTC: the wall's 3:30 counts as the third hour of the day,
  // and 23:30 as the first of the next.
  EXPECT_EQ(listing(lineupOf({"2017-03-26T00:30:00Z", "2017-03-26T01:30:00Z",
                              "2017-03-26T21:30:00Z", "2017-03-26T22:30:00Z"})),
            "2017-03-25T23:00: 00:00(00:30) 02:00(01:30)\n"
            "2017-03-26T22:00: 22:00(21:30 22:30)\n");
  // Clocks go back from 3:00 to 2:00 at 1:00 UTC: the wall's two hours from 2:00 are one.
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

TEST(LineupScheduled, HoldsForSlotsHoursDaysAndDates) {
  const Zone zone("UTC");
  const Lineup lineup = lineupOf({"2017-05-01T10:05:00Z"});
  const Date start = lineup.slots[0].start;
  const LineupDay& day = lineup.days[0];
  EXPECT_EQ(scheduleDay(lineup.slots[0]), day.startTime);
  EXPECT_EQ(scheduleDay(day), day.startTime);
  EXPECT_EQ(scheduleHour(start), day.hours[0].startTime);
  EXPECT_EQ(scheduleHour(day.hours[0]), day.hours[0].startTime);
  EXPECT_TRUE(before(day, lineup.slots[0]) && before(day.hours[0], start));
  EXPECT_FALSE(before(start, lineup.slots[0]));
}

TEST(Lineup, LeavesItsHoursAndDaysReadable) {
  std::optional<Lineup> lineup = lineupOf({"2017-05-01T10:05:00Z", "2017-05-01T11:05:00Z"});
  const LineupDay day = lineup->days[0];
  const LineupHour hour = lineup->days[0].hours[1];
  const LineupSlots slots = lineup->slots;
  lineup.reset();
  EXPECT_EQ(hour.slots[0].title + day.hours[0].slots.begin()->title, "11:0510:05");
  EXPECT_EQ(slots.size(), 2U);
}

TEST(Lineup, IsEqualWhateverHoldsItsSlots) {
  const auto first = slotAt("2017-05-01T10:05:00Z");
  const auto second = slotAt("2017-05-01T10:06:00Z");
  const Lineup lineup = Lineup::grouping({first, second});
  EXPECT_EQ(lineup, Lineup::grouping({first, second}));
  EXPECT_NE(lineup, Lineup::grouping({second, first}));
}

}  // namespace
}  // namespace orvo
