#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace orvo::tool {

class Tool;

/// The tool's commands as data: what reads the command line, explains it and completes it is made
/// from the same tables.

/// Both ends are part of it.
struct Range {
  std::int64_t least;
  std::int64_t most;
};

/// Which values an argument or an option takes: those of `choices`, or whole numbers in `range`, or
/// texts that `accepts` takes; any text when none of them is given.
struct Values {
  /// What stands for the value of an option in a help text.
  std::string name = "TEXT";
  std::vector<std::string> choices{};
  std::optional<Range> range{};
  std::function<bool(const std::string&)> accepts{};
  /// What `accepts` wants, for whoever wrote something else.
  std::string wanted{};
  /// What a shell offers beside `choices`.
  std::function<std::vector<std::string>()> suggestions{};
};

[[nodiscard]] inline Values anyOf(std::vector<std::string> choices, std::string name = "NAME") {
  return {.name = std::move(name), .choices = std::move(choices)};
}
[[nodiscard]] inline Values number(std::int64_t least, std::int64_t most, std::string name = "N") {
  return {.name = std::move(name), .range = Range{least, most}};
}

/// Where a value that was read goes. What stands there before is the default. A `bool` is set by an
/// option that takes no value.
using Target = std::variant<bool*, std::int64_t*, std::optional<std::int64_t>*, std::string*,
                            std::optional<std::string>*>;

/// An argument, named like `ID`, or an option, named like `--limit`.
struct Parameter {
  std::string name;
  std::string description{};
  Values values{};
  Target target;
  /// Arguments that need not be given follow those that have to be.
  bool required = false;
  /// What counts when nothing is written, where the target does not say it.
  std::string fallback{};
  /// Names of options of the same command, or global ones, without which, and with which, this one
  /// cannot be given.
  std::vector<std::string> needs{};
  std::vector<std::string> excludes{};
};

struct Command {
  std::string name;
  std::string description;
  std::string details{};
  std::vector<Parameter> arguments{};
  std::vector<Parameter> options{};
  /// Lines for a shell that run as they are, with the demo service.
  std::vector<std::string> examples{};
  /// Whether there has to be a service to talk to.
  bool usesService = true;
  /// Returns the exit status. It owns what the parameters are read into.
  std::function<int(Tool&)> run;
};

using Commands = std::vector<Command>;

struct CommandTable {
  std::string description;
  /// They may stand before the command, or after it.
  std::vector<Parameter> globalOptions{};
  Commands commands{};
  std::vector<std::string> examples{};
};

}  // namespace orvo::tool
