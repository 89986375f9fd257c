#include <OrvoAPI/Version.h>
#include <fmt/format.h>
#include <tool/Help.h>
#include <tool/Text.h>
#include <tool/Wording.h>

namespace orvo::tool {

namespace {

constexpr std::size_t kColumns = 80;
constexpr std::size_t kDescriptionColumn = 26;

/// A name, and behind it what it is, in a column of its own.
std::string row(const std::string& name, const std::string& description) {
  std::string text = "  " + name;
  std::size_t width = 2 + displayWidth(name);
  for (const std::string& line : wrapped(description, kColumns - kDescriptionColumn)) {
    if (width + 2 > kDescriptionColumn) {
      text += "\n";
      width = 0;
    }
    text += std::string(kDescriptionColumn - width, ' ') + line;
    width = kDescriptionColumn;
  }
  return text + "\n";
}

std::string defaultText(const Target& target) {
  if (auto* const* number = std::get_if<std::int64_t*>(&target)) return std::to_string(**number);
  auto* const* text = std::get_if<std::string*>(&target);
  return text != nullptr ? **text : "";
}

/// What else there is to say: ` (1 to 366; default: 1; not with --end)`.
std::string notes(const Parameter& parameter) {
  // From there on it is no limit that anybody comes near.
  constexpr std::int64_t kEndless = 1'000'000'000;
  std::vector<std::string> notes;
  if (!parameter.values.choices.empty()) {
    notes.push_back("one of: " + joined(parameter.values.choices));
  }
  if (const auto& range = parameter.values.range) {
    if (range->most < kEndless) {
      notes.push_back(countText(range->least) + " to " + countText(range->most));
    } else if (range->least > 0) {
      notes.push_back(countText(range->least) + " or more");
    }
  }
  const std::string value =
      parameter.fallback.empty() ? defaultText(parameter.target) : parameter.fallback;
  if (!value.empty()) notes.push_back("default: " + value);
  if (parameter.required && parameter.name.starts_with("-")) notes.emplace_back("required");
  if (!parameter.needs.empty()) notes.push_back("only with " + joined(parameter.needs));
  if (!parameter.excludes.empty()) notes.push_back("not with " + joined(parameter.excludes));
  std::string text;
  for (const std::string& note : notes) text += (text.empty() ? " (" : "; ") + note;
  return text.empty() ? "" : text + ")";
}

std::string rows(const std::string& heading, const std::vector<Parameter>& parameters) {
  std::string text = parameters.empty() ? "" : "\n" + heading + ":\n";
  for (const Parameter& parameter : parameters) {
    const bool takesValue =
        parameter.name.starts_with("-") && !std::holds_alternative<bool*>(parameter.target);
    text += row(parameter.name + (takesValue ? " " + parameter.values.name : ""),
                parameter.description + notes(parameter));
  }
  return text;
}

std::string exampleLines(const std::vector<std::string>& examples) {
  std::string text = examples.empty() ? "" : "\nExamples:\n";
  for (const std::string& example : examples) text += "  " + example + "\n";
  return text;
}

std::string globalRows(const std::string& heading, const CommandTable& table) {
  return rows(heading, table.globalOptions) +
         row("-h, --help", "Print this help, or that of the command") +
         row("--version", "Print the version");
}

const char* const kExitStatus =
    "\nExit status: 0, or 1 when the request failed, or 2 for wrong usage.\n";

}  // namespace

std::string helpText(const CommandTable& table, const Command* command) {
  if (command != nullptr) {
    std::string details = command->details.empty() ? "" : "\n";
    for (const auto& line : wrapped(command->details, kColumns)) details += line + "\n";
    return command->description + ".\n\n" + usageLine(command) + details +
           rows("Arguments", command->arguments) + rows("Options", command->options) +
           globalRows("Options of all commands", table) + exampleLines(command->examples) +
           kExitStatus;
  }
  std::string text = table.description + "\n\n" + usageLine(nullptr) + "\nCommands:\n";
  for (const Command& each : table.commands) text += row(each.name, each.description);
  return text + globalRows("Options, before or after the command", table) +
         exampleLines(table.examples) + kExitStatus;
}

std::string usageLine(const Command* command) {
  if (command == nullptr) return "Usage: orvo [OPTIONS] COMMAND\n";
  std::string line = "Usage: orvo " + command->name + " [OPTIONS]";
  for (const Parameter& argument : command->arguments) {
    line += argument.required ? " " + argument.name : " [" + argument.name + "]";
  }
  return line + "\n";
}

std::string versionText() { return fmt::format("orvo {}", ORVO_API_VERSION_STRING); }

}  // namespace orvo::tool
