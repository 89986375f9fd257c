#include <OrvoAPI/Configuration/DisplayAd.h>
#include <OrvoAPI/Model/RequiredMembersInternal.h>

namespace orvo {

Result<DisplayAd> DisplayAdParser::parse(const JSONObject& json) {
  RequiredMembers required(json, "DisplayAd");
  return required.result(DisplayAd{.server = required.url("url"),
                                   .network = required.string("nw"),
                                   .profile = required.string("prof")});
}

}  // namespace orvo
