#pragma once

#include <OrvoAPI/Model/AppAction.h>
#include <OrvoAPI/Model/CollectionReference.h>
#include <OrvoAPI/Model/LineupReference.h>
#include <OrvoAPI/Model/Status.h>
#include <OrvoAPI/Parsing/JSONValue.h>
#include <OrvoAPI/Platform/URL.h>

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// The members that documents share; none of them can make a document fail.
namespace orvo::detail {

[[nodiscard]] std::optional<std::string> optionalString(const JSONObject& json,
                                                        std::string_view key);

/// A raw value of `E`, or else `fallback`.
template <RawValueEnum E>
[[nodiscard]] E rawValueOr(const JSONObject& json, std::string_view key, E fallback) {
  const auto text = json.string(key);
  return text ? fromRawValue<E>(*text).value_or(fallback) : fallback;
}

[[nodiscard]] std::optional<URL> optionalURL(const JSONObject& json, std::string_view key);

/// "collections", without the entries that lack an "id" or a "label".
[[nodiscard]] std::vector<CollectionReference> collections(const JSONObject& json);

/// "lineup", or nothing when its address or its display kind is none.
[[nodiscard]] std::optional<LineupReference> lineupMeta(const JSONObject& json);

/// "status", or the one that stands in for it.
[[nodiscard]] Status status(const JSONObject& json);

/// The buttons among a document's "links", without those that cannot be read.
[[nodiscard]] std::vector<AppAction> appActions(const std::optional<JSONObjects>& links);

/// Makes room for that many records, within reason: a body of tiny bad elements must not claim
/// gigabytes for records that will never be.
template <class Item>
void reserve(std::vector<Item>& items, std::size_t count) {
  constexpr std::size_t kMost = 1024;
  items.reserve(std::min(count, kMost));
}

/// What `Parser` makes of the elements, with `arguments`; those that it refuses are left out.
template <class Parser, class Item, class... Arguments>
[[nodiscard]] std::vector<Item> parsedItems(const JSONObjects& elements,
                                            const Arguments&... arguments) {
  std::vector<Item> items;
  reserve(items, elements.size());
  for (const JSONObject& element : elements) {
    // It lacks what every item requires. To make an error of each would let a body of "{}" cost
    // many times as much as one of items.
    if (element.empty()) continue;
    auto parsed = Parser::parse(element, arguments...);
    if (Item* item = parsed.value()) items.push_back(std::move(*item));
  }
  return items;
}

}  // namespace orvo::detail
