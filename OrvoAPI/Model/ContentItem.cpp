#include <OrvoAPI/Model/ContentItem.h>
#include <OrvoAPI/Model/RequiredMembersInternal.h>

namespace orvo {
namespace {

template <class T>
Result<ContentItem> item(Result<T> content) {
  if (T* value = content.value()) return ContentItem(std::move(*value));
  return Failure{*content.error()};
}

}  // namespace

Result<ContentItem> ContentItemParser::parse(const JSONObject& json,
                                             const std::optional<std::string>& collectionID) {
  // Reported for ItemCollection, where items are listed: the error has always read so.
  RequiredMembers required(json, "ItemCollection");
  const auto kind = required.rawValue<ContentItem::Kind>("type");
  if (required.failed()) return required.failure();
  return kind == ContentItem::Kind::video ? item(VideoParser::parse(json, collectionID))
                                          : item(PageParser::parse(json));
}

}  // namespace orvo
