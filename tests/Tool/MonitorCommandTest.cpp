#include <OrvoAPI/Parsing/JSONDataParser.h>
#include <gtest/gtest.h>
#include <tool/Arguments.h>
#include <tool/OnAirView.h>
#include <tool/Patience.h>

#include <algorithm>
#include <sstream>
#include <vector>

#include "Fixtures.h"
#include "RunTool.h"
#include "tests/support/Zone.h"

namespace orvo::tool {
namespace {

using namespace std::chrono_literals;

TEST(MonitorCommand, PrintsAnObjectForEachUpdateAndEndsAfterTheLast) {
  const ToolRun run =
      runTool({"--demo", "--json", "monitor", "--updates", "3", "--program-seconds", "1"});
  EXPECT_EQ(run.status, 0) << run.error;
  std::istringstream lines(run.output);
  std::vector<std::string> ids;
  for (std::string line; std::getline(lines, line);) {
    const auto update = JSONDataParser::object(Data(line)).force();
    ids.emplace_back(*update.object("program")->string("id"));
    EXPECT_EQ(update.object("video")->string("id"), ids.back());
  }
  ASSERT_EQ(ids.size(), 3U);
  EXPECT_LT(ids.front(), ids.back()) << "another programme";
  EXPECT_NE(runTool({"--demo", "monitor", "--updates", "1"}).output.find("  on air  "),
            std::string::npos);
}

TEST(MonitorCommand, EndsWhileIdleWhenInterruptedOrNoLongerRead) {
  const std::string idle =
      "exec 3< <(exec $orvo --demo --json monitor --program-seconds 86400); tool=$!; read -u 3; ";
  EXPECT_EQ(runLine(idle + "kill -INT $tool; wait $tool").status, 0);
  EXPECT_EQ(runLine(idle + "exec 3<&-; wait $tool").status, 0);
}

TEST(MonitorCommand, DrawsOverTheWholePictureBefore) {
  const auto seen = runLine("orvo --demo monitor --updates 2 --program-seconds 2", 60).output;
  const std::string first = seen.substr(0, seen.find("F\x1b[J"));
  ASSERT_LT(first.size(), seen.size()) << seen;
  EXPECT_EQ(std::stol(first.substr(first.rfind('[') + 1)), std::ranges::count(first, '\n'));
}

TEST(MonitorCommand, EndsWhenTheGuideOfTheseDaysCannotBeHad) {
  const DocumentService service;
  const auto run = runTool({"monitor", "--days", "2", "--api", service.base() + "/tired/"});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.output, "");
  EXPECT_EQ(run.error, "orvo: the service answered with status 404 (there is no such thing)\n");
  const std::string asked = service.targets(0);
  const auto time = [&](const std::string& key) {
    return *date(asked.substr(asked.find(key) + key.size(), 24));
  };
  EXPECT_EQ(time("end_time=") - time("start_time="), 48h) << asked;
}

TEST(Patience, GrowsUntilAnUpdateComes) {
  Patience patience;
  patience.loading();
  EXPECT_FALSE(patience.due()) << "a load ends by itself";
  patience.loaded(100s);
  EXPECT_EQ(patience.due(), 105s);
  patience.loaded(106s);
  EXPECT_EQ(patience.due(), 116s);
  patience.updated(120s, 60s);
  patience.loaded(121s);
  EXPECT_EQ(patience.due(), 185s) << "five seconds after the programme's end";
  patience.loading();
  for (int load = 0; load < 20; ++load) patience.loaded(200s);
  EXPECT_EQ(patience.due(), 500s);
}

TEST(OnAirLine, TellsWhatIsOnOrNextAndWhatFollows) {
  const Zone zone("UTC");
  const Date noon(1'493'640'000'000);
  const LinearProgram now{
      .id = "n", .title = "N\x1b[31mow", .startTime = noon, .endTime = noon + 1h};
  const LinearProgram then{
      .id = "t", .title = "Then", .startTime = noon + 1h, .endTime = noon + 90min};
  const GuideUpdate update{
      .video = {}, .program = now, .days = {{.title = "TODAY", .programs = {now, then}}}};
  EXPECT_EQ(onAirLine(update, noon + 15min),
            "12:15:00  on air  N�[31mow  12:00 – 13:00  45 min left  then  Then");
  EXPECT_EQ(onAirLine(update, noon - 30s),
            "11:59:30  next  N�[31mow  12:00 – 13:00  in 30 s  then  Then");
}

}  // namespace
}  // namespace orvo::tool
