#include <OrvoAPI/Version.h>
#include <fmt/format.h>
#include <tool/Arguments.h>
#include <tool/CommandLine.h>
#include <tool/Text.h>

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

void addCommands(Commands& commands) {
  addTourCommand(commands);
  addConfigurationCommands(commands);
  addProductCommands(commands);
  addListCommands(commands);
  addSearchCommands(commands);
  addGuideCommand(commands);
  addMonitorCommand(commands);
  addLineupCommand(commands);
  addStreamCommands(commands);
  addImageCommand(commands);
  addParseCommand(commands);
  addServeDemoCommand(commands);
}

}  // namespace

GlobalOptions CommandLine::WrittenOptions::read() const {
  GlobalOptions options{.environment = *environmentNamed(environment),
                        .demo = demo,
                        .client = *fromRawValue<Client>(client),
                        .json = json};
  if (api.empty()) return options;
  options.api = baseURL(api);
  options.resources = resources.empty() ? resourceURL(options.environment) : *baseURL(resources);
  return options;
}

CommandLine::CommandLine()
    : app_("Looks at a video and live-TV service through its web API.", "orvo"), commands_(app_) {
  app_.formatter(helpFormatter());
  app_.fallthrough();
  app_.require_subcommand(1);
  app_.set_version_flag("--version", fmt::format("orvo {}", ORVO_API_VERSION_STRING),
                        "Print the version and exit");
  app_.set_help_flag("-h,--help", "Print this help, or that of the command, and exit");
  app_.footer("Exit status: 0, or 1 when the request failed, or 2 for wrong usage.");
  addGlobalOptions();
  addCommands(commands_);
}

void CommandLine::addGlobalOptions() {
  const std::string group = "Options, before or after the command";
  auto* environment =
      app_.add_option("--environment", written_.environment, "The deployment to talk to")
          ->type_name("NAME")
          ->check(CLI::IsMember({"production", "qa", "staging"}))
          ->capture_default_str();
  auto* api = app_.add_option("--api", written_.api, "Another deployment: the base URL of its API")
                  ->type_name("URL")
                  ->check(isBaseURL());
  auto* resources = app_.add_option("--resources", written_.resources, "… and that of its images")
                        ->type_name("URL")
                        ->check(isBaseURL())
                        ->needs(api);
  auto* demo =
      app_.add_flag("--demo", written_.demo, "The demo service, started inside this program");
  api->excludes(demo);
  auto* client = app_.add_option("--client", written_.client, "The kind of device to appear as")
                     ->type_name("NAME")
                     ->check(CLI::IsMember({"iPhone", "iPad", "appleTV", "appleWatch"}))
                     ->capture_default_str();
  auto* json = app_.add_flag("--json", written_.json, "Print one JSON document, for programs");
  for (CLI::Option* option : {environment, api, resources, demo, client, json})
    option->group(group);
}

std::optional<CommandLine::Explanation> CommandLine::read(int argc, const char* const* argv) {
  try {
    app_.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return explanation(error);
  }
  return std::nullopt;
}

int CommandLine::run() {
  Tool tool(written_.read());
  return commands_.runChosen(tool);
}

const CLI::App& CommandLine::reachedCommand() const {
  const auto commands = app_.get_subcommands();
  return commands.empty() ? app_ : *commands.front();
}

/// What is wrong with the command line, in one sentence.
std::string CommandLine::complaint(const CLI::ParseError& error) const {
  if (&reachedCommand() != &app_) return error.what();
  const auto unknown = app_.remaining();
  return unknown.empty() ? "a command is needed" : "there is no command \"" + unknown[0] + "\"";
}

CommandLine::Explanation CommandLine::explanation(const CLI::ParseError& error) const {
  const CLI::App& command = reachedCommand();
  if (dynamic_cast<const CLI::CallForVersion*>(&error) != nullptr) {
    return {0, std::string(error.what()) + "\n"};
  }
  if (error.get_exit_code() == 0) {
    return {0, command.help(&command == &app_ ? "" : app_.get_name())};
  }
  const std::string name = &command == &app_ ? "orvo" : "orvo " + command.get_name();
  return {kWrongUsage, fmt::format("orvo: {}\n{}Try \"{} --help\".\n", escaped(complaint(error)),
                                   helpFormatter()->make_usage(&command, name), name)};
}

}  // namespace orvo::tool
