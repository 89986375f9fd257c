#pragma once

#include <OrvoAPI/Base/RawValue.h>
#include <OrvoAPI/Futures/Result.h>
#include <OrvoAPI/Model/ContentItem.h>
#include <OrvoAPI/Model/PagingMeta.h>
#include <OrvoAPI/Parsing/JSONValue.h>
#include <OrvoAPI/Storage/Cacheable.h>

#include <string>
#include <vector>

namespace orvo {

/// A shelf of videos and pages shown on a page; one part of it.
struct ItemCollection {
  /// How the collection is presented.
  enum class Kind { generic, featured, schedule };
  /// What sort of items it holds.
  enum class ContentsKind { videos, pages, mixed };

  std::string id;
  std::string label;
  std::string shortLabel = {};
  Kind kind = Kind::generic;
  ContentsKind contentsKind = ContentsKind::mixed;
  PagingMeta meta = {};
  /// In server order.
  std::vector<ContentItem> items = {};

  /// Fixed, whatever the items' states say.
  [[nodiscard]] double ttl() const { return DefaultCacheableTTL; }
};

template <>
inline constexpr EnumCase enumCases<ItemCollection::Kind>[] = {
    {"generic"}, {"featured"}, {"schedule"}};

template <>
inline constexpr EnumCase enumCases<ItemCollection::ContentsKind>[] = {
    {"videos"}, {"pages"}, {"mixed"}};

/// Reads a part of a collection. Stateless; may be called from any thread.
struct ItemCollectionParser {
  /// Items that cannot be read are left out.
  [[nodiscard]] static Result<ItemCollection> parse(const JSONObject& json);
};

}  // namespace orvo
