#include <OrvoAPI/Configuration/Constants.h>
#include <OrvoAPI/Model/RequiredMembersInternal.h>

namespace orvo {

Result<Constants> ConstantsParser::parse(const JSONObject& json) {
  RequiredMembers required(json, "Constants");
  return required.result(Constants{
      .hlsBaseURL = required.url("hls_base_url"),
      .linearStreamID = required.string("linear_stream_id"),
      .upNextHintTimeout = required.seconds("up_next_hint_time"),
      .playerControlsTimeout = required.seconds("player_controls_timeout"),
      .discoveryResetTimeout = required.seconds("discovery_reset_timeout"),
      .relaunchResumeTimeout = required.seconds("relaunch_resume_timeout"),
      .countdownVisibilityTimeout = required.seconds("countdown_visibility_timeout"),
      .recentlyWatched = required.boolean("recently_watched"),
      .startedMinimumPercent = required.number("started_minimum_percent"),
      .startedMinimumTime = required.seconds("started_minimum_time"),
      .watchedMinimumPercent = required.number("watched_minimum_percent"),
      .watchedMinimumTime = required.seconds("watched_minimum_time_left"),
      .shareStringTemplate = required.string("share_string_template"),
      .searchTopResultsLimit = required.integer("search_top_results_limit"),
      .playbackInterruptDelay = required.seconds("playback_interruption_delay"),
  });
}

}  // namespace orvo
