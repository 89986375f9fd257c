#include <OrvoAPI/Configuration/Requirements.h>
#include <OrvoAPI/Model/RequiredMembersInternal.h>

namespace orvo {

Result<Requirements::AppVersion> AppVersionParser::parse(const JSONObject& json) {
  RequiredMembers required(json, "Requirements.AppVersion");
  return required.result(Requirements::AppVersion{.minBuild = required.string("min_build"),
                                                  .message = required.string("message")});
}

Result<Requirements::OSVersion> OSVersionParser::parse(const JSONObject& json) {
  RequiredMembers required(json, "Requirements.OSVersion");
  return required.result(Requirements::OSVersion{.minOsVersion = required.string("min_os_version"),
                                                 .message = required.string("message")});
}

Result<Requirements::KillSwitch> KillSwitchParser::parse(const JSONObject& json) {
  RequiredMembers required(json, "Requirements.KillSwitch");
  return required.result(Requirements::KillSwitch{.kill = required.boolean("kill"),
                                                  .message = required.string("message")});
}

}  // namespace orvo
