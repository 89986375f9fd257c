#include <fmt/format.h>
#include <tool/Commands.h>
#include <tool/Text.h>
#include <tool/Wording.h>

#include <algorithm>

namespace orvo::tool {

namespace {

/// The stream from its start to the end of the last segment, ads marked.
void drawStrip(Screen& screen, const std::vector<VideoSegment>& segments) {
  double end = 0;
  for (const VideoSegment& segment : segments) {
    end = std::max(end, segment.start + segment.duration);
  }
  if (!(end > 0) || end > 1e9) return;
  const std::size_t width = screen.columns() - 4;
  std::string strip;
  for (std::size_t column = 0; column < width; ++column) {
    const double share = end / static_cast<double>(width);
    const double from = share * static_cast<double>(column);
    // However short an ad is, it shows.
    const bool ad = std::any_of(segments.begin(), segments.end(), [&](const auto& segment) {
      return segment.ad && segment.start < from + share && from < segment.start + segment.duration;
    });
    strip += ad ? screen.in(Style::warning, "█") : screen.in(Style::faint, "─");
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
  Table beacons{.columns = {{.title = "Beacon"}, {.title = "at", .right = true}, {.title = "URL"}}};
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

}  // namespace

void addStreamCommands(Commands& commands) {
  const auto streamID = std::make_shared<std::string>();
  commands
      .add("stream", "The address of a video's stream, with the token in it",
           [streamID](Tool& tool) {
             const auto context = tool.context();
             if (const AnyError* error = context.error()) return tool.fail(*error);
             const URL url = (*context.value())->videoURL(*streamID);
             return tool.answer(toJson(url), [&](Screen& screen) { screen.line(url.text()); });
           })
      ->add_option("ID", *streamID)
      ->required();

  const auto adsID = std::make_shared<std::string>();
  commands
      .add("ads", "Where a stream has ads, and what to call for them",
           [adsID](Tool& tool) {
             return fetchAndAnswer(
                 tool, "fetching the ad metadata",
                 [&](const Context& context) { return context.fetchVideoAdMetadata(*adsID); },
                 drawAds);
           })
      ->add_option("ID", *adsID)
      ->required();
}

}  // namespace orvo::tool
