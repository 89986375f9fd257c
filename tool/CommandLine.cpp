#include <tool/Arguments.h>
#include <tool/CommandLine.h>
#include <tool/Commands.h>
#include <tool/Help.h>
#include <tool/Output.h>

#include <algorithm>

namespace orvo::tool {

namespace {

Commands allCommands() {
  Commands commands;
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
  return commands;
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
    : table_{.description = "Looks at a video and live-TV service through its web API.",
             .globalOptions = globalOptions(),
             .commands = allCommands(),
             .examples = {"orvo --demo guide", "orvo --demo search night", "orvo help search"}} {
  addHelpCommands();
}

void CommandLine::addHelpCommands() {
  std::vector<std::string> names;
  for (const Command& command : table_.commands) names.push_back(command.name);
  names.insert(names.end(), {"help", "version"});
  table_.commands.push_back(
      {.name = "help",
       .description = "What the tool, or a command, is for and how to use it",
       .arguments = {{.name = "COMMAND",
                      .description = "The command to explain",
                      .values = anyOf(names),
                      .target = &helpedCommand_}},
       .examples = {"orvo help", "orvo help collection"},
       .run = [this](Tool&) {
         const auto command = std::ranges::find(table_.commands, helpedCommand_, &Command::name);
         print(helpText(table_, command == table_.commands.end() ? nullptr : &*command));
         return 0;
       }});
  table_.commands.push_back({.name = "version",
                             .description = "The version of the tool and its library",
                             .examples = {"orvo version"},
                             .run = [](Tool&) {
                               print(versionText() + "\n");
                               return 0;
                             }});
}

std::vector<Parameter> CommandLine::globalOptions() {
  return {{.name = "--environment",
           .description = "The deployment to talk to",
           .values = anyOf({"production", "qa", "staging"}, "NAME"),
           .target = &written_.environment},
          {.name = "--api",
           .description = "Another deployment: the base URL of its API",
           .values = baseURLs(),
           .target = &written_.api,
           .excludes = {"--demo"}},
          {.name = "--resources",
           .description = "The base URL of its images",
           .values = baseURLs(),
           .target = &written_.resources,
           .needs = {"--api"}},
          {.name = "--demo",
           .description = "The demo service, started inside this program",
           .target = &written_.demo},
          {.name = "--client",
           .description = "The kind of device to appear as",
           .values = anyOf({"iPhone", "iPad", "appleTV", "appleWatch"}, "NAME"),
           .target = &written_.client},
          {.name = "--json",
           .description = "Print one JSON document, for programs",
           .target = &written_.json}};
}

std::optional<Explanation> CommandLine::read(int argc, const char* const* argv) {
  auto parsed = parse(table_, argc, argv);
  if (auto* explanation = std::get_if<Explanation>(&parsed)) return std::move(*explanation);
  chosen_ = std::get<const Command*>(parsed);
  return std::nullopt;
}

int CommandLine::run() {
  Tool tool(written_.read());
  return chosen_->run(tool);
}

}  // namespace orvo::tool
