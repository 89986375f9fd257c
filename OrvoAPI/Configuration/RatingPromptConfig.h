#pragma once

#include <OrvoAPI/Futures/Result.h>
#include <OrvoAPI/Parsing/JSONValue.h>

#include <cstdint>

namespace orvo {

/// When the app may ask to be rated.
struct RatingPromptConfig {
  /// How many sessions there must have been.
  std::int64_t sessionCountThreshold = 3;
  /// How long a session must have lasted, in seconds.
  double activeSessionTimeThreshold = 3600.0;
  bool enabled = false;
  /// How long to wait before asking again; the app knows the unit.
  std::int64_t repeatDelay = 25;

  /// What stands in for a section that is missing or cannot be read.
  [[nodiscard]] static RatingPromptConfig defaultConfig() { return {}; }
};

/// Reads the section "user_rating_prompt". Stateless; may be called from any thread.
struct RatingPromptConfigParser {
  [[nodiscard]] static Result<RatingPromptConfig> parse(const JSONObject& json);
};

}  // namespace orvo
