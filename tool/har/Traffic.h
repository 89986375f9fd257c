#pragma once

#include <tool/CommandTable.h>
#include <tool/Tool.h>

#include <array>
#include <csignal>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace orvo::tool {

class Recorder;

/// What the command line says about recordings.
struct WrittenTraffic {
  std::string record{};
  std::string replay{};
};
/// Adds `--record` and `--replay`.
void addTrafficOptions(std::vector<Parameter>& options, WrittenTraffic& written);

/// Has a recording answer in place of the network, from the service and at the time that it was
/// made of. Throws `WrongUsage` when the file is none.
void replay(const std::string& file, GlobalOptions& options);

/// While it lives, what a tool with these options sends is recorded. The file is written at the
/// end, also when a signal or the reader's end of a pipe ends the program. Nothing is recorded when
/// no file is named. There is one at most.
class Recording {
 public:
  /// Throws `WrongUsage` when no file can be put there.
  Recording(const std::string& file, GlobalOptions& options);
  ~Recording();
  Recording(const Recording&) = delete;
  Recording& operator=(const Recording&) = delete;

  /// Writes the file; returns the exit status.
  int end(int status);

 private:
  static constexpr std::array kSignals{SIGINT, SIGTERM, SIGHUP};

  void watchSignals();

  std::shared_ptr<Recorder> recorder_;
  std::thread watcher_;
  std::array<struct sigaction, kSignals.size()> before_{};
};

}  // namespace orvo::tool
