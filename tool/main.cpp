#include <OrvoAPI/Platform/ConsoleSink.h>
#include <OrvoAPI/Version.h>
#include <fmt/format.h>
#include <tool/Arguments.h>
#include <tool/Commands.h>

#include <csignal>

namespace {

using orvo::tool::Commands;
using orvo::tool::GlobalOptions;
using orvo::tool::Tool;

constexpr int kWrongUsage = 2;

/// The options as they are written; `GlobalOptions` is made of them when they are known to be
/// right.
struct WrittenOptions {
  std::string environment = "production";
  std::string api;
  std::string resources;
  bool demo = false;
  std::string client = "appleTV";
  bool json = false;

  [[nodiscard]] GlobalOptions read() const {
    GlobalOptions options{.environment = *orvo::tool::environmentNamed(environment),
                          .demo = demo,
                          .client = *orvo::fromRawValue<orvo::Client>(client),
                          .json = json};
    if (api.empty()) return options;
    options.api = orvo::tool::baseURL(api);
    options.resources = resources.empty() ? orvo::resourceURL(options.environment)
                                          : *orvo::tool::baseURL(resources);
    return options;
  }
};

void addGlobalOptions(CLI::App& app, WrittenOptions& options) {
  const std::string group = "Options, before or after the command";
  auto* environment =
      app.add_option("--environment", options.environment, "The deployment to talk to")
          ->type_name("NAME")
          ->check(CLI::IsMember({"production", "qa", "staging"}))
          ->capture_default_str();
  auto* api = app.add_option("--api", options.api, "Another deployment: the base URL of its API")
                  ->type_name("URL")
                  ->check(orvo::tool::isBaseURL());
  auto* resources = app.add_option("--resources", options.resources, "… and that of its images")
                        ->type_name("URL")
                        ->check(orvo::tool::isBaseURL())
                        ->needs(api);
  auto* demo =
      app.add_flag("--demo", options.demo, "The demo service, started inside this program");
  api->excludes(demo);
  auto* client = app.add_option("--client", options.client, "The kind of device to appear as")
                     ->type_name("NAME")
                     ->check(CLI::IsMember({"iPhone", "iPad", "appleTV", "appleWatch"}))
                     ->capture_default_str();
  auto* json = app.add_flag("--json", options.json, "Print one JSON document, for programs");
  for (CLI::Option* option : {environment, api, resources, demo, client, json})
    option->group(group);
}

/// The command that the command line got as far as naming.
const CLI::App& reachedCommand(const CLI::App& app) {
  const auto commands = app.get_subcommands();
  return commands.empty() ? app : *commands.front();
}

std::shared_ptr<CLI::Formatter> helpFormatter() {
  auto formatter = std::make_shared<CLI::Formatter>();
  formatter->label("SUBCOMMAND", "COMMAND");
  formatter->label("REQUIRED", "");
  formatter->column_width(26);
  return formatter;
}

/// What is wrong with the command line, in one sentence.
std::string complaint(const CLI::App& app, const CLI::ParseError& error) {
  if (&reachedCommand(app) != &app) return error.what();
  const auto unknown = app.remaining();
  return unknown.empty() ? "a command is needed" : "there is no command \"" + unknown[0] + "\"";
}

int explainUsage(const CLI::App& app, const CLI::ParseError& error) {
  const CLI::App& command = reachedCommand(app);
  if (dynamic_cast<const CLI::CallForVersion*>(&error) != nullptr) {
    orvo::tool::print(std::string(error.what()) + "\n");
    return 0;
  }
  if (error.get_exit_code() == 0) {
    orvo::tool::print(command.help(&command == &app ? "" : app.get_name()));
    return 0;
  }
  const std::string name = &command == &app ? "orvo" : "orvo " + command.get_name();
  orvo::tool::printDiagnostic(fmt::format("orvo: {}\n{}Try \"{} --help\".\n", complaint(app, error),
                                          helpFormatter()->make_usage(&command, name), name));
  return kWrongUsage;
}

void addCommands(Commands& commands) {
  orvo::tool::addTourCommand(commands);
  orvo::tool::addConfigurationCommands(commands);
  orvo::tool::addProductCommands(commands);
  orvo::tool::addListCommands(commands);
  orvo::tool::addSearchCommands(commands);
  orvo::tool::addGuideCommand(commands);
  orvo::tool::addLineupCommand(commands);
  orvo::tool::addStreamCommands(commands);
  orvo::tool::addImageCommand(commands);
  orvo::tool::addParseCommand(commands);
  orvo::tool::addServeDemoCommand(commands);
}

}  // namespace

int main(int argc, char** argv) {
  // A reader that has gone away shows when the text is written, and ends the program quietly.
  std::signal(SIGPIPE, SIG_IGN);
  // Standard output is for the answer alone.
  orvo::setConsoleSink([](std::string_view line) { orvo::tool::printDiagnostic(line); });
  CLI::App app("Looks at a video and live-TV service through its web API.", "orvo");
  WrittenOptions written;
  app.formatter(helpFormatter());
  app.fallthrough();
  app.require_subcommand(1);
  app.set_version_flag("--version", fmt::format("orvo {}", ORVO_API_VERSION_STRING),
                       "Print the version and exit");
  app.set_help_flag("-h,--help", "Print this help, or that of the command, and exit");
  app.footer("Exit status: 0, or 1 when the request failed, or 2 for wrong usage.");
  addGlobalOptions(app, written);
  Commands commands(app);
  addCommands(commands);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return explainUsage(app, error);
  }
  Tool tool(written.read());
  return commands.runChosen(tool);
}
