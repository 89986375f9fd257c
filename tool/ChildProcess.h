#pragma once

#include <sys/types.h>

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvo::tool {

/// The program of that name in the first folder of PATH that has one; folders that PATH does not
/// name in full do not count.
[[nodiscard]] std::optional<std::string> programNamed(std::string_view name);

/// Bytes behind a descriptor, in memory only, that another process can read or write.
class MemoryFile {
 public:
  explicit MemoryFile(std::string_view bytes = "");
  ~MemoryFile();
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  /// Negative, with `errno` from its construction, when there is none.
  [[nodiscard]] int descriptor() const { return descriptor_; }
  /// What it holds; nothing when that is more, or cannot be read.
  [[nodiscard]] std::optional<std::string> bytes(std::size_t most) const;

 private:
  int descriptor_;
};

/// A program that was started by an argument list, never through a shell, with the signals as the
/// tool was given them. Ended, if it still runs, by the destructor. Used by one thread.
class ChildProcess {
 public:
  /// `descriptors` are those of the tool that the program has as 0, 1, 2, …; it gets no other. When
  /// it cannot be started it is not running, and `errno` says why.
  ChildProcess(const std::string& path, const std::vector<std::string>& arguments,
               const std::vector<int>& descriptors);
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  [[nodiscard]] bool isRunning() const { return process_ > 0; }
  [[nodiscard]] pid_t identifier() const { return process_; }
  /// The status of its end, as of `waitpid`; nothing when the time is over first.
  std::optional<int> wait(std::optional<std::chrono::milliseconds> longest = {});

 private:
  pid_t process_ = -1;
};

}  // namespace orvo::tool
