#include <OrvoAPI/HTTP/URLError.h>
#include <tests/Tool/Fixtures.h>
#include <tool/Text.h>
#include <tool/trace/Waterfall.h>

#include <sstream>

namespace orvo::tool {
namespace {

using std::chrono::milliseconds;

/// A report whose phases took these milliseconds.
RequestReport report(std::string_view operation, std::string identifier, int begun,
                     const std::array<int, RequestReport::kPhases>& phases, int status = 200) {
  RequestReport report{.operation = operation,
                       .identifier = std::move(identifier),
                       .source = RequestReport::Source::network,
                       .status = status,
                       .bytesReceived = 1234,
                       .protocol = "1.1",
                       .begun = std::chrono::steady_clock::time_point(milliseconds(begun))};
  for (std::size_t i = 0; i < phases.size(); ++i) {
    report.phases[i] = milliseconds(phases[i]);
    report.total += report.phases[i];
  }
  return report;
}

std::vector<RequestReport> reports() {
  std::vector<RequestReport> all{
      report("fetchPage", "home\x1b[2J", 200, {5, 120, 0, 5, 0, 0, 0, 1, 60, 8, 0, 1}),
      report("openSession", "", 0, {0, 0, 0, 10, 40, 30, 60, 0, 50, 5, 0, 5}),
      report("fetchVideo", "film", 395, {0, 0, 30, 0, 0, 0, 0, 0, 0, 0, 0, 0}, 0),
      report("fetchVideo", "夜の市場", 460, {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, 0),
      report("fetchVideo", std::string(60, 'x'), 470, {0, 0, 0, 0, 0, 0, 0, 0, 15, 15, 0, 0}, 404)};
  all[0].retries = 1;
  all[0].isConnectionReused = true;
  all[2].error = URLError{URLError::timedOut, "slow"};
  all[2].redirects = {"/a", "/b"};
  all[3].source = RequestReport::Source::cache;
  all[4].error = URLError{URLError::unknown, ""};
  all[4].bytesReceived = 12'345'678;
  return all;
}

TEST(Waterfall, FitsEveryWidthAndNeedsNoColour) {
  std::string text;
  for (const std::size_t columns : {40U, 80U, 100U, 160U}) {
    Screen screen({.isTerminal = true, .columns = columns});
    drawWaterfall(screen, reports(), columns == 40 ? 7 : 0);
    text += "# " + std::to_string(columns) + " columns\n" + screen.text() + "\n";
    std::istringstream lines(screen.text());
    for (std::string line; std::getline(lines, line);) EXPECT_LE(displayWidth(line), columns);
  }
  Screen saved({.colour = true, .columns = 60});
  drawWaterfall(saved, reports(), 0);
  expectFixture("drawings/waterfall.txt", replaced(text + saved.text(), "\x1b", "^["));
}

/// What each line of JSON is about.
std::multiset<std::string> subjects(const std::string& error) {
  std::istringstream lines(error);
  std::multiset<std::string> subjects;
  for (std::string line; std::getline(lines, line);) {
    const auto trace = JSONDataParser::object(Data(line)).force().object("trace");
    subjects.emplace(trace ? *trace->string("operation") : line.substr(2, 5));
  }
  return subjects;
}

TEST(Trace, ComesLineByLineAndTheErrorLast) {
  const DocumentService service;
  const std::string api = " --api " + service.base() + "/v3/ --resources " + service.base() + "/";
  const auto lines = [&](const std::string& command) {
    const std::string error = runLine(command).error;
    const std::size_t failure = error.find("{\"error\"");
    EXPECT_TRUE(failure == std::string::npos || failure > error.rfind("{\"trace\"")) << error;
    return subjects(error);
  };
  using Lines = std::multiset<std::string>;
  EXPECT_EQ(lines("orvo --trace --json video nobody" + api),
            (Lines{"error", "fetchConfiguration", "fetchVideo", "openSession"}));
  EXPECT_EQ(lines("orvo --trace --json views --api " + service.base() + "/down/"),
            (Lines{"error", "fetchConfiguration", "openSession"}));
  EXPECT_TRUE(lines("ORVO_TRACE=1 orvo --demo --json tour").contains("fetchPlaylistOfStream"));
  EXPECT_EQ(runLine("ORVO_TRACE=0 orvo --demo video welcome --json").error, "");
}

TEST(Trace, IsDrawnBeforeTheErrorAndWhenNobodyReadsOn) {
  const auto failed = runLine("orvo --trace --demo video nobody");
  EXPECT_EQ(failed.status, 1);
  EXPECT_LT(failed.error.find("  fetchVideo nobody\n"),
            failed.error.find("orvo: fetchVideo nobody:"));
  const auto left =
      runLine("orvo --trace --demo collection everything --all --fields id | head -1");
  EXPECT_NE(left.error.find("  fetchItemCollection everything\n"), std::string::npos) << left.error;
  EXPECT_EQ(std::ranges::count(left.output, '\n'), 1);
}

}  // namespace
}  // namespace orvo::tool
