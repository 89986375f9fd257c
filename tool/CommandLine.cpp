#include <tool/Arguments.h>
#include <tool/CommandLine.h>
#include <tool/Commands.h>
#include <tool/Completion.h>
#include <tool/Help.h>
#include <tool/Identifiers.h>
#include <tool/Interruption.h>
#include <tool/Manual.h>
#include <tool/Output.h>
#include <tool/Profiles.h>
#include <tool/Text.h>
#include <tool/ValueCheck.h>
#include <tool/trace/Trace.h>

#include <algorithm>
#include <cstdlib>

namespace orvo::tool {

namespace {

Commands allCommands(const WrittenService& service) {
  Commands commands;
  addTourCommand(commands);
  addDoctorCommand(commands);
  addConfigurationCommands(commands);
  addShowCommand(commands);
  addProductCommands(commands);
  addListCommands(commands);
  addSearchCommands(commands);
  addGuideCommand(commands);
  addMonitorCommand(commands);
  addLineupCommand(commands);
  addStreamCommands(commands);
  addPlayCommand(commands);
  addImageCommand(commands);
  addGetCommand(commands);
  addParseCommand(commands);
  addDriftCommand(commands);
  addServeDemoCommand(commands);
  addProfileCommand(commands, service);
  return commands;
}

/// Says what counts when nothing is written, while the targets still say so.
void noteDefaults(std::vector<Parameter>& parameters) {
  for (Parameter& parameter : parameters) {
    if (!parameter.fallback.empty()) continue;
    if (auto* const* number = std::get_if<std::int64_t*>(&parameter.target)) {
      parameter.fallback = std::to_string(**number);
    } else if (auto* const* text = std::get_if<std::string*>(&parameter.target)) {
      parameter.fallback = **text;
    }
  }
}

std::vector<Note> variables() {
  return {{"ORVO_API", "The base URL of the service's API, as --api"},
          {"ORVO_RESOURCES", "The base URL of its images; it counts with ORVO_API only"},
          {"ORVO_CLIENT", "The kind of device to appear as, as --client"},
          {"ORVO_TRACE", "Neither empty nor 0: the same as --trace"},
          {"ORVO_COMPLETE_IDENTIFIERS",
           "Not empty: shells complete identifiers, too, for which the service is asked; with "
           "--demo they always do"},
          {"NO_COLOR", "Not empty: no colours"},
          {"CLICOLOR_FORCE", "Neither empty nor 0: colours, also where there is no terminal"},
          {"CLICOLOR", "0: no colours"},
          {"COLUMNS", "How wide the output is where there is no terminal"},
          {"TZ", "The zone in which times are read and shown"},
          {"SSL_CERT_FILE", "The certificates of the authorities to trust, in one file"}};
}

}  // namespace

CommandLine::CommandLine()
    : table_{.description = "Looks at a video and live-TV service through its web API",
             .details =
                 "On a terminal lists are drawn. In a pipe they are lines with tabs between the "
                 "fields, as a service sends them; --format and --fields choose otherwise. All "
                 "output is UTF-8, whatever the locale.",
             .globalOptions = globalOptions(),
             .commands = allCommands(service_),
             .examples = {"orvo --demo tour",
                          "orvo --demo guide --start tonight --end 'tomorrow 02:00'",
                          "orvo --demo search night", "orvo help search"},
             .variables = variables(),
             .files = {{"~/.config/orvo/profiles",
                        "Services by name, below $XDG_CONFIG_HOME if that is set; orvo help "
                        "profile says more"}}} {
  addTrafficOptions(table_.globalOptions, traffic_);
  addHelpCommands();
  noteDefaults(table_.globalOptions);
  for (Command& command : table_.commands) {
    noteDefaults(command.arguments);
    noteDefaults(command.options);
  }
}

void CommandLine::addHelpCommands() {
  std::vector<std::string> names;
  for (const Command& command : table_.commands) names.push_back(command.name);
  names.insert(names.end(), {"help", "manual", "completion", "version"});
  const Parameter command{.name = "COMMAND",
                          .description = "The command to explain",
                          .values = anyOf(names),
                          .target = &helpedCommand_};
  table_.commands.push_back({.name = "help",
                             .description = "What the tool, or a command, is for and how to use it",
                             .arguments = {command},
                             .examples = {"orvo help", "orvo help collection"},
                             .usesService = false,
                             .run = [this](Tool&) {
                               print(helpText(table_, helped()));
                               return 0;
                             }});
  addManualCommand(command);
  addCompletionCommand();
  table_.commands.push_back({.name = "version",
                             .description = "The version of the tool and its library",
                             .examples = {"orvo version"},
                             .usesService = false,
                             .run = [](Tool&) {
                               print(versionText() + "\n");
                               return 0;
                             }});
}

void CommandLine::addManualCommand(const Parameter& command) {
  table_.commands.push_back(
      {.name = "manual",
       .description = "What help says, as a manual page for man -l",
       .arguments = {command},
       .examples = {"orvo manual | man -l -", "orvo manual collection | man -l -"},
       .usesService = false,
       .run = [this](Tool&) {
         print(manualPage(table_, helped()));
         return 0;
       }});
}

const Command* CommandLine::helped() const {
  const auto command = std::ranges::find(table_.commands, helpedCommand_, &Command::name);
  return command == table_.commands.end() ? nullptr : &*command;
}

void CommandLine::addCompletionCommand() {
  table_.commands.push_back(
      {.name = "completion",
       .description = "What lets a shell complete the tool's command lines",
       .details =
           "For bash or zsh: source <(orvo completion bash). For fish: orvo completion fish | "
           "source.",
       .arguments = {{.name = "SHELL",
                      .description = "The shell",
                      .values = completionShells(),
                      .target = &shell_,
                      .required = true}},
       .examples = {"orvo completion bash", "orvo completion fish"},
       .usesService = false,
       .run = [this](Tool&) {
         print(completionScript(shell_));
         return 0;
       }});
}

/// Which service, and as what.
std::vector<Parameter> CommandLine::serviceOptions() {
  return {{.name = "--environment",
           .description = "The deployment to talk to, of those compiled in",
           .values = anyOf(caseNames<Environment>()),
           .target = &service_.environment,
           .fallback = "production"},
          {.name = "--api",
           .description = "Another deployment: the base URL of its API; without it, ORVO_API",
           .values = baseURLs(),
           .target = &service_.api,
           .excludes = {"--demo"}},
          {.name = "--resources",
           .description = "The base URL of its images; beside ORVO_API, ORVO_RESOURCES",
           .values = baseURLs(),
           .target = &service_.resources,
           .needs = {"--api"}},
          {.name = "--profile",
           .description = "Another deployment: the one that orvo profile keeps under that name",
           .values = {.name = "NAME", .suggestions = knownProfiles},
           .target = &service_.profile,
           .excludes = {"--api"}},
          {.name = "--demo",
           .description = "The demo service, started inside this program",
           .target = &service_.demo},
          {.name = "--client",
           .description = "The kind of device to appear as; without it, ORVO_CLIENT",
           .values = clientNames(),
           .target = &service_.client,
           .fallback = "appleTV"}};
}

std::vector<Parameter> CommandLine::globalOptions() {
  std::vector<Parameter> options = serviceOptions();
  const std::vector<Parameter> others{
      {.name = "--json", .description = "Print one JSON document, for programs", .target = &json_},
      {.name = "--color",
       .description = "Whether to use colours; when that is left open, NO_COLOR, CLICOLOR_FORCE "
                      "and CLICOLOR decide",
       .values = anyOf({"auto", "always", "never"}, "WHEN"),
       .target = &color_},
      {.name = "--verbose",
       .description = "Say on standard error which service is used, and what chose it",
       .target = &verbose_},
      {.name = "--trace",
       .description = "Draw on standard error where the time of each request went; with --json, a "
                      "document a line",
       .target = &trace_},
      {.name = "--report",
       .description = "Say on standard error what of the documents cannot be used, and why",
       .target = &report_}};
  options.insert(options.end(), others.begin(), others.end());
  return options;
}

std::optional<Explanation> CommandLine::read(int argc, const char* const* argv) {
  // Between the shell and the tool: any words may follow, so it is none of the commands.
  if (argc > 1 && std::string_view(argv[1]) == "complete") {
    const auto identifiers = [this](Listed listed) { return this->identifiers(listed); };
    return Explanation{0, completions(table_, {argv + 2, argv + argc}, identifiers)};
  }
  for (int i = 1; i < argc; ++i) {
    // An address may hold a password.
    if (std::string_view(argv[i]).find("://") == std::string_view::npos)
      words_.emplace_back(argv[i]);
  }
  auto parsed = parse(table_, argc, argv);
  if (auto* explanation = std::get_if<Explanation>(&parsed)) return std::move(*explanation);
  chosen_ = std::get<const Command*>(parsed);
  return std::nullopt;
}

/// A shell must not ask a service whenever somebody presses a key, unless that is wanted.
std::vector<Note> CommandLine::identifiers(Listed listed) const {
  if (!traffic_.replay.empty()) return {};
  const char* asked = std::getenv("ORVO_COMPLETE_IDENTIFIERS");
  if (!service_.demo && (asked == nullptr || *asked == '\0')) return {};
  try {
    GlobalOptions options;
    static_cast<ServiceChoice&>(options) = chooseService(service_);
    Tool tool(std::move(options));
    return knownIdentifiers(tool, listed);
  } catch (const WrongUsage&) {
    return {};
  }
}

GlobalOptions CommandLine::chosenOptions() const {
  GlobalOptions options;
  const bool isReplayed = !traffic_.replay.empty();
  if (!chosen_->usesService && (isReplayed || !traffic_.record.empty())) {
    throw WrongUsage("orvo " + chosen_->name + " asks no service");
  }
  if (isReplayed) {
    if (chosen_->needsNetwork) throw WrongUsage("orvo " + chosen_->name + " needs the network");
    replay(traffic_.replay, options);
  } else if (chosen_->usesService) {
    static_cast<ServiceChoice&>(options) = chooseService(service_);
  } else if (service_.environment) {
    options.environment = *environmentNamed(*service_.environment);
  }
  options.json = json_;
  options.verbose = verbose_;
  if (report_) options.losses = std::make_shared<LossReport>();
  return options;
}

int CommandLine::run() {
  if (color_ != "auto") setColours(color_ == "always" ? Colours::always : Colours::never);
  try {
    auto options = chosenOptions();
    Recording recording(traffic_.record, options, words_);
    const bool isTraced = trace_ || isTraceWanted();
    std::optional<Interruption> interruption;
    const bool isWatched = isTraced || report_ || chosen_->tellsWhenInterrupted;
    if (isWatched || !traffic_.record.empty()) interruption.emplace();
    const BeforeEarlyEnd reporting([losses = options.losses, json = json_] {
      if (losses != nullptr) losses->print(json, false);
    });
    Tool tool(std::move(options));
    if (isTraced) tool.observe(std::make_shared<Trace>(tool));
    const int status = chosen_->run(tool);
    if (report_) tool.options().losses->print(tool.options().json, status == 0);
    return recording.end(status);
  } catch (const WrongUsage& wrong) {
    printDiagnostic(harmless(std::string("orvo: ") + wrong.what()) + "\nTry \"orvo " +
                    chosen_->name + " --help\".\n");
    return kWrongUsage;
  }
}

}  // namespace orvo::tool
