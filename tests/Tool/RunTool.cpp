#include "RunTool.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <iterator>
#include <sstream>

namespace orvo::tool {

namespace {

/// A file in memory that a process reads or writes in place of a pipe, so that nobody waits.
class MemoryFile {
 public:
  explicit MemoryFile(const std::string& content = "")
      : descriptor_(memfd_create("", MFD_CLOEXEC)) {
    EXPECT_EQ(write(descriptor_, content.data(), content.size()),
              static_cast<ssize_t>(content.size()));
    lseek(descriptor_, 0, SEEK_SET);
  }
  ~MemoryFile() { close(descriptor_); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  [[nodiscard]] int descriptor() const { return descriptor_; }
  [[nodiscard]] std::string content() const {
    std::string text(static_cast<std::size_t>(lseek(descriptor_, 0, SEEK_END)), '\0');
    EXPECT_EQ(pread(descriptor_, text.data(), text.size(), 0), static_cast<ssize_t>(text.size()));
    return text;
  }

 private:
  int descriptor_;
};

/// The environment without what changes the tool's output, but with what sanitizers are told.
std::vector<std::string> bareEnvironment() {
  std::vector<std::string> result{"TZ=UTC"};
  for (const char* name :
       {"PATH", "ASAN_OPTIONS", "UBSAN_OPTIONS", "TSAN_OPTIONS", "LSAN_OPTIONS"}) {
    if (const char* value = std::getenv(name)) result.push_back(std::string(name) + "=" + value);
  }
  return result;
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
  std::vector<char*> result;
  for (std::string& text : texts) result.push_back(text.data());
  result.push_back(nullptr);
  return result;
}

/// Runs the tool on these descriptors; returns its status as `ToolRun` has it.
int spawnTool(const std::vector<std::string>& arguments, int in, int out, int error) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, in, STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, out, STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, error, STDERR_FILENO);
  std::vector<std::string> words{ORVO_TOOL_PATH};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<std::string> environment = bareEnvironment();
  pid_t process = 0;
  const int failure = posix_spawn(&process, ORVO_TOOL_PATH, &actions, nullptr,
                                  pointers(words).data(), pointers(environment).data());
  posix_spawn_file_actions_destroy(&actions);
  EXPECT_EQ(failure, 0);
  int status = 0;
  EXPECT_EQ(waitpid(process, &status, 0), process);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

}  // namespace

std::vector<std::string> words(const std::string& text) {
  std::istringstream stream(text);
  return {std::istream_iterator<std::string>(stream), {}};
}

ToolRun runTool(const std::vector<std::string>& arguments, const std::string& input) {
  const MemoryFile in(input);
  const MemoryFile out;
  const MemoryFile error;
  const int status = spawnTool(arguments, in.descriptor(), out.descriptor(), error.descriptor());
  return {status, out.content(), error.content()};
}

ToolRun runToolUnread(const std::vector<std::string>& arguments) {
  const MemoryFile in;
  const MemoryFile error;
  int ends[2] = {-1, -1};
  EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
  close(ends[0]);
  const int status = spawnTool(arguments, in.descriptor(), ends[1], error.descriptor());
  close(ends[1]);
  return {status, "", error.content()};
}

}  // namespace orvo::tool
