#include <gtest/gtest.h>
#include <tool/Screen.h>
#include <tool/Text.h>

namespace orvo::tool {
namespace {

TEST(ToolText, MeasuresColumnsNotBytes) {
  EXPECT_EQ(displayWidth("夜の市場"), 8U);
  EXPECT_EQ(displayWidth("Sen\u0303ales"), 7U);
  EXPECT_EQ(displayWidth("\u1112\u1161\u11AB"), 2U);  // a syllable made of three letters
  EXPECT_EQ(displayWidth("🚂"), 2U);
}

TEST(ToolText, CutsBetweenCharactersAndKeepsMarksWithThem) {
  EXPECT_EQ(cut("夜の市場", 8), "夜の市場");
  EXPECT_EQ(cut("夜の市場", 7), "夜の市…");
  EXPECT_EQ(padded("夜の市場", 6), "夜の… ");
  EXPECT_EQ(cut("n\u0303n\u0303n\u0303", 2), "n\u0303…");
  EXPECT_EQ(cut("abc", 0), "");
  EXPECT_EQ(paddedLeft("7", 3), "  7");
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

class ScreenTable : public testing::Test {
 protected:
  std::string drawn(std::size_t columns, bool isTerminal = true) {
    Screen screen({.isTerminal = isTerminal, .columns = columns});
    screen.table({.columns = {{.right = true}, {.least = 6}, {.optional = 1}, {}},
                  .rows = {{{"1"}, {"夜の市場 at night"}, {"optional"}, {"id-1"}},
                           {{"12"}, {"short"}, {""}, {"id-22"}}}});
    return screen.text();
  }
};

TEST_F(ScreenTable, AlignsWideCharacters) {
  EXPECT_EQ(drawn(60),
            "   1  夜の市場 at night  optional  id-1\n"
            "  12  short                        id-22\n");
}

TEST_F(ScreenTable, ShrinksThenLeavesOptionalColumnsOut) {
  EXPECT_EQ(drawn(34),
            "   1  夜の市場 a…  optional  id-1\n"
            "  12  short                  id-22\n");
  EXPECT_EQ(drawn(22),
            "   1  夜の市場…  id-1\n"
            "  12  short      id-22\n");
}

TEST(ScreenTables, StandInLineAndFitThoughAColumnIsEmpty) {
  Screen screen({.isTerminal = true, .columns = 20});
  screen.tables({{}, {.least = 4}, {}}, {{"One", {{{}, {"a title"}, {"id-1"}}}},
                                         {"Two", {{{}, {"夜の市場 at night"}, {"2"}}}}});
  EXPECT_EQ(screen.text(),
            "\nOne\n    a title     id-1\n"
            "\nTwo\n    夜の市場 …  2\n");
}

TEST_F(ScreenTable, CutsNothingWhereNoTerminalIs) { EXPECT_EQ(drawn(10, false), drawn(60)); }

}  // namespace
}  // namespace orvo::tool
