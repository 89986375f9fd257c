#include <signal.h>
#include <tests/support/Test.h>
#include <tool/Progress.h>
#include <tool/Screen.h>
#include <tool/Text.h>
#include <tool/TimeAxis.h>
#include <tool/Wording.h>

namespace orvo::tool {
namespace {

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
  for (const char* mark : {"\u061C", "\u200E", "\u200F", "\u202A", "\u202E", "\u2066", "\u2069"}) {
    EXPECT_EQ(printable(mark), "");
  }
  EXPECT_EQ(printable("\u2028\u2029"), "\uFFFD\uFFFD");
  EXPECT_EQ(escaped("a\x1b\n\xC2\x9B\u200F\u202E\xFF"),
            "a\\u001b\\u000a\\u009b\\u200f\\u202e\uFFFD");
  std::string marks("n");
  for (int mark = 0; mark < 10'000; ++mark) marks += "\u0303";
  EXPECT_LT(cut(marks, 5).size(), 500U) << "endless within one column";
}

TEST(ToolText, BreaksLinesAtSpacesOrElseAnywhere) {
  EXPECT_EQ(wrapped("one two  three", 7), (std::vector<std::string>{"one two", "three"}));
  EXPECT_EQ(wrapped("abcdefgh ij", 3), (std::vector<std::string>{"abc", "def", "gh", "ij"}));
  EXPECT_EQ(wrapped("夜の市場", 1).size(), 4U);
  EXPECT_TRUE(wrapped("  ", 5).empty());
}

TEST(ToolText, RoundsADurationToWhatPeopleSay) {
  EXPECT_EQ(durationText(59.5) + ", " + durationText(90.0), "1 min, 2 min");
  EXPECT_EQ(durationText(3'569.0) + ", " + durationText(3'570.0), "59 min, 1 h");
  EXPECT_EQ(durationText(3'900.0), "1 h 05");
}

TEST(ScreenTable, IsNotFilledUpToTheWidthOfAGiantText) {
  Screen screen({.isTerminal = true, .redraws = true, .columns = 80});
  Table table{.columns = {{}, {}}, .rows = std::vector<std::vector<Cell>>(1'000, {{"a"}, {"b"}})};
  table.rows.push_back({{std::string(100'000, 'x')}, {"b"}});
  screen.table(table);
  EXPECT_LT(screen.text().size(), 400'000U);
}

TEST(ProgressLine, StandsOnATerminalAfterASecondAndIsWipedAway) {
  const auto seen = [](const Terminal& terminal, std::chrono::seconds waited) {
    testing::internal::CaptureStderr();
    {
      Progress progress("fetching", terminal, std::chrono::steady_clock::now() - waited);
      progress.tick();
      progress.set(30, 40);
      progress.tick();
    }
    return testing::internal::GetCapturedStderr();
  };
  const Terminal terminal{.isTerminal = true, .redraws = true, .columns = 60};
  EXPECT_EQ(seen(terminal, 0s), "");
  EXPECT_EQ(seen({.columns = 50}, 60s), "");
  EXPECT_EQ(seen(terminal, 3'600s),
            "\r◐ fetching  3600 s\x1b[K"
            "\r◓ fetching  ███████████████░░░░░  30 of 40  3600 s\x1b[K\r\x1b[K");
  EXPECT_EQ(seen({.isTerminal = true, .redraws = true, .columns = 12}, 60s),
            "\r◐ fetching…\x1b[K\r◓ fetching…\x1b[K\r\x1b[K");
}

TEST(ProgressLineDeathTest, IsWipedAwayWhenTheToolIsInterrupted) {
  const auto interrupted = [] {
    const auto before = std::chrono::steady_clock::now() - 5s;
    Progress progress("fetching", {.isTerminal = true, .redraws = true}, before);
    progress.tick();
    raise(SIGINT);
  };
  EXPECT_EXIT(interrupted(), testing::KilledBySignal(SIGINT), "fetching  5 s\x1b\\[K\r\x1b\\[K$");
  const auto ignores = [&] {
    std::signal(SIGINT, SIG_IGN);  // as whoever started the tool had it
    interrupted();
    _exit(3);
  };
  EXPECT_EXIT(ignores(), testing::ExitedWithCode(3), "");
}

TEST(ToolTimeAxis, KeepsInstantsInItsColumnsAndItsStepsRound) {
  const TimeAxis axis(kNoon, 2h, 60);
  EXPECT_EQ(axis.column(kNoon + 30min), 15U);
  EXPECT_EQ(axis.column(kNoon - 1h), 0U);
  EXPECT_EQ(axis.column(kNoon + 5h), 60U);
  EXPECT_EQ(roundStep(7min), 10min);
  EXPECT_EQ(roundStep(30min), 30min);
}

}  // namespace
}  // namespace orvo::tool
