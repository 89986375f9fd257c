#pragma once

#include <OrvoAPI/Base/RawValue.h>
#include <OrvoAPI/Futures/Result.h>
#include <OrvoAPI/HTTP/URL.h>
#include <OrvoAPI/Model/AppAction.h>
#include <OrvoAPI/Model/CollectionReference.h>
#include <OrvoAPI/Model/ImageResource.h>
#include <OrvoAPI/Model/LineupReference.h>
#include <OrvoAPI/Model/Status.h>
#include <OrvoAPI/Model/VideoPreview.h>
#include <OrvoAPI/Parsing/JSONValue.h>

#include <optional>
#include <string>
#include <vector>

namespace orvo {

/// What can be played: an episode, a clip, a film, a live programme.
struct Video {
  /// What kind of video it is.
  enum class ContentKind { episode, clip, film, liveProgram, generic };
  /// Whether the video can be played now.
  enum class PlaybackStatus { available, unavailable };

  std::string id;
  std::string title;
  /// Empty when the server sends none.
  std::string subheading = {};
  std::string shortDescription = {};
  ContentKind kind = ContentKind::generic;
  /// The running time in seconds.
  std::optional<double> duration = {};
  /// Whether it can be played now.
  PlaybackStatus playbackStatus = PlaybackStatus::unavailable;
  /// The collections that it belongs to, in server order.
  std::vector<CollectionReference> collections = {};
  std::optional<LineupReference> lineupMeta = {};
  ImageResources imageResources = {};
  VideoPreviews videoPreviews = {};
  Status status = {};
  /// In server order.
  std::vector<AppAction> appActions = {};
  /// The collection or playlist through which it was obtained; not part of its document.
  std::optional<std::string> playlistID = {};
  /// The playlist to open when a deep link leads here.
  std::optional<std::string> deepLinkPlaylistID = {};
  /// The playlist that continues after it.
  std::optional<std::string> nextPlaylistID = {};
  /// A public address for sharing.
  std::optional<URL> shareURL = {};

  [[nodiscard]] double ttl() const { return status.contentTTL(); }

  /// Compares identifier, texts and duration; what changes while it is on (status, images) is
  /// ignored.
  friend bool operator==(const Video& lhs, const Video& rhs) {
    return lhs.id == rhs.id && lhs.title == rhs.title && lhs.subheading == rhs.subheading &&
           lhs.shortDescription == rhs.shortDescription && lhs.duration == rhs.duration;
  }
};

template <>
inline constexpr EnumCase enumCases<Video::ContentKind>[] = {
    {"episode"}, {"clip"}, {"film"}, {"liveProgram", "live_program"}, {"generic"}};

template <>
inline constexpr EnumCase enumCases<Video::PlaybackStatus>[] = {{"available", {}},
                                                                {"unavailable", {}}};

/// Reads a video. Stateless; may be called from any thread.
struct VideoParser {
  /// `playlistID`: the collection or playlist in which the video is listed.
  [[nodiscard]] static Result<Video> parse(const JSONObject& json,
                                           const std::optional<std::string>& playlistID = {});
};

}  // namespace orvo
