#pragma once

#include <tool/Tool.h>
#include <tool/drift/Shape.h>

#include <cstdint>
#include <string>
#include <vector>

namespace orvo::tool {

/// Something that a walk could not fetch.
struct WalkFault {
  std::string text;
  /// Whether there was an answer that cannot be read.
  bool isUnreadable = false;
};

/// Whether to find out what the library reads of the documents, which takes a while.
enum class Looking { briefly, closely };

/// What a walk through a service has met.
struct WalkResult {
  Shapes shapes{};
  std::vector<WalkFault> faults{};
  std::int64_t requests = 0;
};

/// Fetches, two at a time, the configuration, views, and what they lead to: collections, pages,
/// videos, playlists, lineups; and the guide, a search and its suggestions; until there is no more,
/// or that many requests have been made. Fails when there is no session. To be called before the
/// tool's context has been made.
[[nodiscard]] Result<WalkResult> walkService(Tool& tool, std::int64_t mostRequests,
                                             Looking looking);

}  // namespace orvo::tool
