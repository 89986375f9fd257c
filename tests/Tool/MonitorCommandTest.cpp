#include <OrvoAPI/Parsing/JSONDataParser.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <tool/OnAirView.h>
#include <tool/Patience.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <sstream>
#include <utility>
#include <vector>

#include "RunTool.h"
#include "tests/support/Zone.h"

namespace orvo::tool {
namespace {

using namespace std::chrono_literals;

/// The tool, watching a channel whose programmes last a day, with its first line read.
class IdleMonitor {
 public:
  IdleMonitor() {
    std::array<int, 2> ends{};
    EXPECT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    std::vector<std::string> words{ORVO_TOOL_PATH,      "--demo", "--json", "monitor",
                                   "--program-seconds", "86400"};
    std::vector<char*> arguments;
    for (auto& word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    EXPECT_EQ(posix_spawn(&process_, ORVO_TOOL_PATH, &actions, nullptr, arguments.data(), environ),
              0);
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);
    output_ = ends[0];
    char byte = 0;
    while (byte != '\n' && read(output_, &byte, 1) == 1) continue;
  }
  void interrupt() const { kill(process_, SIGINT); }
  void stopReading() { close(std::exchange(output_, -1)); }
  [[nodiscard]] int status() {
    int status = 0;
    waitpid(process_, &status, 0);
    if (output_ >= 0) stopReading();
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  }

 private:
  pid_t process_ = 0;
  int output_ = -1;
};

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
    EXPECT_GT(update.objects("days")->size(), 0U);
  }
  ASSERT_EQ(ids.size(), 3U);
  EXPECT_LT(ids.front(), ids.back()) << "another programme";
  EXPECT_NE(runTool({"--demo", "monitor", "--updates", "1"}).output.find("  on air  "),
            std::string::npos);
}

TEST(MonitorCommand, EndsWhileIdleWhenInterruptedOrNoLongerRead) {
  IdleMonitor interrupted;
  interrupted.interrupt();
  EXPECT_EQ(interrupted.status(), 0);
  IdleMonitor unread;
  unread.stopReading();
  EXPECT_EQ(unread.status(), 0);
}

TEST(MonitorCommand, LeavesTheProgrammesOfARealServiceAsTheyAre) {
  EXPECT_EQ(runTool({"monitor", "--program-seconds", "3"}).status, 2);
}

TEST(Patience, GrowsUntilAnUpdateComes) {
  Patience patience;
  patience.loading();
  EXPECT_FALSE(patience.due()) << "a load ends by itself";
  patience.loaded(100s);
  EXPECT_EQ(patience.due(), 105s);
  patience.loading();
  patience.loaded(106s);
  EXPECT_EQ(patience.due(), 116s);
  patience.updated(120s, 60s);
  patience.loaded(121s);
  EXPECT_EQ(patience.due(), 185s) << "five seconds after the programme's end";
  for (int load = 0; load < 20; ++load) {
    patience.loading();
    patience.loaded(200s);
  }
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
