#pragma once

#include <OrvoAPI/Futures/Result.h>
#include <OrvoAPI/HTTP/URL.h>
#include <OrvoAPI/Parsing/JSONValue.h>

#include <cstdint>
#include <string>

namespace orvo {

/// The client's timings and thresholds. Durations are in seconds.
struct Constants {
  /// The base URL of streams and their ad metadata.
  URL hlsBaseURL;
  std::string linearStreamID;
  double upNextHintTimeout = 0;
  double playerControlsTimeout = 0;
  double discoveryResetTimeout = 0;
  double relaunchResumeTimeout = 0;
  double countdownVisibilityTimeout = 0;
  bool recentlyWatched = false;
  double startedMinimumPercent = 0;
  double startedMinimumTime = 0;
  double watchedMinimumPercent = 0;
  double watchedMinimumTime = 0;
  std::string shareStringTemplate;
  std::int64_t searchTopResultsLimit = 0;
  double playbackInterruptDelay = 0;
  /// Fixed by agreement with the advertisers; not part of the document.
  double adCornerBugDelay = 15.0;
};

/// Reads the constants. Stateless; may be called from any thread.
struct ConstantsParser {
  /// `json` is the whole configuration document: the constants lie at its top level.
  [[nodiscard]] static Result<Constants> parse(const JSONObject& json);
};

}  // namespace orvo
