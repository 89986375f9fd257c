#include <fmt/format.h>
#include <tool/Commands.h>
#include <tool/ContentViews.h>
#include <tool/OwnRequest.h>
#include <tool/Text.h>

#include <algorithm>

namespace orvo::tool {

namespace {

/// What the walk comes across.
struct Sights {
  Shared<Page> page;
  Shared<ItemCollection> collection;
  Shared<Video> video;
  URL stream;
  int streamStatus = 0;
  /// As they may be shown: without the token.
  std::string shownStream{};
  std::string playlist{};
};

constexpr int kFound = 200;

/// The text without what only a player needs to see: in the stream's address the token stands
/// between the video's identifier and the name of the file.
std::string masked(const Sights& sights, const Context& context, std::string text) {
  const std::string_view path = sights.stream.path();
  const std::size_t begin =
      context.constants().hlsBaseURL.appendingPathComponent(sights.video->id).path().size() + 1;
  const std::string token(path.substr(0, path.rfind('/')).substr(std::min(begin, path.size())));
  for (std::size_t at = 0; !token.empty() && (at = text.find(token, at)) != std::string::npos;) {
    text.replace(at, token.size(), "(token)");
  }
  return text;
}

/// The first video on the page that can be played now, with the collection that shows it.
Result<Sights> findVideo(Tool& tool, const Context& context, Shared<Page> page) {
  for (const CollectionReference& reference : page->collections) {
    const auto fetched =
        tool.wait(context.fetchItemCollection(reference.id), "looking into a collection");
    if (const AnyError* error = fetched.error()) return Failure{*error};
    const Shared<ItemCollection> collection = *fetched.value();
    const auto item = std::find_if(
        collection->items.begin(), collection->items.end(), [](const ContentItem& candidate) {
          const Video* video = candidate.video();
          return video != nullptr && video->playbackStatus == Video::PlaybackStatus::available;
        });
    if (item == collection->items.end()) continue;
    const auto video = tool.wait(
        context.fetchVideo(item->video()->id, {.playlistID = collection->id}), "fetching a video");
    if (const AnyError* error = video.error()) return Failure{*error};
    return Sights{.page = page,
                  .collection = collection,
                  .video = *video.value(),
                  .stream = context.videoURL((*video.value())->id)};
  }
  return Failure{GeneralError::elementNotFound{}};
}

Result<Sights> walk(Tool& tool, const Context& context) {
  const auto views = context.systemViews();
  if (views.empty()) return Failure{GeneralError::elementNotFound{}};
  const auto page = tool.wait(views.front().fetch(), "fetching the first system view");
  if (const AnyError* error = page.error()) return Failure{*error};
  auto sights = findVideo(tool, context, *page.value());
  if (Sights* found = sights.value()) {
    const auto playlist =
        fetch(tool, *tool.network(), {.url = found->stream},
              {"fetchPlaylistOfStream", found->video->id, std::string(kHiddenText)},
              "fetching the stream's playlist");
    if (const AnyError* error = playlist.error()) return Failure{*error};
    found->streamStatus = playlist.value()->response.statusCode;
    found->playlist = masked(*found, context, std::string(playlist.value()->body.view()));
    found->shownStream = masked(*found, context, found->stream.text());
  }
  return sights;
}

void drawTour(Screen& screen, const Sights& sights) {
  draw(screen, *sights.page);
  screen.heading(sights.collection->label,
                 extentText(sights.collection->meta, sights.collection->items.size()));
  drawItems(screen, sights.collection->items, sights.collection->meta.offset);
  screen.blank();
  draw(screen, *sights.video);
  screen.heading("Stream", fmt::format("answers with status {}", sights.streamStatus));
  screen.line("  " + printable(sights.shownStream));
  for (std::string_view rest = sights.playlist; !rest.empty();) {
    const std::string_view line = rest.substr(0, rest.find('\n'));
    rest.remove_prefix(std::min(rest.size(), line.size() + 1));
    screen.line("  " + screen.in(Style::faint, printable(line)));
  }
}

int runTour(Tool& tool) {
  const auto context = tool.context();
  if (const AnyError* error = context.error()) return tool.fail(*error);
  const auto sights = walk(tool, **context.value());
  if (const AnyError* error = sights.error()) return tool.fail(*error);
  const Sights& seen = *sights.value();
  tool.answer(Json::object({{"page", toJson(*seen.page)},
                            {"collection", toJson(*seen.collection)},
                            {"video", toJson(*seen.video)},
                            {"stream", seen.shownStream},
                            {"streamStatus", seen.streamStatus}}),
              [&](Screen& screen) { drawTour(screen, seen); });
  return seen.streamStatus == kFound ? 0 : 1;
}

}  // namespace

void addTourCommand(Commands& commands) {
  commands.push_back(
      {.name = "tour",
       .description = "A short walk: a page, a video on it, and what its stream answers",
       .examples = {"orvo --demo tour", "orvo --demo tour --json"},
       .run = runTour});
}

}  // namespace orvo::tool
