#include "RunTool.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <tests/support/Token.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>

namespace orvo::tool {

namespace {

/// What the file holds, which is then removed.
std::string taken(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  std::remove(path.c_str());
  return {std::istreambuf_iterator<char>(stream), {}};
}

int run(const std::string& command) {
  const int status = std::system(command.c_str());
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

}  // namespace

std::vector<std::string> words(const std::string& text) {
  std::istringstream stream(text);
  return {std::istream_iterator<std::string>(stream), {}};
}

ToolRun runTool(const std::vector<std::string>& arguments, const std::string& input) {
  const std::string files = testing::TempDir() + "orvo-" + std::to_string(getpid());
  std::ofstream(files + ".in", std::ios::binary) << input;
  std::string command = "exec env -i TZ=UTC";
  for (const std::string sanitizer : {"ASAN", "UBSAN", "TSAN", "LSAN"}) {
    command += " " + sanitizer + "_OPTIONS=\"$" + sanitizer + "_OPTIONS\"";
  }
  command += " " ORVO_TOOL_PATH;
  for (const std::string& argument : arguments) command += " '" + argument + "'";
  const int status = run(command + " <" + files + ".in >" + files + ".out 2>" + files + ".error");
  std::remove((files + ".in").c_str());
  ToolRun run{status, taken(files + ".out"), taken(files + ".error")};
  // Only the address of a stream shows what the player needs.
  const bool showsStream = std::any_of(arguments.begin(), arguments.end(), [](const auto& word) {
    return word == "stream" || word == "tour";
  });
  EXPECT_EQ((showsStream ? run.error : run.output + run.error).find(kToken), std::string::npos)
      << command;
  return run;
}

int bash(const std::string& script) {
  return run("orvo=" ORVO_TOOL_PATH " exec bash -c '" + script + "'");
}

}  // namespace orvo::tool
