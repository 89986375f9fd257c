#pragma once

#include <tool/Commands.h>

#include <memory>
#include <optional>
#include <string>

namespace orvo::tool {

/// The tool's command line: its options, its commands, and what it says when it is not understood.
/// Used by the main thread.
class CommandLine {
 public:
  /// What is printed in place of a command: help, the version, or what is wrong.
  struct Explanation {
    /// 0 for what was asked for; the text then goes to standard output, else to standard error.
    int exitStatus;
    std::string text;
  };

  CommandLine();
  CommandLine(const CommandLine&) = delete;
  CommandLine& operator=(const CommandLine&) = delete;

  /// Reads the arguments, once. Nothing is run; without an explanation `run` may be called.
  [[nodiscard]] std::optional<Explanation> read(int argc, const char* const* argv);

  /// Runs the command that was read; returns the exit status.
  int run();

 private:
  /// The options as they are written; `GlobalOptions` is made of them when they are known to be
  /// right.
  struct WrittenOptions {
    std::string environment = "production";
    std::string api;
    std::string resources;
    bool demo = false;
    std::string client = "appleTV";
    bool json = false;

    [[nodiscard]] GlobalOptions read() const;
  };

  void addGlobalOptions();
  [[nodiscard]] std::string complaint(const CLI::ParseError& error) const;
  [[nodiscard]] Explanation explanation(const CLI::ParseError& error) const;
  /// The command that the command line got as far as naming.
  [[nodiscard]] const CLI::App& reachedCommand() const;

  WrittenOptions written_;
  CLI::App app_;
  Commands commands_;
};

}  // namespace orvo::tool
