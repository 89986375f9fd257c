#include <tool/Commands.h>
#include <tool/ContentViews.h>

namespace orvo::tool {
namespace {

struct VideoOptions {
  std::string id{};
  std::optional<std::string> playlistID{};
};

}  // namespace

void addProductCommands(Commands& commands) {
  const auto pageID = std::make_shared<std::string>();
  commands
      .add("page", "A page: a show, a channel, an event, …",
           [pageID](Tool& tool) {
             return fetchAndAnswer(
                 tool, "fetching the page",
                 [&](const Context& context) { return context.fetchPage(*pageID); },
                 [](Screen& screen, const Page& page) { draw(screen, page); });
           })
      ->add_option("ID", *pageID)
      ->required();

  const auto video = std::make_shared<VideoOptions>();
  CLI::App* command = commands.add("video", "A video", [video](Tool& tool) {
    return fetchAndAnswer(
        tool, "fetching the video",
        [&](const Context& context) {
          return context.fetchVideo(video->id, {.playlistID = video->playlistID});
        },
        [](Screen& screen, const Video& model) { draw(screen, model); });
  });
  command->add_option("ID", video->id)->required();
  command->add_option("--playlist-id", video->playlistID, "The playlist that it is played from");

  const auto itemID = std::make_shared<std::string>();
  commands
      .add("item", "A video or a page, whichever it is",
           [itemID](Tool& tool) {
             return fetchAndAnswer(
                 tool, "fetching the item",
                 [&](const Context& context) { return context.fetchContentItem(*itemID); },
                 [](Screen& screen, const ContentItem& item) { draw(screen, item); });
           })
      ->add_option("ID", *itemID)
      ->required();
}

}  // namespace orvo::tool
