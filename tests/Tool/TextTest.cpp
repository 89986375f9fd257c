#include <gtest/gtest.h>
#include <tool/Screen.h>
#include <tool/Text.h>
#include <tool/TimeAxis.h>

namespace orvo::tool {
namespace {

using namespace std::chrono_literals;
const Date kNoon(1'493'640'000'000);  // 2017-05-01T12:00:00Z

TEST(ToolText, MeasuresColumnsNotBytes) {
  EXPECT_EQ(displayWidth("夜の市場"), 8U);
  EXPECT_EQ(displayWidth("Sen\u0303ales"), 7U);
  EXPECT_EQ(displayWidth("\u1112\u1161\u11AB"), 2U);  // a syllable made of three letters
  EXPECT_EQ(displayWidth("🚂"), 2U);
}

TEST(ToolText, CutsBetweenCharactersAndKeepsMarksWithThem) {
  EXPECT_EQ(cut("夜の市場", 7), "夜の市…");
  EXPECT_EQ(padded("夜の市場", 6), "夜の… ");
  EXPECT_EQ(cut("n\u0303n\u0303n\u0303", 2), "n\u0303…");
  EXPECT_EQ(cut("abc", 0), "");
}

TEST(ToolText, DisarmsWhatTerminalsWouldObey) {
  EXPECT_EQ(printable("a\x1b[31mb\x07\x7F"), "a\uFFFD[31mb\uFFFD\uFFFD");
  EXPECT_EQ(printable("a\nb\tc"), "a b c");
  EXPECT_EQ(printable("\xC2\x9B"), "\uFFFD");  // the same as ESC [ in eight bits
  EXPECT_EQ(printable("\xFF\xE5\xA4"), "\uFFFD\uFFFD\uFFFD");
  EXPECT_EQ(printable("\u202Eabc\u202C"), "abc");
}

TEST(ToolText, BreaksLinesAtSpacesOrElseAnywhere) {
  EXPECT_EQ(wrapped("one two  three", 7), (std::vector<std::string>{"one two", "three"}));
  EXPECT_EQ(wrapped("abcdefgh ij", 3), (std::vector<std::string>{"abc", "def", "gh", "ij"}));
  EXPECT_EQ(wrapped("夜の市場", 1).size(), 4U);
  EXPECT_TRUE(wrapped("  ", 5).empty());
}

std::string drawn(std::size_t columns, bool isTerminal = true) {
  Screen screen({.isTerminal = isTerminal, .columns = columns});
  screen.table({.columns = {{.right = true}, {.least = 6}, {.optional = 1}, {}},
                .rows = {{{"1"}, {"夜の市場 at night"}, {"optional"}, {"id-1"}},
                         {{"12"}, {"short"}, {""}, {"id-22"}}}});
  return screen.text();
}

TEST(ScreenTable, ShrinksThenLeavesOptionalColumnsOutOnATerminal) {
  const std::string whole =
      "   1  夜の市場 at night  optional  id-1\n"
      "  12  short                        id-22\n";
  EXPECT_EQ(drawn(60), whole);
  EXPECT_EQ(drawn(10, false), whole) << "no terminal";
  EXPECT_EQ(drawn(34),
            "   1  夜の市場 a…  optional  id-1\n"
            "  12  short                  id-22\n");
  EXPECT_EQ(drawn(22),
            "   1  夜の市場…  id-1\n"
            "  12  short      id-22\n");
}

TEST(ScreenTable, StandsInLineWithOthersThoughAColumnIsEmpty) {
  Screen screen({.isTerminal = true, .columns = 20});
  screen.tables({{}, {.least = 4}, {}}, {{"One", {{{}, {"a title"}, {"id-1"}}}},
                                         {"Two", {{{}, {"夜の市場 at night"}, {"2"}}}}});
  EXPECT_EQ(screen.text(),
            "\nOne\n    a title     id-1\n"
            "\nTwo\n    夜の市場 …  2\n");
}

TEST(ToolTimeAxis, KeepsInstantsInItsColumnsAndItsStepsRound) {
  const TimeAxis axis(kNoon, 2h, 60);
  EXPECT_EQ(axis.column(kNoon + 30min), 15U);
  EXPECT_EQ(axis.column(kNoon - 1h), 0U);
  EXPECT_EQ(axis.column(kNoon + 5h), 60U);
  EXPECT_EQ(roundStep(7min), 10min);
  EXPECT_EQ(roundStep(30min), 30min);
}

TEST(ToolTimeAxis, BoxesAreCutToTheirTimes) {
  const Screen screen({.columns = 40});
  const TimeAxis axis(kNoon, 4h, 40);
  EXPECT_EQ(boxLine(screen, axis,
                    {{kNoon - 1h, kNoon + 1h, "begun before"},
                     {kNoon + 30min, kNoon + 2h, "overlapping"},
                     {kNoon + 150min, kNoon + 154min, "too short"},
                     {kNoon + 3h, kNoon + 9h, "夜の市場 goes on"}}),
            "│begun be…│overlapp…          │夜の市場…");
}

}  // namespace
}  // namespace orvo::tool
