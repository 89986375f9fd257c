#include <fmt/format.h>
#include <tool/Arguments.h>
#include <tool/Commands.h>
#include <tool/Text.h>
#include <tool/Wording.h>

#include <algorithm>
#include <cmath>

namespace orvo::tool {

namespace {

/// The stream from its start to the end of the last segment, ads marked.
void drawStrip(Screen& screen, const std::vector<VideoSegment>& segments) {
  double end = 0;
  for (const VideoSegment& segment : segments) {
    end = std::max(end, segment.start + segment.duration);
  }
  if (!(end > 0) || end > 1e9) return;
  const std::size_t columns = screen.columns() - 4;
  const auto place = [&](double time) {
    return std::clamp(time / end, 0.0, 1.0) * static_cast<double>(columns);
  };
  // How many more ads there are in a column than in the one before.
  std::vector<int> changes(columns + 2);
  for (const VideoSegment& segment : segments) {
    if (!segment.ad || segment.start + segment.duration < 0) continue;
    const auto first = static_cast<std::size_t>(place(segment.start));
    const auto last = static_cast<std::size_t>(std::ceil(place(segment.start + segment.duration)));
    ++changes[first];
    // However short an ad is, it shows.
    --changes[std::max(first + 1, last)];
  }
  std::string strip;
  int ads = 0;
  for (std::size_t column = 0; column < columns; ++column) {
    ads += changes[column];
    strip += ads > 0 ? screen.in(Style::warning, "█") : screen.in(Style::faint, "─");
  }
  screen.blank();
  screen.line("  " + strip);
}

std::string secondsText(double seconds) { return fmt::format("{:g} s", seconds); }

void drawAds(Screen& screen, const VideoAdMetadata& metadata) {
  const auto ads = std::count_if(metadata.segments.begin(), metadata.segments.end(),
                                 [](const VideoSegment& segment) { return segment.ad; });
  screen.title("Ad metadata",
               countText(ads, "ad") + ", " +
                   countText(static_cast<std::int64_t>(metadata.beacons.size()), "beacon"));
  drawStrip(screen, metadata.segments);
  Table segments{.columns = {{.title = "Segment"},
                             {.title = "from", .right = true},
                             {.title = "for", .right = true}}};
  for (const VideoSegment& segment : metadata.segments) {
    segments.rows.push_back({segment.ad ? Cell{"ad", Style::warning} : Cell{"content"},
                             {secondsText(segment.start)},
                             {secondsText(segment.duration)}});
  }
  Table beacons{.columns = {{.title = "Beacon", .least = 8},
                            {.title = "at", .right = true},
                            {.title = "URL", .least = 16}}};
  for (const VideoBeacon& beacon : metadata.beacons) {
    beacons.rows.push_back(
        {{beacon.name}, {secondsText(beacon.time)}, {beacon.url.text(), Style::faint}});
  }
  for (const Table& table : {segments, beacons}) {
    if (table.rows.empty()) continue;
    screen.blank();
    screen.table(table);
  }
}

int runStream(Tool& tool, const std::string& id) {
  const auto context = tool.context();
  if (const AnyError* error = context.error()) return tool.fail(*error);
  const URL url = (*context.value())->videoURL(id);
  return tool.answer(toJson(url), [&](Screen& screen) { screen.line(url.text()); });
}

int runAds(Tool& tool, const std::string& id) {
  return fetchAndAnswer(
      tool, "fetching the ad metadata",
      [&](const Context& context) { return context.fetchVideoAdMetadata(id); }, drawAds);
}

}  // namespace

void addStreamCommands(Commands& commands) {
  const auto streamID = std::make_shared<std::string>();
  commands.push_back(
      {.name = "stream",
       .description = "The address of a video's stream, with the token in it",
       .details = "Whoever has the address can use the session: it does not belong into a report. "
                  "Nothing else that this tool prints holds a token.",
       .arguments = {identifier(*streamID, "The video's identifier", Listed::videos)},
       .examples = {"orvo --demo stream welcome", "orvo --demo stream welcome --json"},
       .run = [streamID](Tool& tool) { return runStream(tool, *streamID); }});

  const auto adsID = std::make_shared<std::string>();
  commands.push_back({.name = "ads",
                      .description = "Where a stream has ads, and what to call for them",
                      .arguments = {identifier(*adsID, "The video's identifier", Listed::videos)},
                      .examples = {"orvo --demo ads welcome", "orvo --demo ads welcome --json"},
                      .run = [adsID](Tool& tool) { return runAds(tool, *adsID); }});
}

}  // namespace orvo::tool
