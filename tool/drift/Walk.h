#pragma once

#include <tool/Tool.h>
#include <tool/drift/Shape.h>

#include <chrono>
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

/// What a walk through a service has met.
struct WalkResult {
  Shapes shapes{};
  std::vector<WalkFault> faults{};
  std::int64_t requests = 0;
  /// Whether it ended early, since too many requests were not answered in time.
  bool isGivenUp = false;
};

/// How far a walk goes.
struct WalkLimits {
  /// Requests at most.
  std::int64_t requests = 0;
  /// How long one may take.
  std::chrono::seconds patience{};
};

/// Fetches, two at a time, the configuration, views, and what they lead to: collections, pages,
/// videos, playlists, lineups; and the guide, a search and its suggestions; until there is no more,
/// or the limits are reached. `then` is what earlier walks have met, if the walk is to
/// be compared with them: the same documents come first, and others only while none has failed, so
/// that they do not take its place. Without it, finds out what the library reads of the documents,
/// which takes a while. Fails when there is no session. To be called before the tool's context has
/// been made.
[[nodiscard]] Result<WalkResult> walkService(Tool& tool, const WalkLimits& limits,
                                             const Shapes* then);

}  // namespace orvo::tool
