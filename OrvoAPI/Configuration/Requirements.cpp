#include <OrvoAPI/Configuration/Requirements.h>
#include <OrvoAPI/Model/RequiredMembersInternal.h>

namespace orvo {

Result<Requirements::AppVersion> AppVersionParser::parse(const JSONObject& json) {
  static constexpr detail::TextIndex kKeys({"min_build", "message"});
  const detail::JSONMembers<kKeys> members(json);
  detail::RequiredMembers required("Requirements.AppVersion");
  return required.result(Requirements::AppVersion{.minBuild = required.string(members["min_build"]),
                                                  .message = required.string(members["message"])});
}

Result<Requirements::OSVersion> OSVersionParser::parse(const JSONObject& json) {
  static constexpr detail::TextIndex kKeys({"min_os_version", "message"});
  const detail::JSONMembers<kKeys> members(json);
  detail::RequiredMembers required("Requirements.OSVersion");
  return required.result(
      Requirements::OSVersion{.minOsVersion = required.string(members["min_os_version"]),
                              .message = required.string(members["message"])});
}

Result<Requirements::KillSwitch> KillSwitchParser::parse(const JSONObject& json) {
  static constexpr detail::TextIndex kKeys({"kill", "message"});
  const detail::JSONMembers<kKeys> members(json);
  detail::RequiredMembers required("Requirements.KillSwitch");
  return required.result(Requirements::KillSwitch{.kill = required.boolean(members["kill"]),
                                                  .message = required.string(members["message"])});
}

}  // namespace orvo
