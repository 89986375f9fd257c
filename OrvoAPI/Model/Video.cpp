#include <OrvoAPI/Model/ContentFieldsInternal.h>
#include <OrvoAPI/Model/RequiredMembersInternal.h>
#include <OrvoAPI/Model/Video.h>

namespace orvo {

Result<Video> VideoParser::parse(const JSONObject& json,
                                 const std::optional<std::string>& playlistID) {
  RequiredMembers required(json, "Video");
  const auto id = required.text("id");
  const auto title = required.text("title");
  const auto shortDescription = required.text("short_description");
  if (required.failed()) return required.failure();

  Video video{.id = std::string(id), .title = std::string(title)};
  video.subheading = json.string("subheading").value_or("");
  video.shortDescription = shortDescription;
  video.kind = detail::rawValueOr(json, "content_type", Video::ContentKind::generic);
  if (const auto milliseconds = json.number("duration")) video.duration = *milliseconds / 1000.0;
  if (json.boolean("playable") == true) video.playbackStatus = Video::PlaybackStatus::available;
  video.deepLinkPlaylistID = json.string("deeplink_playlist");
  video.nextPlaylistID = json.string("next_playlist");
  video.collections = detail::collections(json);
  video.lineupMeta = detail::lineupMeta(json);
  video.shareURL = detail::optionalURL(json, "share_url");
  if (const auto resources = json.strings("resources")) {
    video.imageResources = ImageResourceParser::parse(*resources, id);
    video.videoPreviews = VideoPreviewsParser::parse(*resources, id);
  }
  video.status = detail::status(json);
  video.appActions = detail::appActions(json.objects("links"));
  video.playlistID = playlistID;
  return video;
}

}  // namespace orvo
