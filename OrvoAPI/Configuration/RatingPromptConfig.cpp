#include <OrvoAPI/Configuration/RatingPromptConfig.h>
#include <OrvoAPI/Model/RequiredMembersInternal.h>

namespace orvo {

Result<RatingPromptConfig> RatingPromptConfigParser::parse(const JSONObject& json) {
  RequiredMembers required(json, "RatingPromptConfig");
  return required.result(RatingPromptConfig{
      .sessionCountThreshold = required.integer("session_interval"),
      .activeSessionTimeThreshold = required.number("long_session"),
      .enabled = required.boolean("enable"),
      // The misspelt key is what the error has always said; logs are searched for it.
      .repeatDelay = required.integer("repeat_delay", "repear_delay")});
}

}  // namespace orvo
