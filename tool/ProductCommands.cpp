#include <tool/Arguments.h>
#include <tool/Commands.h>
#include <tool/ContentViews.h>

namespace orvo::tool {

namespace {

struct WrittenProduct {
  std::string id{};
  std::optional<std::string> playlistID{};
};

int runPage(Tool& tool, const WrittenProduct& written) {
  return fetchAndAnswer(
      tool, "fetching the page",
      [&](const Context& context) { return context.fetchPage(written.id); },
      [](Screen& screen, const Page& page) { draw(screen, page); });
}

int runVideo(Tool& tool, const WrittenProduct& written) {
  return fetchAndAnswer(
      tool, "fetching the video",
      [&](const Context& context) {
        return context.fetchVideo(written.id, {.playlistID = written.playlistID});
      },
      [](Screen& screen, const Video& video) { draw(screen, video); });
}

int runItem(Tool& tool, const WrittenProduct& written) {
  return fetchAndAnswer(
      tool, "fetching the item",
      [&](const Context& context) { return context.fetchContentItem(written.id); },
      [](Screen& screen, const ContentItem& item) { draw(screen, item); });
}

}  // namespace

void addProductCommands(Commands& commands) {
  const auto page = std::make_shared<WrittenProduct>();
  commands.push_back(
      {.name = "page",
       .description = "A page: a show, a channel or an event",
       .arguments = {identifier(page->id, "The page's identifier", Listed::pages)},
       .examples = {"orvo --demo page view-discover", "orvo --demo page show-workbench --json"},
       .run = [page](Tool& tool) { return runPage(tool, *page); }});

  const auto video = std::make_shared<WrittenProduct>();
  commands.push_back(
      {.name = "video",
       .description = "A video: what it is, and when it can be watched",
       .arguments = {identifier(video->id, "The video's identifier", Listed::videos)},
       .options = {{.name = "--playlist-id",
                    .description = "The playlist that it is played from",
                    .values = {.name = "ID"},
                    .target = &video->playlistID}},
       .examples = {"orvo --demo video welcome",
                    "orvo --demo video welcome --playlist-id episodes-workbench --json"},
       .run = [video](Tool& tool) { return runVideo(tool, *video); }});

  const auto item = std::make_shared<WrittenProduct>();
  commands.push_back({.name = "item",
                      .description = "A video or a page, whichever it is",
                      .arguments = {identifier(item->id, "The identifier of a video or a page")},
                      .examples = {"orvo --demo item welcome", "orvo --demo item show-workbench"},
                      .run = [item](Tool& tool) { return runItem(tool, *item); }});
}

}  // namespace orvo::tool
