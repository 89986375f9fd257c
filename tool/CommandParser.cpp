#include <fmt/format.h>
#include <tool/CommandParser.h>
#include <tool/Help.h>
#include <tool/Nearest.h>
#include <tool/Text.h>
#include <tool/ValueCheck.h>
#include <tool/Wording.h>
#include <CLI/CLI.hpp>

#include <algorithm>

namespace orvo::tool {

namespace {

CLI::Option* add(CLI::App& app, const Parameter& parameter) {
  if (auto* const* flag = std::get_if<bool*>(&parameter.target)) {
    return app.add_flag(parameter.name, **flag, parameter.description);
  }
  const std::function<void(const std::string&)> read = [&](const std::string& text) {
    store(parameter.target, text);
  };
  const auto check = [&](std::string& text) { return complaint(parameter.values, text); };
  return app.add_option_function(parameter.name, read, parameter.description)
      ->check(CLI::Validator(check, ""));
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

const Parameter& parameterNamed(const Reading& reading, const std::string& name) {
  const auto& own = reading.command->options;
  const auto found = std::ranges::find(own, name, &Parameter::name);
  return found != own.end()
             ? *found
             : *std::ranges::find(reading.table.globalOptions, name, &Parameter::name);
}

std::string unknownOption(const Reading& reading, const std::string& option) {
  const std::string name = option.substr(0, option.find('='));
  std::string written = option;
  const auto at = std::ranges::find(reading.arguments, option);
  const bool hasValue = at + 1 < reading.arguments.end() && !at[1].starts_with("-") &&
                        (reading.command == nullptr || at[1] != reading.command->name);
  if (hasValue) written += " " + at[1];
  std::vector<std::string> names{"--help", "--version"};
  for (const Parameter& known : reading.table.globalOptions) names.push_back(known.name);
  if (reading.command != nullptr) {
    for (const Parameter& known : reading.command->options) {
      if (known.name == name) return name + " goes behind its command, " + reading.command->name;
      names.push_back(known.name);
    }
  }
  const auto meant = nearest(name, names);
  const bool mayBeArgument = !option.starts_with("--") && reading.command != nullptr &&
                             !reading.command->arguments.empty();
  return "there is no option \"" + written + "\"" +
         (meant || !mayBeArgument ? didYouMean(meant)
                                  : "; an argument that begins with \"-\" goes behind \"--\"");
}

/// The way in which the command takes what is one argument too many; or nothing.
std::optional<std::string> otherForm(const Reading& reading, const std::string& argument) {
  const Command& command = *reading.command;
  for (const Parameter& option : command.options) {
    const Values& values = option.values;
    const bool isChecked = !values.choices.empty() || values.range || values.accepts;
    if (isChecked && complaint(values, argument).empty()) return option.name + " " + argument;
  }
  if (command.arguments.empty() || !command.arguments.back().values.mayHoldSpaces) {
    return std::nullopt;
  }
  const auto end = std::ranges::find(reading.arguments, argument);
  return "\"" + (end != reading.arguments.begin() ? end[-1] : "") + " " + argument + "\"";
}

std::string unknownArgument(const Reading& reading, const std::string& argument) {
  if (reading.command != nullptr) {
    const std::string complaint =
        "\"" + argument + "\" is one argument too many for " + reading.command->name;
    if (const auto other = otherForm(reading, argument)) return complaint + didYouMean(other);
    std::vector<std::string> names;
    for (const Parameter& option : reading.command->options) names.push_back(option.name);
    const bool takesOptionsOnly = reading.command->arguments.empty() && !names.empty();
    return complaint + (takesOptionsOnly ? ", which takes " + joined(names) : "");
  }
  std::vector<std::string> names;
  for (const Command& known : reading.table.commands) {
    names.push_back(known.name);
    if (std::ranges::find(known.synonyms, argument) != known.synonyms.end()) {
      return "there is no command \"" + argument + "\"" + didYouMean(known.name);
    }
  }
  return "there is no command \"" + argument + "\"" + didYouMean(nearest(argument, names));
}

/// What is wrong with the first word that nothing takes.
std::string unknownWord(const Reading& reading) {
  // Behind "--" everything is an argument.
  const auto end = std::ranges::find(reading.arguments, "--");
  for (const std::string& unknown : reading.unknown) {
    if (unknown == "--") continue;
    const bool isOption =
        unknown.starts_with("-") && std::find(reading.arguments.begin(), end, unknown) != end;
    return isOption ? unknownOption(reading, unknown) : unknownArgument(reading, unknown);
  }
  return "";
}

/// What is wrong with the command line, in one sentence.
std::string complaint(const Reading& reading, const CLI::ParseError& error) {
  const std::string unknown = unknownWord(reading);
  if (!unknown.empty()) return unknown;
  const std::string what = error.what();
  if (dynamic_cast<const CLI::RequiredError*>(&error) != nullptr) return "a command is needed";
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

/// What is missing on a command line on which each word by itself is right, or does not go
/// together.
std::string complaint(const Reading& reading, const CLI::App& app) {
  const CLI::App& command = *app.get_subcommands().front();
  const auto isGiven = [&](const std::string& name) {
    const CLI::Option* option = command.get_option_no_throw(name);
    return (option != nullptr ? option : app.get_option(name))->count() > 0;
  };
  for (const auto* parameters : {&reading.command->arguments, &reading.command->options}) {
    for (const Parameter& parameter : *parameters) {
      if (parameter.required && !isGiven(parameter.name)) {
        const auto& choices = parameter.values.choices;
        return written(parameter) + " is missing: " +
               (choices.empty() ? beginningInLowerCase(parameter.description)
                                : "one of " + joined(choices));
      }
    }
  }
  for (const auto* options : {&reading.command->options, &reading.table.globalOptions}) {
    for (const Parameter& option : *options) {
      if (!isGiven(option.name)) continue;
      const auto needed = std::ranges::find_if_not(option.needs, isGiven);
      if (needed != option.needs.end()) {
        return option.name + " only goes with " + written(parameterNamed(reading, *needed));
      }
      const auto other = std::ranges::find_if(option.excludes, isGiven);
      if (other != option.excludes.end()) return option.name + " does not go with " + *other;
    }
  }
  return "";
}

Explanation wrongUsage(const Reading& reading, const std::string& what) {
  const std::string name = reading.command == nullptr ? "" : reading.command->name + " ";
  return {kWrongUsage, fmt::format("orvo: {}\n{}Try \"orvo {}--help\".\n", harmless(what),
                                   usageLine(reading.command), name)};
}

Explanation explanation(const Reading& reading, const CLI::ParseError& error) {
  if (dynamic_cast<const CLI::CallForVersion*>(&error) != nullptr) {
    return {0, versionText() + "\n"};
  }
  // Whoever asks for help about a command that there is not is told so.
  const std::string unknown = reading.command == nullptr ? unknownWord(reading) : "";
  if (error.get_exit_code() == 0 && !unknown.starts_with("there is no command")) {
    return {0, helpText(reading.table, reading.command)};
  }
  return wrongUsage(reading, complaint(reading, error));
}

/// The first option with a "=" and no value behind it: the next word would become the value.
std::optional<std::string> emptyOption(const Reading& reading) {
  const auto end = std::ranges::find(reading.arguments, "--");
  const auto found = std::find_if(reading.arguments.begin(), end, [](const std::string& word) {
    return word.starts_with("--") && word.find('=') == word.size() - 1;
  });
  return found != end ? std::optional(*found) : std::nullopt;
}

/// The name of the first option with a value that takes none, if there is one.
std::optional<std::string> overfullOption(const Reading& reading) {
  const auto isFlag = [](const std::vector<Parameter>& options, const std::string& name) {
    return std::ranges::any_of(options, [&](const Parameter& option) {
      return option.name == name && std::holds_alternative<bool*>(option.target);
    });
  };
  for (const std::string& word : reading.arguments) {
    if (word == "--") break;
    const std::string name = word.substr(0, word.find('='));
    const bool isFlagOfSome =
        isFlag(reading.table.globalOptions, name) ||
        std::ranges::any_of(reading.table.commands,
                            [&](const Command& command) { return isFlag(command.options, name); });
    if (name.starts_with("-") && name.size() < word.size() && isFlagOfSome) return name;
  }
  return std::nullopt;
}

void addGlobalOptions(CLI::App& app, const CommandTable& table) {
  app.fallthrough();
  app.require_subcommand(1);
  app.set_version_flag("--version", "", "");
  app.set_help_flag("-h,--help", "");
  for (const Parameter& option : table.globalOptions) add(app, option);
}

}  // namespace

std::variant<const Command*, Explanation> parse(const CommandTable& table, int argc,
                                                const char* const* argv) {
  CLI::App app("", "orvo");
  addGlobalOptions(app, table);
  for (const Command& command : table.commands) {
    // Those of all commands would take a tenth of a short command's time to make.
    if (std::find(argv, argv + argc, command.name) == argv + argc) continue;
    CLI::App* added = app.add_subcommand(command.name, "");
    for (const Parameter& argument : command.arguments) add(*added, argument);
    for (const Parameter& option : command.options) add(*added, option);
  }
  Reading reading{.table = table, .arguments = {argv, argv + argc}};
  const auto lookAt = [&] {
    const auto named = app.get_subcommands();
    reading.unknown = app.remaining(true);
    if (named.empty()) return;
    const auto isNamed = [&](const Command& command) { return named[0]->check_name(command.name); };
    reading.command = &*std::ranges::find_if(table.commands, isNamed);
  };
  if (const auto empty = emptyOption(reading)) {
    return wrongUsage(reading, "there is no value behind \"" + *empty + "\"");
  }
  std::optional<Explanation> wrong;
  try {
    app.parse(argc, argv);
    lookAt();
  } catch (const CLI::ParseError& error) {
    lookAt();
    wrong = explanation(reading, error);
  }
  if (const auto overfull = overfullOption(reading)) {
    return wrongUsage(reading, *overfull + " takes no value");
  }
  if (wrong) return *std::move(wrong);
  const std::string missing = complaint(reading, app);
  if (!missing.empty()) return wrongUsage(reading, missing);
  return reading.command;
}

}  // namespace orvo::tool
