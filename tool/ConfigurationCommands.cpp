#include <fmt/format.h>
#include <tool/Commands.h>
#include <tool/ListOutput.h>
#include <tool/Text.h>
#include <tool/Wording.h>

namespace orvo::tool {

namespace {

void drawViews(Screen& screen, const std::vector<Configuration::SystemView>& views) {
  Table table{.columns = {{}, {.least = 20}, {}}};
  for (const Configuration::SystemView& view : views) {
    table.rows.push_back({{view.name, Style::strong}, {view.label}, {view.id, Style::faint}});
  }
  screen.table(table);
}

/// The nearest colour in the colour cube of 256-colour terminals.
unsigned cubeIndex(const Color& color) {
  const auto level = [](std::uint8_t value) { return (value * 5U + 127U) / 255U; };
  return 16U + 36U * level(color.red8()) + 6U * level(color.green8()) + level(color.blue8());
}

/// Where there is little room, a short one.
std::string swatch(const Terminal& terminal, const Color& color, bool isNarrow) {
  if (!terminal.colour) return "";
  constexpr std::size_t kShort = 4, kLong = 10;
  const std::string code = terminal.trueColour ? fmt::format("48;2;{};{};{}", color.red8(),
                                                             color.green8(), color.blue8())
                                               : fmt::format("48;5;{}", cubeIndex(color));
  return fmt::format("\x1b[{}m{:{}}\x1b[0m  ", code, "", isNarrow ? kShort : kLong);
}

void drawPalette(Screen& screen, const ColorPalette& palette) {
  constexpr std::size_t kWhole = 60;
  const bool isNarrow = screen.terminal().isFitted() && screen.columns() < kWhole;
  for (const ColorPalette::Entry& entry : ColorPalette::entries) {
    const ColorResource& resource = palette.*entry.resource;
    const std::string made = screen.in(Style::faint, printable(resource.transform));
    screen.line(fmt::format("  {}{:<10}  {}{}", swatch(screen.terminal(), resource.color, isNarrow),
                            entry.name, hexText(resource.color), isNarrow ? "" : "  " + made));
  }
}

void drawConstants(Screen& screen, const Constants& constants) {
  const auto percent = [](double share) { return fmt::format("{:g} %", share * 100); };
  screen.heading("Constants");
  screen.field("streams", constants.hlsBaseURL.text());
  screen.field("linear stream", constants.linearStreamID);
  screen.field("up-next hint", durationText(constants.upNextHintTimeout));
  screen.field("player controls", durationText(constants.playerControlsTimeout));
  screen.field("discovery reset", durationText(constants.discoveryResetTimeout));
  screen.field("relaunch resume", durationText(constants.relaunchResumeTimeout));
  screen.field("countdown", durationText(constants.countdownVisibilityTimeout));
  screen.field("recently watched", constants.recentlyWatched ? "yes" : "no");
  screen.field("started after", percent(constants.startedMinimumPercent) + " and " +
                                    durationText(constants.startedMinimumTime));
  screen.field("watched after", percent(constants.watchedMinimumPercent) + " or " +
                                    durationText(constants.watchedMinimumTime) + " from the end");
  screen.field("share text", constants.shareStringTemplate);
  screen.field("top results", countText(constants.searchTopResultsLimit));
  screen.field("interrupt delay", durationText(constants.playbackInterruptDelay));
  screen.field("ad corner bug", durationText(constants.adCornerBugDelay));
}

void drawRequirements(Screen& screen, const Configuration& configuration) {
  const Requirements& requirements = configuration.requirements;
  const RatingPromptConfig& rating = configuration.ratingPromptConfig;
  screen.heading("Requirements and prompts");
  screen.field("app", joined({requirements.appVersion.minBuild, requirements.appVersion.message}));
  screen.field("system",
               joined({requirements.osVersion.minOsVersion, requirements.osVersion.message}));
  screen.field(
      "kill switch",
      joined({requirements.killSwitch.kill ? "on" : "off", requirements.killSwitch.message}),
      requirements.killSwitch.kill ? Style::bad : Style::plain);
  screen.field("rating prompt",
               fmt::format("{}, after {} sessions or {}, again after {}",
                           rating.enabled ? "on" : "off", rating.sessionCountThreshold,
                           durationText(rating.activeSessionTimeThreshold), rating.repeatDelay));
  if (const auto& ad = configuration.displayAd) {
    screen.field("display ads", joined({ad->server.text(), ad->network, ad->profile}));
  }
}

void drawLinks(Screen& screen, const Links& links) {
  screen.heading("Links");
  screen.field("imprint", links.imprint.text());
  screen.field("about", links.about.text());
  screen.field("privacy", links.privacy.text());
  screen.field("terms", links.terms.text());
  screen.field("contact", links.contact.text());
  screen.field("feedback", links.feedback.text());
}

void drawConfiguration(Screen& screen, const Configuration& configuration) {
  const LinearStream& stream = configuration.linearStream;
  screen.title("Configuration", name(configuration.environment));
  screen.heading("System views");
  drawViews(screen, configuration.systemViews);
  screen.heading("Linear channel");
  screen.field("id", stream.id);
  screen.field("label", stream.label);
  screen.field("description", stream.description);
  screen.field("icon", stream.iconID);
  screen.field("upcoming events", configuration.upcomingEvents.label);
  screen.field("", configuration.upcomingEvents.id, Style::faint);
  drawConstants(screen, configuration.constants);
  drawRequirements(screen, configuration);
  drawLinks(screen, configuration.links);
  screen.heading("Colours");
  drawPalette(screen, configuration.colorPalette);
}

int runConfig(Tool& tool) {
  const auto context = tool.context();
  if (const AnyError* error = context.error()) return tool.fail(*error);
  const Configuration& configuration = (*context.value())->configuration();
  return tool.answer(toJson(configuration),
                     [&](Screen& screen) { drawConfiguration(screen, configuration); });
}

int runViews(Tool& tool, const WrittenList& written) {
  const ListOutput output(tool, written, kViewFields);
  const auto context = tool.context();
  if (const AnyError* error = context.error()) return tool.fail(*error);
  std::vector<Configuration::SystemView> views;
  for (const SystemView& view : (*context.value())->systemViews()) {
    views.push_back({view.name, view.label, view.id});
  }
  return output.answer(views, [&](Screen& screen) { drawViews(screen, views); });
}

int runPalette(Tool& tool, const WrittenList& written) {
  const ListOutput output(tool, written, kColorFields);
  const auto context = tool.context();
  if (const AnyError* error = context.error()) return tool.fail(*error);
  const ColorPalette& palette = (*context.value())->colorPalette();
  return output.answer(palette, [&](Screen& screen) { drawPalette(screen, palette); });
}

std::vector<Parameter> listOptions(WrittenList& written, Fields fields) {
  std::vector<Parameter> options;
  addListOptions(options, written, fields);
  return options;
}

}  // namespace

void addConfigurationCommands(Commands& commands) {
  commands.push_back({.name = "config",
                      .description = "The remote configuration",
                      .examples = {"orvo --demo config", "orvo --demo config --json"},
                      .run = runConfig});

  const auto views = std::make_shared<WrittenList>();
  commands.push_back({.name = "views",
                      .description = "The system views: where browsing begins",
                      .options = listOptions(*views, kViewFields),
                      .examples = {"orvo --demo views", "orvo --demo views --client iPhone"},
                      .synonyms = {"browse", "channels", "home", "list"},
                      .run = [views](Tool& tool) { return runViews(tool, *views); }});

  const auto palette = std::make_shared<WrittenList>();
  commands.push_back({.name = "palette",
                      .description = "The colours of the brand",
                      .options = listOptions(*palette, kColorFields),
                      .examples = {"orvo --demo palette", "orvo --demo palette --format table"},
                      .run = [palette](Tool& tool) { return runPalette(tool, *palette); }});
}

}  // namespace orvo::tool
