#pragma once

#include <OrvoAPI/Base/RawValue.h>
#include <OrvoAPI/Futures/Result.h>
#include <OrvoAPI/Model/ContentItem.h>
#include <OrvoAPI/Model/ItemCollection.h>
#include <OrvoAPI/Model/PagingMeta.h>
#include <OrvoAPI/Parsing/JSONValue.h>

#include <string>
#include <string_view>
#include <vector>

namespace orvo {

/// What a search found in one category.
struct SearchCollection {
  /// What sort of items it holds.
  enum class ContentsKind { videos, pages, mixed };
  /// Which category of results it holds.
  enum class ResultsKind { videos, pages, events, channels, films, shows, top };

  /// The text that was searched for; not part of the document.
  std::string query;
  std::string label = {};
  std::string shortLabel = {};
  ItemCollection::Kind kind = ItemCollection::Kind::generic;
  ContentsKind contentsKind = ContentsKind::mixed;
  ResultsKind resultsKind = ResultsKind::videos;
  PagingMeta meta = {};
  /// In server order.
  std::vector<ContentItem> items = {};

  /// A collection made here and not by the server; its labels are the kind's raw value.
  [[nodiscard]] static SearchCollection create(std::string query, ResultsKind kind,
                                               std::vector<ContentItem> items);
  [[nodiscard]] static SearchCollection empty(std::string query, ResultsKind kind);
};

template <>
inline constexpr EnumCase enumCases<SearchCollection::ContentsKind>[] = {
    {"videos"}, {"pages"}, {"mixed"}};

template <>
inline constexpr EnumCase enumCases<SearchCollection::ResultsKind>[] = {
    {"videos"}, {"pages"}, {"events"}, {"channels"}, {"films"}, {"shows"}, {"top", "top_results"}};

/// Reads the results of one category. Stateless; may be called from any thread.
struct SearchCollectionParser {
  /// Items that cannot be read are left out.
  [[nodiscard]] static Result<SearchCollection> parse(const JSONObject& json,
                                                      std::string_view query);
};

/// Reads the results of all categories. Stateless; may be called from any thread.
struct SearchResultsParser {
  /// Collections that cannot be read are left out.
  [[nodiscard]] static Result<std::vector<SearchCollection>> parse(const JSONObject& json,
                                                                   std::string_view query);
};

}  // namespace orvo
