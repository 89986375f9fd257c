#include <OrvoAPI/Model/ContentFieldsInternal.h>

namespace orvo::detail {

std::optional<std::string> optionalString(const JSONObject& json, std::string_view key) {
  return std::optional<std::string>(json.string(key));
}

std::optional<URL> optionalURL(const JSONObject& json, std::string_view key) {
  const auto text = json.string(key);
  return text ? URL::parse(*text) : std::nullopt;
}

std::vector<CollectionReference> collections(const JSONObject& json) {
  std::vector<CollectionReference> references;
  const auto entries = json.objects("collections");
  if (!entries) return references;
  reserve(references, entries->size());
  for (const JSONObject& entry : *entries) {
    const auto id = entry.string("id");
    const auto label = entry.string("label");
    if (id && label) references.push_back({.id = std::string(*id), .label = std::string(*label)});
  }
  return references;
}

std::optional<LineupReference> lineupMeta(const JSONObject& json) {
  const auto lineup = json.object("lineup");
  if (!lineup) return std::nullopt;
  const auto kindText = lineup->string("display_type");
  const auto displayKind = kindText ? fromRawValue<LineupDisplayKind>(*kindText) : std::nullopt;
  auto url = displayKind ? optionalURL(*lineup, "url") : std::nullopt;
  if (!url) return std::nullopt;
  return LineupReference{.url = *std::move(url), .displayKind = *displayKind};
}

Status status(const JSONObject& json) {
  const auto object = json.object("status");
  return object ? StatusParser::parse(*object) : Status{};
}

std::vector<AppAction> appActions(const std::optional<JSONObjects>& links) {
  std::vector<AppAction> actions;
  if (!links) return actions;
  reserve(actions, links->size());
  for (const JSONObject& link : *links) {
    if (link.string("type") != "button") continue;
    auto parsed = AppActionParser::parse(link);
    if (AppAction* action = parsed.value()) actions.push_back(std::move(*action));
  }
  return actions;
}

}  // namespace orvo::detail
