#include <OrvoAPI/Configuration/Links.h>
#include <OrvoAPI/Model/RequiredMembersInternal.h>

namespace orvo {

Result<Links> LinksParser::parse(const JSONObject& json) {
  static constexpr detail::TextIndex kKeys(
      {"imprint", "about", "privacy", "terms", "contact", "feedback"});
  const detail::JSONMembers<kKeys> members(json);
  detail::RequiredMembers required("Links");
  return required.result(Links{.imprint = required.url(members["imprint"]),
                               .about = required.url(members["about"]),
                               .privacy = required.url(members["privacy"]),
                               .terms = required.url(members["terms"]),
                               .contact = required.url(members["contact"]),
                               .feedback = required.url(members["feedback"])});
}

}  // namespace orvo
