#include <sys/wait.h>
#include <tests/Tool/Fixtures.h>
#include <tests/support/Outcome.h>
#include <tests/support/Test.h>
#include <unistd.h>

#include <fstream>
#include <iterator>

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

ToolRun runLine(const std::string& line, int columns, const std::string& input) {
  const std::string files = testing::TempDir() + "orvo-" + std::to_string(getpid());
  std::ofstream(files + ".in", std::ios::binary) << input;
  std::ofstream(files + ".sh", std::ios::binary)
      << "orvo=" ORVO_TOOL_PATH " documents=" ORVO_FIXTURES
         "/../../docs; orvo() { $orvo \"$@\"; }\n"
      << line;
  std::string command = "env -i TZ=UTC PATH=/usr/bin:/bin";
  for (const std::string sanitizer : {"ASAN", "UBSAN", "TSAN", "LSAN"}) {
    command += " " + sanitizer + "_OPTIONS=\"$" + sanitizer + "_OPTIONS\"";
  }
  command += columns == 0 ? " bash " + files + ".sh"
                          : " TERM=xterm script -qec \"stty cols " + std::to_string(columns) +
                                "; exec bash " + files + ".sh\" /dev/null";
  const int status = run(command + " <" + files + ".in >" + files + ".out 2>" + files + ".error");
  taken(files + ".in");
  taken(files + ".sh");
  const ToolRun run{status, taken(files + ".out"), taken(files + ".error")};
  // Only the address of a stream shows what the player needs.
  const bool showsStream = line.find("stream") != std::string::npos;
  EXPECT_EQ((showsStream ? run.error : run.output + run.error).find(kToken), std::string::npos)
      << line;
  return run;
}

ToolRun runTool(const std::vector<std::string>& arguments, const std::string& input) {
  std::string line = "orvo";
  for (const std::string& argument : arguments) line += " '" + argument + "'";
  return runLine(line, 0, input);
}

}  // namespace orvo::tool
