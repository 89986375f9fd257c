#include <OrvoAPI/Configuration/Links.h>
#include <OrvoAPI/Model/RequiredMembersInternal.h>

namespace orvo {

Result<Links> LinksParser::parse(const JSONObject& json) {
  RequiredMembers required(json, "Links");
  return required.result(Links{.imprint = required.url("imprint"),
                               .about = required.url("about"),
                               .privacy = required.url("privacy"),
                               .terms = required.url("terms"),
                               .contact = required.url("contact"),
                               .feedback = required.url("feedback")});
}

}  // namespace orvo
