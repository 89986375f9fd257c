#include <OrvoAPI/Version.h>
#include <tool/Help.h>
#include <tool/Manual.h>
#include <tool/Text.h>

namespace orvo::tool {

namespace {

/// The text as a line that means nothing but itself.
std::string literal(const std::string& text) {
  std::string out = text.starts_with('.') || text.starts_with('\'') ? "\\&" : "";
  for (const char letter : text) {
    switch (letter) {
      case '\\':
        out += "\\e";
        break;
      case '-':
        out += "\\-";
        break;
      case '\'':
        out += "\\(aq";
        break;
      case '~':
        out += "\\(ti";
        break;
      default:
        out += letter;
    }
  }
  return out;
}

std::string filled(const std::string& text) {
  constexpr std::size_t kColumns = 60;
  std::string lines;
  for (const std::string& line : wrapped(text, kColumns)) lines += literal(line) + "\n";
  return lines;
}

std::string section(const std::string& name, const std::string& content) {
  return content.empty() ? "" : ".SH " + name + "\n" + content;
}

/// What is written as it stands is bold, what stands for something else is slanted.
std::string entry(const std::string& name, const std::string& description) {
  std::size_t space = name.starts_with('-') ? name.rfind(' ') : std::string::npos;
  if (space != std::string::npos && name[space + 1] == '-') space = std::string::npos;
  std::string head = "\\fB" + literal(name.substr(0, space)) + "\\fR";
  if (space != std::string::npos) head += " \\fI" + literal(name.substr(space + 1)) + "\\fR";
  return ".TP\n" + head + "\n" + filled(description);
}

std::string entries(const std::vector<Parameter>& parameters) {
  std::string text;
  for (const Parameter& parameter : parameters)
    text += entry(written(parameter), described(parameter));
  return text;
}

std::string examples(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) text += literal(line) + "\n";
  return ".EX\n" + text + ".EE\n";
}

std::string reference(const std::string& page) { return ".BR " + literal(page) + " (1)"; }

std::string pageName(const Command& command) { return "orvo-" + command.name; }

std::string entries(const std::vector<Note>& notes) {
  std::string text;
  for (const Note& note : notes) text += entry(note.name, note.text);
  return text;
}

std::string globalEntries(const CommandTable& table) {
  return entries(table.globalOptions) + entries(parserOptions());
}

std::string head(const std::string& name, const std::string& purpose, const Command* command) {
  std::string title = name;
  for (char& letter : title) {
    if (letter >= 'a' && letter <= 'z') letter = static_cast<char>(letter - ('a' - 'A'));
  }
  std::string synopsis = usageLine(command);
  synopsis = synopsis.substr(synopsis.find(' ') + 1);
  synopsis.pop_back();
  const std::size_t space = synopsis.find(' ', command == nullptr ? 0 : synopsis.find(' ') + 1);
  return ".TH " + literal(title) +
         " 1 " ORVO_RELEASE_DATE " \"orvo " ORVO_API_VERSION_STRING
         "\" \"User commands\"\n"
         ".nh\n.ad l\n" +
         section("NAME", literal(name) + " \\- " + literal(purpose) + "\n") +
         section("SYNOPSIS", ".B " + literal(synopsis.substr(0, space)) + "\n" +
                                 literal(synopsis.substr(space + 1)) + "\n");
}

std::string commandPage(const CommandTable& table, const Command& command) {
  const std::string more = command.details.empty() ? "" : ".PP\n" + filled(command.details);
  return head(pageName(command), beginningInLowerCase(command.description), &command) +
         section("DESCRIPTION", filled(command.description + ".") + more) +
         section("ARGUMENTS", entries(command.arguments)) +
         section("OPTIONS", entries(command.options)) +
         section("OPTIONS OF ALL COMMANDS", globalEntries(table)) +
         section("EXIT STATUS", entries(exitStatuses(&command))) +
         section("EXAMPLES", examples(command.examples)) +
         section("SEE ALSO", reference("orvo") + "\n");
}

}  // namespace

std::string manualPage(const CommandTable& table, const Command* command) {
  if (command != nullptr) return commandPage(table, *command);
  std::string commands, pages;
  for (const Command& each : table.commands) {
    commands += entry(each.name, each.description);
    pages += (pages.empty() ? "" : " ,\n") + reference(pageName(each));
  }
  return head("orvo", beginningInLowerCase(table.description), nullptr) +
         section("DESCRIPTION", filled(table.details)) + section("COMMANDS", commands) +
         section("OPTIONS", globalEntries(table)) +
         section("ENVIRONMENT", entries(table.variables)) + section("FILES", entries(table.files)) +
         section("EXIT STATUS", entries(exitStatuses(nullptr))) +
         section("EXAMPLES", examples(table.examples)) + section("SEE ALSO", pages + "\n");
}

}  // namespace orvo::tool
