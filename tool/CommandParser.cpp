#include <fmt/format.h>
#include <tool/CommandParser.h>
#include <tool/Help.h>
#include <tool/Nearest.h>
#include <tool/Text.h>
#include <tool/ValueCheck.h>
#include <CLI/CLI.hpp>

#include <algorithm>

namespace orvo::tool {

namespace {

template <class... Cases>
struct Overloaded : Cases... {
  using Cases::operator()...;
};
template <class... Cases>
Overloaded(Cases...) -> Overloaded<Cases...>;

void store(const Target& target, const std::string& text) {
  std::visit(Overloaded{[](bool* flag) { *flag = true; },
                        [&](std::int64_t* value) { *value = wholeNumber(text).value(); },
                        [&](std::optional<std::int64_t>* value) { *value = wholeNumber(text); },
                        [&](std::string* value) { *value = text; },
                        [&](std::optional<std::string>* value) { *value = text; }},
             target);
}

CLI::Option* add(CLI::App& app, const Parameter& parameter) {
  if (auto* const* flag = std::get_if<bool*>(&parameter.target)) {
    return app.add_flag(parameter.name, **flag, parameter.description);
  }
  const std::function<void(const std::string&)> read = [&](const std::string& text) {
    store(parameter.target, text);
  };
  const auto check = [&](std::string& text) { return complaint(parameter.values, text); };
  return app.add_option_function(parameter.name, read, parameter.description)
      ->required(parameter.required)
      ->check(CLI::Validator(check, ""));
}

/// Tells which options go together, when all have been added.
void relate(CLI::App& app, const std::vector<Parameter>& parameters) {
  const auto find = [&](const std::string& name) {
    CLI::Option* option = app.get_option_no_throw(name);
    return option != nullptr ? option : app.get_parent()->get_option(name);
  };
  for (const Parameter& parameter : parameters) {
    for (const auto& name : parameter.needs) app.get_option(parameter.name)->needs(find(name));
    for (const auto& name : parameter.excludes) {
      app.get_option(parameter.name)->excludes(find(name));
    }
  }
}

/// What was written, and what of it was understood.
struct Reading {
  const CommandTable& table;
  std::vector<std::string> arguments;
  /// What nothing in the table takes.
  std::vector<std::string> unknown{};
  /// The command that the command line got as far as naming.
  const Command* command = nullptr;
};

std::string unknownOption(const Reading& reading, const std::string& option) {
  std::string written = option;
  const auto at = std::ranges::find(reading.arguments, option);
  const bool hasValue = at + 1 < reading.arguments.end() && !at[1].starts_with("-") &&
                        (reading.command == nullptr || at[1] != reading.command->name);
  if (hasValue) written += " " + at[1];
  std::vector<std::string> names{"--help", "--version"};
  for (const Parameter& known : reading.table.globalOptions) names.push_back(known.name);
  if (reading.command != nullptr) {
    for (const Parameter& known : reading.command->options) names.push_back(known.name);
  }
  return "there is no option \"" + written + "\"" +
         didYouMean(nearest(option.substr(0, option.find('=')), names));
}

std::string unknownArgument(const Reading& reading, const std::string& argument) {
  if (reading.command != nullptr) {
    return "\"" + argument + "\" is one argument too many for " + reading.command->name;
  }
  std::vector<std::string> names;
  for (const Command& known : reading.table.commands) names.push_back(known.name);
  return "there is no command \"" + argument + "\"" + didYouMean(nearest(argument, names));
}

/// What is wrong with the command line, in one sentence.
std::string complaint(const Reading& reading, const CLI::ParseError& error) {
  // Behind "--" everything is an argument.
  const auto end = std::ranges::find(reading.arguments, "--");
  for (const std::string& unknown : reading.unknown) {
    if (unknown == "--") continue;
    const bool isOption =
        unknown.starts_with("-") && std::find(reading.arguments.begin(), end, unknown) != end;
    return isOption ? unknownOption(reading, unknown) : unknownArgument(reading, unknown);
  }
  if (reading.command == nullptr) return "a command is needed";
  const std::string what = error.what();
  if (dynamic_cast<const CLI::ArgumentMismatch*>(&error) != nullptr) {
    const bool missing = what.ends_with("missing");
    return what.substr(0, what.find(':')) + (missing ? " needs a value" : " is given twice");
  }
  if (dynamic_cast<const CLI::ConversionError*>(&error) != nullptr) {
    const std::size_t name = what.find("--");
    return what.substr(name, what.find(' ', name) - name) + " takes no value";
  }
  return what;
}

Explanation explanation(const Reading& reading, const CLI::ParseError& error) {
  if (dynamic_cast<const CLI::CallForVersion*>(&error) != nullptr) {
    return {0, versionText() + "\n"};
  }
  if (error.get_exit_code() == 0) return {0, helpText(reading.table, reading.command)};
  const std::string name = reading.command == nullptr ? "" : reading.command->name + " ";
  return {kWrongUsage,
          fmt::format("orvo: {}\n{}Try \"orvo {}--help\".\n", escaped(complaint(reading, error)),
                      usageLine(reading.command), name)};
}

void addGlobalOptions(CLI::App& app, const CommandTable& table) {
  app.fallthrough();
  app.require_subcommand(1);
  app.set_version_flag("--version", "", "");
  app.set_help_flag("-h,--help", "");
  for (const Parameter& option : table.globalOptions) add(app, option);
  relate(app, table.globalOptions);
}

}  // namespace

std::variant<const Command*, Explanation> parse(const CommandTable& table, int argc,
                                                const char* const* argv) {
  CLI::App app("", "orvo");
  addGlobalOptions(app, table);
  for (const Command& command : table.commands) {
    CLI::App* added = app.add_subcommand(command.name, "");
    for (const Parameter& argument : command.arguments) add(*added, argument);
    for (const Parameter& option : command.options) add(*added, option);
    relate(*added, command.options);
  }
  Reading reading{.table = table, .arguments = {argv, argv + argc}};
  const auto lookAt = [&] {
    const auto named = app.get_subcommands();
    reading.unknown = app.remaining(true);
    if (named.empty()) return;
    const auto isNamed = [&](const Command& command) { return named[0]->check_name(command.name); };
    reading.command = &*std::ranges::find_if(table.commands, isNamed);
  };
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    lookAt();
    return explanation(reading, error);
  }
  lookAt();
  return reading.command;
}

}  // namespace orvo::tool
