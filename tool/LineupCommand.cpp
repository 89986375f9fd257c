#include <tool/Arguments.h>
#include <tool/Commands.h>
#include <tool/LineupView.h>
#include <tool/Paging.h>
#include <tool/Present.h>
#include <tool/ValueCheck.h>

namespace orvo::tool {

namespace {

struct WrittenLineup {
  std::string place{};
  std::string display{};
  WrittenList list{};
};

/// What looks like an address is one; anything else is an identifier.
bool isPlace(const std::string& text) {
  return text.find('/') == std::string::npos ? !text.empty() : absoluteURL(text).has_value();
}

/// Where the lineup is: at the address, or where the video or page refers to.
Result<LineupReference> findLineup(Tool& tool, const Context& context, const std::string& place) {
  if (const auto url = absoluteURL(place)) return LineupReference{.url = *url};
  const auto fetched = tool.wait(context.fetchContentItem(place), "fetching what refers to it");
  if (const AnyError* error = fetched.error()) return Failure{*error};
  const ContentItem& item = **fetched.value();
  const auto& reference =
      item.page() != nullptr ? item.page()->lineupMeta : item.video()->lineupMeta;
  if (!reference) throw WrongUsage(place + " refers to no lineup");
  return *reference;
}

int runLineup(Tool& tool, const WrittenLineup& written) {
  const ListOutput output(tool, written.list, kSlotFields);
  const auto context = tool.context();
  if (const AnyError* error = context.error()) return tool.fail(*error);
  const auto reference = findLineup(tool, **context.value(), written.place);
  if (const AnyError* error = reference.error()) return tool.fail(*error);
  auto display = caseNamed<LineupDisplayKind>(written.display);
  if (!display && !absoluteURL(written.place)) display = reference.value()->displayKind;
  return fetchRecordsAndAnswer(
      tool, output, "fetching the lineup",
      [&](const Context& opened) { return opened.fetchLineup(reference.value()->url); },
      [&](Screen& screen, const Lineup& lineup) {
        drawLineup(screen, lineup, display, present());
      });
}

}  // namespace

void addLineupCommand(Commands& commands) {
  const auto written = std::make_shared<WrittenLineup>();
  std::vector<Parameter> options{{.name = "--display",
                                  .description = "Draw a grid of channels, or one list; by "
                                                 "default, what the page or the lineup wants",
                                  .values = anyOf({"grid", "lineup"}, "KIND"),
                                  .target = &written->display}};
  addListOptions(options, written->list, kSlotFields);
  commands.push_back({.name = "lineup",
                      .description = "A schedule that a video or page refers to",
                      .arguments = {{.name = "LINEUP",
                                     .description = "The identifier of the video or page, or the "
                                                    "address that it gives",
                                     .values = {.accepts = isPlace,
                                                .wanted = "an identifier, or an absolute http or "
                                                          "https URL",
                                                .identifiers = Listed::items},
                                     .target = &written->place,
                                     .required = true}},
                      .options = std::move(options),
                      .examples = {"orvo --demo lineup view-channels",
                                   "orvo --demo lineup view-calendar --format jsonl"},
                      .run = [written](Tool& tool) { return runLineup(tool, *written); }});
}

}  // namespace orvo::tool
