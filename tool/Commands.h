#pragma once

#include <tool/Tool.h>
#include <CLI/CLI.hpp>

#include <functional>
#include <memory>
#include <string>

namespace orvo::tool {

/// The commands of the command line. Each family adds its own in a source of its own. Used by the
/// main thread.
class Commands {
 public:
  explicit Commands(CLI::App& app) : app_(app) {}

  /// Adds a command. What its options are read into is made by the caller and shared with `run`,
  /// which returns the exit status.
  CLI::App* add(const std::string& name, const std::string& description,
                std::function<int(Tool&)> run) {
    CLI::App* command = app_.add_subcommand(name, description)->group("Commands");
    command->callback([this, run = std::move(run)] { chosen_ = run; });
    return command;
  }

  /// Runs the command that the command line names.
  int runChosen(Tool& tool) const { return chosen_(tool); }

 private:
  CLI::App& app_;
  std::function<int(Tool&)> chosen_;
};

void addConfigurationCommands(Commands& commands);
void addProductCommands(Commands& commands);
void addStreamCommands(Commands& commands);
void addListCommands(Commands& commands);
void addSearchCommands(Commands& commands);
void addGuideCommand(Commands& commands);
void addMonitorCommand(Commands& commands);
void addLineupCommand(Commands& commands);
void addImageCommand(Commands& commands);
void addTourCommand(Commands& commands);
void addParseCommand(Commands& commands);
void addServeDemoCommand(Commands& commands);

}  // namespace orvo::tool
