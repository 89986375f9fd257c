#include <OrvoAPI/Model/ContentFieldsInternal.h>
#include <OrvoAPI/Model/Playlist.h>
#include <OrvoAPI/Model/RequiredMembersInternal.h>
#include <OrvoAPI/Platform/ConsoleSink.h>

#include <algorithm>

namespace orvo {

Result<Playlist> PlaylistParser::parse(const JSONObject& json, const Video* include) {
  RequiredMembers required(json, "Playlist");
  const auto id = required.text("id");
  const auto label = required.text("label");
  const auto shortLabel = required.text("short_label");
  const auto meta = required.meta("meta details");
  const auto items = required.objects("items");
  if (required.failed()) return required.failure();

  Playlist playlist{.id = std::string(id), .label = std::string(label)};
  playlist.shortLabel = shortLabel;
  playlist.meta = meta;
  playlist.items = detail::parsedItems<VideoParser, Video>(*items, std::optional(playlist.id));
  if (include && std::ranges::find(playlist.items, *include) == playlist.items.end()) {
    printToConsole("Prepending video to playlist");
    playlist.items.insert(playlist.items.begin(), *include);
  }
  return playlist;
}

}  // namespace orvo
