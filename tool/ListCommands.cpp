#include <tool/Arguments.h>
#include <tool/Commands.h>
#include <tool/ContentViews.h>
#include <tool/Paging.h>

namespace orvo::tool {

namespace {

struct WrittenItems {
  std::string id{};
  WrittenPaging paging{};
  WrittenList list{};
  std::optional<std::string> including{};
};

int runCollection(Tool& tool, const WrittenItems& written) {
  const ListOutput output(tool, written.list, kItemFields);
  return fetchListAndAnswer(
      tool, output, "fetching the collection", written.paging,
      [&](const Context& context) {
        return context.fetchItemCollection(written.id, written.paging.read());
      },
      [](Screen& screen, const ItemCollection& collection) { draw(screen, collection); });
}

int runPlaylist(Tool& tool, const WrittenItems& written) {
  const ListOutput output(tool, written.list, kItemFields);
  const auto drawPlaylist = [](Screen& screen, const Playlist& playlist) {
    draw(screen, playlist);
  };
  if (!written.including) {
    const auto fetch = [&](const Context& context) {
      return context.fetchPlaylist(written.id, written.paging.read());
    };
    return fetchListAndAnswer(tool, output, "fetching the playlist", written.paging, fetch,
                              drawPlaylist);
  }
  const auto fetch = [&](const Context& context) {
    const auto keeper = context.shared_from_this();
    const auto video = context.fetchVideo(*written.including, {.playlistID = written.id});
    return video.flatMap([keeper, id = written.id](const Shared<Video>& included) {
      return keeper->fetchPlaylist(id, *included);
    });
  };
  return fetchListAndAnswer(tool, output, "fetching the playlist", {}, fetch, drawPlaylist);
}

}  // namespace

void addListCommands(Commands& commands) {
  const auto collection = std::make_shared<WrittenItems>();
  auto options = pagingOptions(collection->paging);
  addListOptions(options, collection->list, kItemFields);
  commands.push_back(
      {.name = "collection",
       .description = "A collection of videos and pages",
       .arguments = {identifier(collection->id, "The collection's identifier, as pages list it",
                                Listed::collections)},
       .options = std::move(options),
       .examples = {"orvo --demo collection everything --limit 5",
                    "orvo --demo collection everything --all --format jsonl"},
       .run = [collection](Tool& tool) { return runCollection(tool, *collection); }});

  const auto playlist = std::make_shared<WrittenItems>();
  options = pagingOptions(playlist->paging);
  options.push_back({.name = "--including",
                     .description = "A video to play in any case",
                     .values = {.name = "VIDEO_ID", .identifiers = Listed::videos},
                     .target = &playlist->including,
                     .excludes = {"--limit", "--offset", "--all"}});
  addListOptions(options, playlist->list, kItemFields);
  commands.push_back(
      {.name = "playlist",
       .description = "Videos that play one after another",
       .arguments = {identifier(playlist->id, "The playlist's identifier", Listed::collections)},
       .options = std::move(options),
       .examples = {"orvo --demo playlist episodes-workbench",
                    "orvo --demo playlist episodes-workbench --including welcome"},
       .run = [playlist](Tool& tool) { return runPlaylist(tool, *playlist); }});
}

}  // namespace orvo::tool
