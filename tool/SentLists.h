#pragma once

#include <OrvoAPI/Parsing/JSONValue.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace orvo::tool {

/// A list in which a service has sent nothing, or less than the document promises beside it.
struct ShortList {
  /// Such as `items`; empty for a document that is a list.
  std::string path{};
  std::int64_t count = 0;
  /// Of the list's meta, if it is there.
  std::optional<std::int64_t> total{};
  std::int64_t offset = 0;
  /// How many should be in this part; never less than `count`.
  std::int64_t promised = 0;
};

/// Those of a document: its items and those of lists in it, and a page's collections.
[[nodiscard]] std::vector<ShortList> shortLists(const JSONValue& document);

/// In words: `items is empty, though meta.total is 20: the service itself sent none`.
[[nodiscard]] std::string shortListText(const ShortList& list);

}  // namespace orvo::tool
