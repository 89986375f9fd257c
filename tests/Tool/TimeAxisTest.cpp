#include <gtest/gtest.h>
#include <tool/TimeAxis.h>

namespace orvo::tool {
namespace {

using std::chrono::hours;
using std::chrono::minutes;

const Date kNoon(1'493'640'000'000);  // 2017-05-01T12:00:00Z

TEST(ToolTimeAxis, PutsInstantsIntoColumns) {
  const TimeAxis axis(kNoon, hours(2), 60);
  EXPECT_EQ(axis.column(kNoon), 0U);
  EXPECT_EQ(axis.column(kNoon + minutes(30)), 15U);
  EXPECT_EQ(axis.column(kNoon - hours(1)), 0U);
  EXPECT_EQ(axis.column(kNoon + hours(5)), 60U);
}

TEST(ToolTimeAxis, StepsAreRoundAndLargeEnough) {
  EXPECT_EQ(roundStep(minutes(7)), minutes(10));
  EXPECT_EQ(roundStep(minutes(30)), minutes(30));
  EXPECT_EQ(roundStep(hours(13)), hours(24));
}

TEST(ToolTimeAxis, BoxesAreCutToTheirTimes) {
  const Screen screen({.columns = 40});
  const TimeAxis axis(kNoon, hours(4), 40);
  EXPECT_EQ(boxLine(screen, axis,
                    {{kNoon - hours(1), kNoon + hours(1), "begun before"},
                     {kNoon + minutes(30), kNoon + hours(2), "overlapping"},
                     {kNoon + minutes(150), kNoon + minutes(154), "too short"},
                     {kNoon + hours(3), kNoon + hours(9), "夜の市場 goes on"}}),
            "│begun be…│overlapp…          │夜の市場…");
}

}  // namespace
}  // namespace orvo::tool
