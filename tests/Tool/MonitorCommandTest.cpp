#include <OrvoAPI/Parsing/JSONDataParser.h>
#include <tests/support/Test.h>
#include <tool/Arguments.h>
#include <tool/Patience.h>

#include <tests/Tool/Fixtures.h>
#include <sstream>

namespace orvo::tool {
namespace {

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
  EXPECT_EQ(
      run.error,
      "orvo: fetchLinearProgramGuide linear-one: the service answered with status 404 (there is "
      "no such thing)\n");
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

}  // namespace
}  // namespace orvo::tool
