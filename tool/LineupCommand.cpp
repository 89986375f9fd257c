#include <tool/Arguments.h>
#include <tool/Commands.h>
#include <tool/LineupView.h>

namespace orvo::tool {

namespace {

struct Written {
  std::string url{};
  std::string display{};
};

int runLineup(Tool& tool, const Written& written) {
  return fetchAndAnswer(
      tool, "fetching the lineup",
      [&](const Context& context) { return context.fetchLineup(*absoluteURL(written.url)); },
      [&](Screen& screen, const Lineup& lineup) {
        drawLineup(screen, lineup, caseNamed<LineupDisplayKind>(written.display),
                   Clock::system()->now());
      });
}

}  // namespace

void addLineupCommand(Commands& commands) {
  const auto written = std::make_shared<Written>();
  CLI::App* command = commands.add("lineup", "A schedule that a video or page refers to",
                                   [written](Tool& tool) { return runLineup(tool, *written); });
  command->add_option("URL", written->url)->required()->check(isAbsoluteURL());
  command->add_option("--display", written->display, "Draw a grid of channels, or one list")
      ->check(CLI::IsMember({"grid", "lineup"}));
}

}  // namespace orvo::tool
