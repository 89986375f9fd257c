#include <OrvoAPI/Configuration/DisplayAd.h>
#include <OrvoAPI/Model/RequiredMembersInternal.h>

namespace orvo {

Result<DisplayAd> DisplayAdParser::parse(const JSONObject& json) {
  static constexpr detail::TextIndex kKeys({"url", "nw", "prof"});
  const detail::JSONMembers<kKeys> members(json);
  detail::RequiredMembers required("DisplayAd");
  return required.result(DisplayAd{.server = required.url(members["url"]),
                                   .network = required.string(members["nw"]),
                                   .profile = required.string(members["prof"])});
}

}  // namespace orvo
