#pragma once

#include <OrvoAPI/Futures/Result.h>
#include <OrvoAPI/HTTP/URL.h>
#include <OrvoAPI/Parsing/JSONValue.h>

#include <string>
#include <vector>

namespace orvo {

/// A stretch of a stream's timeline.
struct VideoSegment {
  /// Whether it is an advertisement.
  bool ad = false;
  /// Seconds from the start of the stream.
  double start = 0;
  /// In seconds.
  double duration = 0;

  /// Whether a playback position (in seconds) lies inside, both ends excluded.
  [[nodiscard]] bool contains(double time) const { return start < time && time < start + duration; }
};

/// An address to call when playback reaches a position.
struct VideoBeacon {
  /// The event's name, as sent.
  std::string name;
  /// The playback position in seconds.
  double time = 0;
  /// Absolute.
  URL url;
};

/// The advertisements that a server has put into a stream. Both lists are in document order.
struct VideoAdMetadata {
  std::vector<VideoBeacon> beacons = {};
  std::vector<VideoSegment> segments = {};
};

/// Reads a segment. Stateless; may be called from any thread.
struct VideoSegmentParser {
  [[nodiscard]] static Result<VideoSegment> parse(const JSONObject& json);
};

/// Reads a beacon. Stateless; may be called from any thread.
struct VideoBeaconParser {
  [[nodiscard]] static Result<VideoBeacon> parse(const JSONObject& json);
};

/// Reads beacons and segments. Stateless; may be called from any thread.
struct VideoAdMetadataParser {
  /// Never fails: beacons and segments that cannot be read are left out.
  [[nodiscard]] static VideoAdMetadata parse(const JSONObject& json);
};

}  // namespace orvo
