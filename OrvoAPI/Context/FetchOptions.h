#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace orvo {

/// Which part of a list to fetch.
struct ListPartRequest {
  /// The position of the first item.
  std::int64_t offset = 0;
  /// How many items at most.
  std::int64_t limit = 0;

  friend bool operator==(const ListPartRequest&, const ListPartRequest&) = default;
};

/// How a page is fetched. A value.
struct PageFetchOptions {
  /// Bypasses the cache: asks the server, and does not store the answer.
  bool noCache = false;
};

/// How a video is fetched. A value.
struct VideoFetchOptions {
  /// Becomes the video's `playlistID`: the playlist or collection that it was found in.
  std::optional<std::string> playlistID = std::nullopt;
  /// Bypasses the cache: asks the server, and does not store the answer.
  bool noCache = false;
};

/// How a list is fetched. A value.
struct ListFetchOptions {
  /// Which part of the list; without it, the server's first part.
  std::optional<ListPartRequest> page = std::nullopt;
};

}  // namespace orvo
