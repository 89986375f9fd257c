#include <OrvoAPI/Model/ContentFieldsInternal.h>
#include <OrvoAPI/Model/RequiredMembersInternal.h>
#include <OrvoAPI/Model/SearchCollection.h>

namespace orvo {

SearchCollection SearchCollection::create(std::string query, ResultsKind kind,
                                          std::vector<ContentItem> items) {
  SearchCollection collection{.query = std::move(query)};
  collection.label = rawValue(kind);
  collection.shortLabel = collection.label;
  collection.resultsKind = kind;
  collection.items = std::move(items);
  return collection;
}

SearchCollection SearchCollection::empty(std::string query, ResultsKind kind) {
  return create(std::move(query), kind, {});
}

Result<SearchCollection> SearchCollectionParser::parse(const JSONObject& json,
                                                       std::string_view query) {
  RequiredMembers required(json, "SearchCollection");
  const auto kind = required.rawValue<ItemCollection::Kind>("type");
  const auto resultsKind = required.rawValue<SearchCollection::ResultsKind>("collection_type");
  const auto label = required.text("label");
  const auto shortLabel = required.text("short_label");
  const auto meta = required.meta("meta");
  const auto items = required.objects("items");
  if (required.failed()) return required.failure();

  SearchCollection collection{.query = std::string(query)};
  collection.label = label;
  collection.shortLabel = shortLabel;
  collection.kind = kind;
  collection.contentsKind =
      detail::rawValueOr(json, "contains", SearchCollection::ContentsKind::mixed);
  collection.resultsKind = resultsKind;
  collection.meta = meta;
  // Without a collection's identifier: what was found by search is in no playlist.
  collection.items = detail::parsedItems<ContentItemParser, ContentItem>(*items);
  return collection;
}

Result<std::vector<SearchCollection>> SearchResultsParser::parse(const JSONObject& json,
                                                                 std::string_view query) {
  RequiredMembers required(json, "SearchCollection");
  const auto collections = required.objects("collections");
  if (required.failed()) return required.failure();
  return detail::parsedItems<SearchCollectionParser, SearchCollection>(*collections, query);
}

}  // namespace orvo
