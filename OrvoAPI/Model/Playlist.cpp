#include <OrvoAPI/Model/ContentReadersInternal.h>
#include <OrvoAPI/Model/Playlist.h>
#include <OrvoAPI/Platform/ConsoleSink.h>

#include <algorithm>

namespace orvo {

Result<Playlist> PlaylistParser::parse(const JSONObject& json, const Video* include) {
  static constexpr detail::TextIndex kKeys({"id", "label", "short_label", "meta", "items"});
  const detail::JSONMembers<kKeys> members(json);
  detail::RequiredMembers required("Playlist");
  const auto id = required.text(members["id"]);
  const auto label = required.text(members["label"]);
  const auto shortLabel = required.text(members["short_label"]);
  const auto meta = required.meta(members["meta"], "meta details");
  const auto items = required.objects(members["items"]);
  if (required.failed()) return required.failure();

  Playlist playlist{
      .id = std::string(id),
      .label = std::string(label),
      .shortLabel = std::string(shortLabel),
      .meta = meta,
      .items = detail::parsedItems<detail::VideoReader>(*items, std::optional(std::string(id)))};
  if (include && std::ranges::find(playlist.items, *include) == playlist.items.end()) {
    printToConsole("Prepending video to playlist");
    playlist.items.insert(playlist.items.begin(), *include);
  }
  return playlist;
}

}  // namespace orvo
