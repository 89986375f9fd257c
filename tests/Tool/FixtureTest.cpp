#include <tests/Tool/Fixtures.h>
#include <tests/support/Zone.h>
#include <tool/GuideView.h>
#include <tool/LineupView.h>
#include <tool/OnAirView.h>

#include <filesystem>
#include <sstream>

namespace orvo::tool {
namespace {

/// The lines, each after a mark; what a terminal obeys is made visible.
std::string marked(const std::string& text, const std::string& mark) {
  std::istringstream lines(replaced(replaced(text, "\r\n", "\n"), "\x1b", "^["));
  std::string out;
  for (std::string line; std::getline(lines, line);) out += mark + line + "\n";
  return out;
}

/// Runs the commands of a transcript again. `$ COMMAND` writes into files, `$60 COMMAND` on a
/// terminal of 60 columns; then come the requests (<), what stands on standard output, what stands
/// on standard error (!), and the exit status (=) unless it is 0.
std::string rerun(const std::string& transcript) {
  const DocumentService service;
  std::istringstream lines(transcript);
  std::string out;
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("#")) out += line + "\n";
    if (!line.starts_with("$")) continue;
    out += (out.empty() ? "" : "\n") + line + "\n";
    const std::size_t before = service.requests();
    const std::string command = line.substr(line.find(' ') + 1);
    const ToolRun run = runLine(
        replaced(replaced(command, "$api", kOptions), kHost, service.base()), std::atoi(&line[1]));
    const std::string targets = service.targets(before);
    if (!targets.empty()) out += "<" + targets + "\n";
    out += marked(run.output, "") + marked(run.error, "! ");
    if (run.status != 0) out += "= " + std::to_string(run.status) + "\n";
  }
  return replaced(out, service.base(), kHost);
}

std::vector<std::string> transcripts() {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(ORVO_FIXTURES "/transcripts")) {
    names.push_back(entry.path().stem());
  }
  return names;
}

class Transcript : public testing::TestWithParam<std::string> {};

TEST_P(Transcript, ReadsTheSameAgain) {
  const std::string name = "transcripts/" + GetParam() + ".txt";
  expectFixture(name, rerun(fixture(name)));
}

INSTANTIATE_TEST_SUITE_P(Fixtures, Transcript, testing::ValuesIn(transcripts()),
                         [](const auto& name) { return name.param; });

const Date kMay(1'493'596'800'000);  // 2017-05-01T00:00:00Z

template <class Draw>
std::string drawn(std::size_t columns, Draw draw) {
  Screen screen({.isTerminal = true, .redraws = true, .colour = true, .columns = columns});
  draw(screen);
  return replaced("# " + std::to_string(columns) + " columns\n" + screen.text() + "\n", "\x1b",
                  "^[");
}

TEST(LinearViews, ShowThePresent) {
  const Zone zone("UTC");
  const auto documents = serviceDocuments();
  const auto guide = LinearProgramGuideParser::parse(*documents.object("/v3/epg"), {}, {}).force();
  const auto lineup = LineupParser::parse(*documents.objects("/lineups/grid.json"));
  const LinearStream stream{.id = "id", .label = "One", .description = "On", .iconID = "icon"};
  const auto& programs = guide.items;
  const GuideUpdate update{
      .video = {},
      .program = programs[2],
      .days = {{"TODAY", {programs[2], programs[4], programs[3]}}, {"TOMORROW", {programs[6]}}}};
  std::string text;
  for (const auto time : {-5h, 4h, 10h, 12h, 23h, 60h}) {
    text += drawn(80, [&](Screen& screen) { drawGuide(screen, guide, stream, kMay + time); });
  }
  for (const auto display : {LineupDisplayKind::grid, LineupDisplayKind::lineup}) {
    const auto draw = [&](Screen& screen) { drawLineup(screen, lineup, display, kMay + 12h); };
    text += drawn(80, draw) + drawn(50, draw);
  }
  for (const auto time : {9h, 12h}) {
    const auto draw = [&](Screen& screen) { drawOnAir(screen, "One", update, kMay + time); };
    text += drawn(80, draw) + drawn(40, draw) + onAirLine(update, kMay + time) + "\n";
  }
  expectFixture("drawings/present.txt", text);
}

TEST(LinearViews, LeaveOutWhatNobodyReads) {
  const Zone zone("UTC");
  std::vector<LineupSlot> slots(20'000);
  for (std::size_t day = 0; day < slots.size(); ++day) {
    const Date start = kMay + 24h * static_cast<int>(day);
    slots[day] = {.start = start, .end = kMay + 480'000h, .title = std::string(999, 'x')};
    slots[day].channelID = std::to_string(day);
  }
  const Date now = kMay + 24h * 19'995;
  const auto text = drawn(80, [&](Screen& screen) {
    drawLineup(screen, Lineup::grouping(slots), LineupDisplayKind::grid, now);
  });
  EXPECT_NE(text.find("19,986 days left out, 19,950 channels left out"), std::string::npos);
  EXPECT_NE(text.find("1 Feb 2072"), std::string::npos) << "the last day, soon after the present";
  EXPECT_LT(std::ranges::count(text, '\n'), 10'000);

  auto guide =
      LinearProgramGuideParser::parse(*serviceDocuments().object("/v3/epg"), {}, {}).force();
  guide.items.resize(1);
  guide.items[0].startTime = Date(-62'000'000'000'000);
  guide.items[0].endTime = Date(250'000'000'000'000);
  const LinearStream stream{};
  EXPECT_LT(drawn(80, [&](Screen& screen) { drawGuide(screen, guide, stream, kMay); }).size(), 500U)
      << "of 10,000 years";
}

}  // namespace
}  // namespace orvo::tool
