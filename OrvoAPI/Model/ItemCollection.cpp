#include <OrvoAPI/Model/ContentFieldsInternal.h>
#include <OrvoAPI/Model/ContentReadersInternal.h>
#include <OrvoAPI/Model/ItemCollection.h>

namespace orvo {

Result<ItemCollection> ItemCollectionParser::parse(const JSONObject& json) {
  static constexpr detail::TextIndex kKeys(
      {"id", "type", "label", "short_label", "meta", "items", "item_type"});
  const detail::JSONMembers<kKeys> members(json);
  detail::RequiredMembers required("ItemCollection");
  const auto id = required.text(members["id"]);
  const auto kind = required.rawValue<ItemCollection::Kind>(members["type"]);
  const auto label = required.text(members["label"]);
  const auto shortLabel = required.text(members["short_label"]);
  // The key reported for missing numbers names an older form of the document; logs rely on it.
  const auto meta = required.meta(members["meta"], "products/meta details");
  const auto items = required.objects(members["items"]);
  if (required.failed()) return required.failure();

  return ItemCollection{
      .id = std::string(id),
      .label = std::string(label),
      .shortLabel = std::string(shortLabel),
      .kind = kind,
      .contentsKind = detail::rawValueOr(members["item_type"], ItemCollection::ContentsKind::mixed),
      .meta = meta,
      .items =
          detail::parsedItems<detail::ContentItemReader>(*items, std::optional(std::string(id)))};
}

}  // namespace orvo
