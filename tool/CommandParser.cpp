#include <OrvoAPI/Version.h>
#include <fmt/format.h>
#include <tool/CommandParser.h>
#include <tool/Text.h>
#include <CLI/CLI.hpp>

#include <memory>

namespace orvo::tool {

namespace {

constexpr int kWrongUsage = 2;

/// Breaks long descriptions where narrow terminals end.
class HelpFormatter : public CLI::Formatter {
 public:
  std::string make_option_desc(const CLI::Option* option) const override {
    std::string description;
    for (const std::string& line : wrapped(Formatter::make_option_desc(option), kWidth)) {
      description += (description.empty() ? "" : "\n") + line;
    }
    return description;
  }

  static constexpr std::size_t kColumn = 26;

 private:
  static constexpr std::size_t kWidth = 80 - kColumn;
};

std::shared_ptr<CLI::Formatter> helpFormatter() {
  auto formatter = std::make_shared<HelpFormatter>();
  formatter->label("SUBCOMMAND", "COMMAND");
  formatter->label("REQUIRED", "");
  formatter->column_width(HelpFormatter::kColumn);
  return formatter;
}

template <class... Cases>
struct Overloaded : Cases... {
  using Cases::operator()...;
};
template <class... Cases>
Overloaded(Cases...) -> Overloaded<Cases...>;

void store(const Target& target, const std::string& text) {
  std::int64_t number = 0;
  CLI::detail::lexical_cast(text, number);
  std::visit(
      Overloaded{[](bool* flag) { *flag = true; }, [&](std::int64_t* value) { *value = number; },
                 [&](std::optional<std::int64_t>* value) { *value = number; },
                 [&](std::string* value) { *value = text; },
                 [&](std::optional<std::string>* value) { *value = text; }},
      target);
}

std::string defaultText(const Target& target) {
  if (auto* const* number = std::get_if<std::int64_t*>(&target)) return std::to_string(**number);
  auto* const* text = std::get_if<std::string*>(&target);
  return text != nullptr ? **text : "";
}

CLI::Validator check(const Values& values) {
  if (!values.choices.empty()) return CLI::IsMember(values.choices);
  if (values.range) return CLI::Range(values.range->least, values.range->most);
  return CLI::Validator(
      [accepts = values.accepts, wanted = values.wanted](std::string& text) {
        return !accepts || accepts(text) ? "" : "\"" + text + "\" is not " + wanted;
      },
      "");
}

CLI::Option* add(CLI::App& app, const Parameter& parameter) {
  if (auto* const* flag = std::get_if<bool*>(&parameter.target)) {
    return app.add_flag(parameter.name, **flag, parameter.description);
  }
  const std::function<void(const std::string&)> read = [&](const std::string& text) {
    store(parameter.target, text);
  };
  CLI::Option* option = app.add_option_function(parameter.name, read, parameter.description)
                            ->type_name(parameter.values.name)
                            ->default_str(defaultText(parameter.target))
                            ->required(parameter.required);
  const bool listed = option->get_positional();  // in the description
  CLI::Validator validator = check(parameter.values);
  return option->check(listed ? validator.description("") : validator);
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

/// The command that the command line got as far as naming.
const CLI::App& reached(const CLI::App& app) {
  const auto commands = app.get_subcommands();
  return commands.empty() ? app : *commands.front();
}

/// What is wrong with the command line, in one sentence.
std::string complaint(const CLI::App& app, const CLI::ParseError& error) {
  if (&reached(app) != &app) return error.what();
  const auto unknown = app.remaining();
  return unknown.empty() ? "a command is needed" : "there is no command \"" + unknown[0] + "\"";
}

Explanation explanation(const CLI::App& app, const CLI::ParseError& error) {
  const CLI::App& command = reached(app);
  if (dynamic_cast<const CLI::CallForVersion*>(&error) != nullptr) {
    return {0, std::string(error.what()) + "\n"};
  }
  if (error.get_exit_code() == 0) {
    return {0, command.help(&command == &app ? "" : app.get_name())};
  }
  const std::string name = &command == &app ? "orvo" : "orvo " + command.get_name();
  return {kWrongUsage,
          fmt::format("orvo: {}\n{}Try \"{} --help\".\n", escaped(complaint(app, error)),
                      helpFormatter()->make_usage(&command, name), name)};
}

void addGlobalOptions(CLI::App& app, const CommandTable& table) {
  app.formatter(helpFormatter());
  app.fallthrough();
  app.require_subcommand(1);
  app.set_version_flag("--version", fmt::format("orvo {}", ORVO_API_VERSION_STRING),
                       "Print the version and exit");
  app.set_help_flag("-h,--help", "Print this help, or that of the command, and exit");
  app.footer("Exit status: 0, or 1 when the request failed, or 2 for wrong usage.");
  for (const Parameter& option : table.globalOptions) {
    add(app, option)->group("Options, before or after the command");
  }
  relate(app, table.globalOptions);
}

}  // namespace

std::variant<const Command*, Explanation> parse(const CommandTable& table, int argc,
                                                const char* const* argv) {
  CLI::App app(table.description, "orvo");
  addGlobalOptions(app, table);
  const Command* chosen = nullptr;
  for (const Command& command : table.commands) {
    CLI::App* added = app.add_subcommand(command.name, command.description)->group("Commands");
    added->callback([&] { chosen = &command; });
    for (const Parameter& argument : command.arguments) add(*added, argument);
    for (const Parameter& option : command.options) add(*added, option);
    relate(*added, command.options);
  }
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return explanation(app, error);
  }
  return chosen;
}

}  // namespace orvo::tool
