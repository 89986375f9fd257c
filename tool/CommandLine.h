#pragma once

#include <tool/CommandParser.h>
#include <tool/CommandTable.h>
#include <tool/Tool.h>
#include <tool/har/Traffic.h>

#include <optional>
#include <string>

namespace orvo::tool {

/// The tool's command line: its options, its commands, and what it says when it is not understood.
/// Used by the main thread.
class CommandLine {
 public:
  CommandLine();
  CommandLine(const CommandLine&) = delete;
  CommandLine& operator=(const CommandLine&) = delete;

  /// Reads the arguments, once. Nothing is run; without an explanation `run` may be called.
  [[nodiscard]] std::optional<Explanation> read(int argc, const char* const* argv);

  /// Runs the command that was read; returns the exit status.
  int run();

 private:
  [[nodiscard]] std::vector<Parameter> serviceOptions();
  [[nodiscard]] std::vector<Parameter> globalOptions();
  void addHelpCommands();
  void addManualCommand(const Parameter& command);
  void addCompletionCommand();
  /// The command that is to be explained; or the tool itself.
  [[nodiscard]] const Command* helped() const;

  /// What `run` makes of the options of all commands.
  [[nodiscard]] GlobalOptions chosenOptions() const;
  [[nodiscard]] std::vector<Note> identifiers(Listed listed) const;

  WrittenService service_;
  WrittenTraffic traffic_;
  bool json_ = false;
  bool verbose_ = false;
  bool trace_ = false;
  bool report_ = false;
  std::string color_ = "auto";
  std::string helpedCommand_;
  std::string shell_;
  CommandTable table_;
  const Command* chosen_ = nullptr;
  /// As they were read, without addresses.
  std::vector<std::string> words_;
};

}  // namespace orvo::tool
