#include <OrvoAPI/Model/ContentFieldsInternal.h>
#include <OrvoAPI/Model/ContentReadersInternal.h>
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

namespace {

constexpr detail::TextIndex kSearchKeys({"type", "collection_type", "label", "short_label", "meta",
                                         "items", "contains"});

class SearchCollectionReader : public detail::RequiredMembers {
 public:
  explicit SearchCollectionReader(const JSONObject& json)
      : detail::RequiredMembers("SearchCollection"),
        members_(json),
        kind_(rawValue<ItemCollection::Kind>(members_["type"])),
        resultsKind_(rawValue<SearchCollection::ResultsKind>(members_["collection_type"])),
        label_(text(members_["label"])),
        shortLabel_(text(members_["short_label"])),
        meta_(meta(members_["meta"], "meta")),
        items_(objects(members_["items"])) {}

  [[nodiscard]] SearchCollection record(std::string_view query) const {
    return {.query = std::string(query),
            .label = std::string(label_),
            .shortLabel = std::string(shortLabel_),
            .kind = kind_,
            .contentsKind =
                detail::rawValueOr(members_["contains"], SearchCollection::ContentsKind::mixed),
            .resultsKind = resultsKind_,
            .meta = meta_,
            // Without a collection's identifier: what was found by search is in no playlist.
            .items = detail::parsedItems<detail::ContentItemReader>(*items_, std::nullopt)};
  }

 private:
  detail::JSONMembers<kSearchKeys> members_;
  ItemCollection::Kind kind_;
  SearchCollection::ResultsKind resultsKind_;
  std::string_view label_;
  std::string_view shortLabel_;
  PagingMeta meta_;
  std::optional<JSONObjects> items_;
};

}  // namespace

Result<SearchCollection> SearchCollectionParser::parse(const JSONObject& json,
                                                       std::string_view query) {
  return detail::parsed<SearchCollectionReader>(json, query);
}

Result<std::vector<SearchCollection>> SearchResultsParser::parse(const JSONObject& json,
                                                                 std::string_view query) {
  static constexpr detail::TextIndex kResultsKeys({"collections"});
  detail::RequiredMembers required("SearchCollection");
  const auto collections = required.objects(detail::JSONMembers<kResultsKeys>(json)["collections"]);
  if (required.failed()) return required.failure();
  return detail::parsedItems<SearchCollectionReader>(*collections, query);
}

}  // namespace orvo
