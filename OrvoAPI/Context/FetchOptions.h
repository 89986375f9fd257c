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

struct PageFetchOptions {
  /// Asks the server in any case, and leaves the cache as it is.
  bool noCache = false;
};

struct VideoFetchOptions {
  /// The playlist or collection that the video is to name as its own.
  std::optional<std::string> playlistID = std::nullopt;
  /// Asks the server in any case, and leaves the cache as it is.
  bool noCache = false;
};

struct ListFetchOptions {
  /// Which part of the list; without it, the server's first part.
  std::optional<ListPartRequest> page = std::nullopt;
};

}  // namespace orvo
