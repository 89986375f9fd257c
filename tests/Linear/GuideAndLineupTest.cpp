#include <OrvoAPI/Linear/LinearProgramGuide.h>
#include <OrvoAPI/Linear/Lineup.h>
#include <OrvoAPI/Linear/LineupScheduled.h>
#include <tests/support/Document.h>
#include <tests/support/Test.h>

namespace orvo {
namespace {

TEST(LinearProgram, DiffersByEachOfItsFields) {
  const KeySet<ImageResourceKey> key = KeySet<ImageResourceKey>::fromBits(1);
  for (const LinearProgram& other : {LinearProgram{.id = "b", .title = "T"},
                                     {.id = "a", .title = "U"},
                                     {.id = "a", .title = "T", .subheading = ""},
                                     {.id = "a", .title = "T", .shortDescription = ""},
                                     {.id = "a", .title = "T", .playbackStatus = {}},
                                     {.id = "a", .title = "T", .imageResources = {"a", key}},
                                     {.id = "a", .title = "T", .startTime = Date(1)},
                                     {.id = "a", .title = "T", .endTime = Date(1)},
                                     {.id = "a", .title = "T", .duration = 0}}) {
    EXPECT_NE(other, (LinearProgram{.id = "a", .title = "T"}));
  }
}

TEST(LinearProgramGuideParser, IsSilentOnASilencedConsole) {
  const CapturedConsole console;
  silenceConsole();
  const auto document = object(R"({"meta": {"total": 1, "limit": 1, "offset": 0}, "items": [{}]})");
  EXPECT_TRUE(LinearProgramGuideParser::parse(document, {}, {}).force().items.empty());
  EXPECT_EQ(console.lines, "");
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
  const LineupSlot ten{.start = Date(36'300'000), .title = "10:05"};
  const LineupSlot eleven{.start = Date(39'900'000), .title = "11:05"};
  std::optional<Lineup> lineup = Lineup::grouping({ten, eleven});
  const LineupDay day = lineup->days[0];
  const LineupHour hour = lineup->days[0].hours[1];
  const LineupSlots slots = lineup->slots_;
  lineup.reset();
  EXPECT_EQ(hour.slots_[0].title + day.hours[0].slots_.begin()->title, "11:0510:05");
  EXPECT_EQ(slots.size(), 2U);
  EXPECT_EQ(Lineup::grouping({ten, eleven}).slots_, slots) << "whatever holds them";
  EXPECT_NE(Lineup::grouping({eleven, ten}).slots_, slots);
  EXPECT_TRUE(before(day, ten) && before(ten, hour) && !before(ten, ten.start));
}

}  // namespace
}  // namespace orvo
