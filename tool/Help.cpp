#include <OrvoAPI/Version.h>
#include <fmt/format.h>
#include <tool/Help.h>
#include <tool/Output.h>
#include <tool/Text.h>
#include <tool/Wording.h>

#include <algorithm>

namespace orvo::tool {

namespace {

/// As wide as a page, or as a terminal that is narrower.
std::size_t columns() {
  constexpr std::size_t kPage = 80;
  const Terminal terminal = standardOutput();
  return terminal.isTerminal ? std::min(terminal.columns, kPage) : kPage;
}

/// Where descriptions begin: below the names where there is little room.
std::size_t descriptionColumn() {
  constexpr std::size_t kWide = 60, kBeside = 26, kBelow = 6;
  return columns() < kWide ? kBelow : kBeside;
}

/// A name, and behind it what it is, in a column of its own.
std::string row(const std::string& name, const std::string& description) {
  std::string text = "  " + name;
  std::size_t width = 2 + displayWidth(name);
  const std::size_t column = descriptionColumn();
  for (const std::string& line : wrapped(description, columns() - column)) {
    if (width + 2 > column) {
      text += "\n";
      width = 0;
    }
    text += std::string(column - width, ' ') + line;
    width = column;
  }
  return text + "\n";
}

/// What else there is to say: ` (1 to 366; default: 1; not with --end)`.
std::string notes(const Parameter& parameter) {
  std::vector<std::string> notes;
  if (!parameter.values.choices.empty()) {
    const Values& values = parameter.values;
    notes.push_back((values.ofSeveral ? "of: " : "one of: ") + joined(values.choices));
  }
  if (const auto& range = parameter.values.range) {
    if (!range->isOpen()) {
      notes.push_back(countText(range->least) + " to " + countText(range->most));
    } else if (range->least > 0) {
      notes.push_back(countText(range->least) + " or more");
    }
  }
  if (!parameter.fallback.empty()) notes.push_back("default: " + parameter.fallback);
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
    text += row(written(parameter), described(parameter));
  }
  return text;
}

std::string exampleLines(const std::vector<std::string>& examples) {
  std::string text = examples.empty() ? "" : "\nExamples:\n";
  for (const std::string& example : examples) text += "  " + example + "\n";
  return text;
}

std::string rows(const std::string& heading, const std::vector<Note>& notes) {
  std::string text = "\n" + heading + ":\n";
  for (const Note& note : notes) text += row(note.name, note.text);
  return text;
}

std::string globalRows(const std::string& heading, const CommandTable& table) {
  std::string text = rows(heading, table.globalOptions);
  for (const Note& option : parserOptions()) text += row(option.name, option.text);
  return text;
}

std::string lines(const std::string& text) {
  std::string all;
  for (const std::string& line : wrapped(text, columns())) all += line + "\n";
  return all;
}

std::string paragraph(const std::string& text) { return text.empty() ? "" : "\n" + lines(text); }

}  // namespace

std::string helpText(const CommandTable& table, const Command* command) {
  if (command != nullptr) {
    return lines(command->description + ".") + "\n" + usageLine(command) +
           paragraph(command->details) + rows("Arguments", command->arguments) +
           rows("Options", command->options) + globalRows("Options of all commands", table) +
           exampleLines(command->examples) + rows("Exit status", exitStatuses(command));
  }
  std::string text = lines(table.description + ".") + "\n" + usageLine(nullptr) +
                     paragraph(table.details) + "\nCommands:\n";
  for (const Command& each : table.commands) text += row(each.name, each.description);
  return text + globalRows("Options, before or after the command", table) +
         rows("Variables of the environment", table.variables) + rows("Files", table.files) +
         exampleLines(table.examples) + rows("Exit status", exitStatuses(nullptr));
}

std::string usageLine(const Command* command) {
  if (command == nullptr) return "Usage: orvo [OPTIONS] COMMAND\n";
  std::string line = "Usage: orvo " + command->name + " [OPTIONS]";
  for (const Parameter& argument : command->arguments) {
    line += argument.required ? " " + argument.name : " [" + argument.name + "]";
  }
  return line + "\n";
}

std::string written(const Parameter& parameter) {
  const bool takesValue =
      parameter.name.starts_with("-") && !std::holds_alternative<bool*>(parameter.target);
  return parameter.name + (takesValue ? " " + parameter.values.name : "");
}

std::string described(const Parameter& parameter) {
  return parameter.description + notes(parameter);
}

std::string beginningInLowerCase(std::string sentence) {
  char& first = sentence.front();
  if (first >= 'A' && first <= 'Z') first = static_cast<char>(first + ('a' - 'A'));
  return sentence;
}

std::string versionText() { return fmt::format("orvo {}", ORVO_API_VERSION_STRING); }

}  // namespace orvo::tool
