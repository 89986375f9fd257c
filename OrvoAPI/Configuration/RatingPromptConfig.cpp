#include <OrvoAPI/Configuration/RatingPromptConfig.h>
#include <OrvoAPI/Model/RequiredMembersInternal.h>

namespace orvo {

Result<RatingPromptConfig> RatingPromptConfigParser::parse(const JSONObject& json) {
  static constexpr detail::TextIndex kKeys(
      {"session_interval", "long_session", "enable", "repeat_delay"});
  const detail::JSONMembers<kKeys> members(json);
  detail::RequiredMembers required("RatingPromptConfig");
  return required.result(RatingPromptConfig{
      .sessionCountThreshold = required.integer(members["session_interval"]),
      .activeSessionTimeThreshold = required.number(members["long_session"]),
      .enabled = required.boolean(members["enable"]),
      // The misspelt key is what the error has always said; logs are searched for it.
      .repeatDelay = required.integer(members["repeat_delay"], "repear_delay")});
}

}  // namespace orvo
