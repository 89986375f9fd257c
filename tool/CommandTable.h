#pragma once

#include <algorithm>
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

  /// Whether nobody comes near the upper end.
  [[nodiscard]] bool isOpen() const { return most >= 1'000'000'000; }
};

/// What a service has identifiers of.
enum class Listed { nothing, videos, pages, items, collections };

/// Which values an argument or an option takes: those of `choices`, or whole numbers in `range`, or
/// texts that `accepts` takes; any text when none of them is given. `ofSeveral`: some of the
/// choices, with commas between them.
struct Values {
  /// What stands for the value of an option in a help text.
  std::string name = "TEXT";
  std::vector<std::string> choices{};
  bool ofSeveral = false;
  std::optional<Range> range{};
  std::function<bool(const std::string&)> accepts{};
  /// What `accepts` wants, for whoever wrote something else.
  std::string wanted{};
  /// Whether words that belong together are one value.
  bool mayHoldSpaces = false;
  /// What a shell offers beside `choices`.
  std::function<std::vector<std::string>()> suggestions{};
  Listed identifiers = Listed::nothing;
  bool isFile = false;
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

/// What something of that name is for.
struct Note {
  std::string name;
  std::string text;
};

struct Command {
  std::string name;
  std::string description;
  std::string details{};
  std::vector<Parameter> arguments{};
  std::vector<Parameter> options{};
  /// Lines for a shell that run as they are, with the demo service.
  std::vector<std::string> examples{};
  /// What else people may call it: no names of it, but answered with its name.
  std::vector<std::string> synonyms{};
  /// What exit statuses mean of it that mean something else of others, or nothing.
  std::vector<Note> statuses{};
  /// Whether there has to be a service to talk to.
  bool usesService = true;
  /// Whether a recording cannot stand in for the network.
  bool needsNetwork = false;
  /// Whether it has something to say when it is interrupted.
  bool tellsWhenInterrupted = false;
  /// Returns the exit status. It owns what the parameters are read into.
  std::function<int(Tool&)> run;
};

using Commands = std::vector<Command>;

struct CommandTable {
  std::string description;
  std::string details{};
  /// They may stand before the command, or after it.
  std::vector<Parameter> globalOptions{};
  Commands commands{};
  std::vector<std::string> examples{};
  /// Of the environment.
  std::vector<Note> variables{};
  std::vector<Note> files{};
};

/// The options that the parser knows by itself.
[[nodiscard]] inline std::vector<Note> parserOptions() {
  return {{"-h, --help", "Print this help, or that of the command"},
          {"--version", "Print the version"}};
}
/// Of every command, or of that one.
[[nodiscard]] inline std::vector<Note> exitStatuses(const Command* command) {
  std::vector<Note> all{{"0", "Done; also when the reader of a pipe has gone away early"},
                        {"1", "The request failed, or the output could not be written"},
                        {"2", "Wrong usage; nothing has been asked of a service"},
                        {"3", "The system refused memory"}};
  if (command == nullptr) return all;
  for (const Note& own : command->statuses) {
    const auto known = std::ranges::find(all, own.name, &Note::name);
    known == all.end() ? all.push_back(own) : void(known->text = own.text);
  }
  return all;
}

}  // namespace orvo::tool
