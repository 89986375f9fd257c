#include <OrvoAPI/Model/AppAction.h>
#include <OrvoAPI/Model/RequiredMembersInternal.h>

namespace orvo {

Result<AppAction> AppActionParser::parse(const JSONObject& json) {
  RequiredMembers required(json, "AppAction");
  const auto id = required.text("id");
  const auto label = required.text("label");
  // Read as "action" but reported as "kind": the error has always named the field.
  const auto kind = required.rawValue<AppAction::Kind>("action", "kind");
  if (required.failed()) return required.failure();
  return AppAction{.id = std::string(id),
                   .label = std::string(label),
                   .kind = kind,
                   .icon = std::string(json.string("icon").value_or("space"))};
}

}  // namespace orvo
