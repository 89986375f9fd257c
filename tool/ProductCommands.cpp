#include <tool/Arguments.h>
#include <tool/Commands.h>
#include <tool/ContentViews.h>

namespace orvo::tool {

namespace {

struct Written {
  std::string id{};
  std::optional<std::string> playlistID{};
};

int runPage(Tool& tool, const Written& written) {
  return fetchAndAnswer(
      tool, "fetching the page",
      [&](const Context& context) { return context.fetchPage(written.id); },
      [](Screen& screen, const Page& page) { draw(screen, page); });
}

int runVideo(Tool& tool, const Written& written) {
  return fetchAndAnswer(
      tool, "fetching the video",
      [&](const Context& context) {
        return context.fetchVideo(written.id, {.playlistID = written.playlistID});
      },
      [](Screen& screen, const Video& video) { draw(screen, video); });
}

int runItem(Tool& tool, const Written& written) {
  return fetchAndAnswer(
      tool, "fetching the item",
      [&](const Context& context) { return context.fetchContentItem(written.id); },
      [](Screen& screen, const ContentItem& item) { draw(screen, item); });
}

}  // namespace

void addProductCommands(Commands& commands) {
  const auto page = std::make_shared<Written>();
  commands.push_back({.name = "page",
                      .description = "A page: a show, a channel, an event, …",
                      .arguments = {identifier(page->id)},
                      .run = [page](Tool& tool) { return runPage(tool, *page); }});

  const auto video = std::make_shared<Written>();
  commands.push_back({.name = "video",
                      .description = "A video",
                      .arguments = {identifier(video->id)},
                      .options = {{.name = "--playlist-id",
                                   .description = "The playlist that it is played from",
                                   .target = &video->playlistID}},
                      .run = [video](Tool& tool) { return runVideo(tool, *video); }});

  const auto item = std::make_shared<Written>();
  commands.push_back({.name = "item",
                      .description = "A video or a page, whichever it is",
                      .arguments = {identifier(item->id)},
                      .run = [item](Tool& tool) { return runItem(tool, *item); }});
}

}  // namespace orvo::tool
