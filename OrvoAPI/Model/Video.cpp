#include <OrvoAPI/Model/ContentFieldsInternal.h>
#include <OrvoAPI/Model/ContentReadersInternal.h>
#include <OrvoAPI/Model/Video.h>

namespace orvo {

namespace detail {

VideoReader::VideoReader(const JSONObject& json)
    : RequiredMembers("Video"),
      members_(json),
      id_(text(members_["id"])),
      title_(text(members_["title"])),
      shortDescription_(text(members_["short_description"])) {}

Video VideoReader::record(const std::optional<std::string>& playlistID) const {
  using PlaybackStatus = Video::PlaybackStatus;
  const auto milliseconds = members_["duration"].number();
  ContentResources resources(members_["resources"], id_);
  return {.id = std::string(id_),
          .title = std::string(title_),
          .subheading = std::string(members_["subheading"].string().value_or("")),
          .shortDescription = std::string(shortDescription_),
          .kind = rawValueOr(members_["content_type"], Video::ContentKind::generic),
          .duration = milliseconds ? std::optional(*milliseconds / 1000.0) : std::nullopt,
          .playbackStatus = members_["playable"].boolean() == true ? PlaybackStatus::available
                                                                   : PlaybackStatus::unavailable,
          .collections = collections(members_["collections"]),
          .lineupMeta = lineupMeta(members_["lineup"]),
          .imageResources = std::move(resources.images),
          .videoPreviews = std::move(resources.previews),
          .status = status(members_["status"]),
          .appActions = ContentLinks(members_["links"]).actions,
          .playlistID = playlistID,
          .deepLinkPlaylistID = members_["deeplink_playlist"].text(),
          .nextPlaylistID = members_["next_playlist"].text(),
          .shareURL = optionalURL(members_["share_url"])};
}

}  // namespace detail

Result<Video> VideoParser::parse(const JSONObject& json,
                                 const std::optional<std::string>& playlistID) {
  return detail::parsed<detail::VideoReader>(json, playlistID);
}

}  // namespace orvo
