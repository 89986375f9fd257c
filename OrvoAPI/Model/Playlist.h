#pragma once

#include <OrvoAPI/Futures/Result.h>
#include <OrvoAPI/Model/ItemCollection.h>
#include <OrvoAPI/Model/PagingMeta.h>
#include <OrvoAPI/Model/Video.h>
#include <OrvoAPI/Parsing/JSONValue.h>
#include <OrvoAPI/Storage/Cacheable.h>

#include <string>
#include <vector>

namespace orvo {

/// Videos that play one after another; one part of them.
struct Playlist {
  std::string id;
  std::string label;
  std::string shortLabel = {};
  PagingMeta meta = {};
  /// A playlist's document names no kind.
  ItemCollection::Kind kind = ItemCollection::Kind::generic;
  /// In play order.
  std::vector<Video> items = {};

  /// Fixed, whatever the videos' states say.
  [[nodiscard]] double ttl() const { return DefaultCacheableTTL; }
};

/// Reads a part of a playlist. Stateless; may be called from any thread.
struct PlaylistParser {
  /// Videos that cannot be read are left out. `include` (may be null) is the video that the user
  /// started from: it is put in front, with a line on the console, unless an equal one is listed;
  /// `meta` stays as sent.
  [[nodiscard]] static Result<Playlist> parse(const JSONObject& json,
                                              const Video* include = nullptr);
};

}  // namespace orvo
