#include <OrvoAPI/Model/ContentFieldsInternal.h>
#include <OrvoAPI/Model/ItemCollection.h>
#include <OrvoAPI/Model/RequiredMembersInternal.h>

namespace orvo {

Result<ItemCollection> ItemCollectionParser::parse(const JSONObject& json) {
  RequiredMembers required(json, "ItemCollection");
  const auto id = required.text("id");
  const auto kind = required.rawValue<ItemCollection::Kind>("type");
  const auto label = required.text("label");
  const auto shortLabel = required.text("short_label");
  // The key reported for missing numbers names an older form of the document; logs rely on it.
  const auto meta = required.meta("products/meta details");
  const auto items = required.objects("items");
  if (required.failed()) return required.failure();

  ItemCollection collection{.id = std::string(id), .label = std::string(label)};
  collection.shortLabel = shortLabel;
  collection.kind = kind;
  collection.contentsKind =
      detail::rawValueOr(json, "item_type", ItemCollection::ContentsKind::mixed);
  collection.meta = meta;
  collection.items =
      detail::parsedItems<ContentItemParser, ContentItem>(*items, std::optional(collection.id));
  return collection;
}

}  // namespace orvo
