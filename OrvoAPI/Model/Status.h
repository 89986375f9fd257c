#pragma once

#include <OrvoAPI/Base/Date.h>
#include <OrvoAPI/Base/RawValue.h>
#include <OrvoAPI/Parsing/JSONValue.h>
#include <OrvoAPI/Storage/Cacheable.h>

#include <optional>
#include <string>

namespace orvo {

/// Where an item stands in its life cycle.
enum class StatusCode { post, unconfirmed, pre, trim, delayed, canceled, live, unknown };

template <>
inline constexpr EnumCase enumCases<StatusCode>[] = {
    {"post"}, {"unconfirmed"}, {"pre"}, {"trim"}, {"delayed"}, {"canceled"}, {"live"}, {"unknown"}};

/// The scheduling state of a video or page. The default is what stands in for a state that is
/// missing or cannot be read.
struct Status {
  StatusCode code = StatusCode::unknown;
  /// The state for display, as sent.
  std::string label = "TBD";
  /// How long the item may be cached, in seconds.
  double ttl = DefaultCacheableTTL;
  /// Additional text for display.
  std::optional<std::string> message = {};
  /// Start and end of the item's availability or broadcast.
  std::optional<Date> startTime = {};
  std::optional<Date> endTime = {};

  /// How long the item that carries this state may be cached, in seconds: an unknown state may end
  /// at any time, so what the server says of it is ignored.
  [[nodiscard]] double contentTTL() const {
    return code == StatusCode::unknown ? DefaultCacheableTTL : ttl;
  }

  /// Equal by code and times.
  friend bool operator==(const Status& lhs, const Status& rhs) {
    return lhs.code == rhs.code && lhs.startTime == rhs.startTime && lhs.endTime == rhs.endTime;
  }
};

/// Reads a status. Stateless; may be called from any thread.
struct StatusParser {
  /// Never fails: what lacks a known "code" or a "label" gives `Status{}`.
  [[nodiscard]] static Status parse(const JSONObject& json);
};

}  // namespace orvo
