#pragma once

#include <tool/CommandTable.h>
#include <tool/Output.h>
#include <tool/Tool.h>

#include <memory>
#include <optional>
#include <string>
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
/// end, also at an early one. Nothing is recorded when no file is named. There is one at most.
class Recording {
 public:
  /// Throws `WrongUsage` when no file can be put there. `words`: of the command line.
  Recording(const std::string& file, GlobalOptions& options, std::vector<std::string> words);
  ~Recording();
  Recording(const Recording&) = delete;
  Recording& operator=(const Recording&) = delete;

  /// Writes the file; returns the exit status.
  int end(int status);

 private:
  std::shared_ptr<Recorder> recorder_;
  std::optional<BeforeEarlyEnd> writing_;
};

}  // namespace orvo::tool
