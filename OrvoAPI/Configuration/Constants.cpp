#include <OrvoAPI/Configuration/Constants.h>
#include <OrvoAPI/Model/RequiredMembersInternal.h>

namespace orvo {

Result<Constants> ConstantsParser::parse(const JSONObject& json) {
  static constexpr detail::TextIndex kKeys(
      {"hls_base_url", "linear_stream_id", "up_next_hint_time", "player_controls_timeout",
       "discovery_reset_timeout", "relaunch_resume_timeout", "countdown_visibility_timeout",
       "recently_watched", "started_minimum_percent", "started_minimum_time",
       "watched_minimum_percent", "watched_minimum_time_left", "share_string_template",
       "search_top_results_limit", "playback_interruption_delay"});
  const detail::JSONMembers<kKeys> members(json);
  detail::RequiredMembers required("Constants");
  return required.result(Constants{
      .hlsBaseURL = required.url(members["hls_base_url"]),
      .linearStreamID = required.string(members["linear_stream_id"]),
      .upNextHintTimeout = required.seconds(members["up_next_hint_time"]),
      .playerControlsTimeout = required.seconds(members["player_controls_timeout"]),
      .discoveryResetTimeout = required.seconds(members["discovery_reset_timeout"]),
      .relaunchResumeTimeout = required.seconds(members["relaunch_resume_timeout"]),
      .countdownVisibilityTimeout = required.seconds(members["countdown_visibility_timeout"]),
      .recentlyWatched = required.boolean(members["recently_watched"]),
      .startedMinimumPercent = required.number(members["started_minimum_percent"]),
      .startedMinimumTime = required.seconds(members["started_minimum_time"]),
      .watchedMinimumPercent = required.number(members["watched_minimum_percent"]),
      .watchedMinimumTime = required.seconds(members["watched_minimum_time_left"]),
      .shareStringTemplate = required.string(members["share_string_template"]),
      .searchTopResultsLimit = required.integer(members["search_top_results_limit"]),
      .playbackInterruptDelay = required.seconds(members["playback_interruption_delay"]),
  });
}

}  // namespace orvo
