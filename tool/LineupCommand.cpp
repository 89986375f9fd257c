#include <tool/Arguments.h>
#include <tool/Commands.h>
#include <tool/LineupView.h>
#include <tool/Paging.h>

namespace orvo::tool {

namespace {

struct WrittenLineup {
  std::string url{};
  std::string display{};
  WrittenList list{};
};

int runLineup(Tool& tool, const WrittenLineup& written) {
  return fetchRecordsAndAnswer(
      tool, ListOutput(tool, written.list, kSlotFields), "fetching the lineup",
      [&](const Context& context) { return context.fetchLineup(*absoluteURL(written.url)); },
      [&](Screen& screen, const Lineup& lineup) {
        drawLineup(screen, lineup, caseNamed<LineupDisplayKind>(written.display),
                   Clock::system()->now());
      });
}

}  // namespace

void addLineupCommand(Commands& commands) {
  const auto written = std::make_shared<WrittenLineup>();
  std::vector<Parameter> options{{.name = "--display",
                                  .description = "Draw a grid of channels, or one list",
                                  .values = anyOf({"grid", "lineup"}, "KIND"),
                                  .target = &written->display}};
  addListOptions(options, written->list, kSlotFields);
  commands.push_back({.name = "lineup",
                      .description = "A schedule that a video or page refers to",
                      .arguments = {{.name = "URL",
                                     .description = "Its address, as the video or page gives it",
                                     .values = absoluteURLs(),
                                     .target = &written->url,
                                     .required = true}},
                      .options = std::move(options),
                      .examples = {"orvo serve-demo --port 8080 &",
                                   "orvo lineup http://127.0.0.1:8080/lineups/grid.json"},
                      .run = [written](Tool& tool) { return runLineup(tool, *written); }});
}

}  // namespace orvo::tool
