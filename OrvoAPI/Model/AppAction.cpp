#include <OrvoAPI/Model/AppAction.h>
#include <OrvoAPI/Model/ContentReadersInternal.h>

namespace orvo {

namespace detail {

// The kind is read as "action" but reported as "kind": the error has always named the field.
AppActionReader::AppActionReader(const LinkMembers& link)
    : RequiredMembers("AppAction"),
      id_(text(link["id"])),
      label_(text(link["label"])),
      kind_(rawValue<AppAction::Kind>(link["action"], "kind")),
      icon_(failed() ? "" : link["icon"].string().value_or("space")) {}

AppAction AppActionReader::record() const {
  return {.id = std::string(id_),
          .label = std::string(label_),
          .kind = kind_,
          .icon = std::string(icon_)};
}

}  // namespace detail

Result<AppAction> AppActionParser::parse(const JSONObject& json) {
  return detail::parsed<detail::AppActionReader>(json);
}

}  // namespace orvo
