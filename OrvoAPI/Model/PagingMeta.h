#pragma once

#include <OrvoAPI/Parsing/JSONValue.h>

#include <cstdint>
#include <optional>

namespace orvo {

/// What a part of a list says about the whole list.
struct PagingMeta {
  /// How many items the server has.
  std::int64_t total = 0;
  /// How many were asked for.
  std::int64_t limit = 0;
  /// The position of this part's first item.
  std::int64_t offset = 0;

  friend bool operator==(const PagingMeta&, const PagingMeta&) = default;
};

/// Reads what a part says about its list. Stateless; may be called from any thread.
struct PagingMetaParser {
  /// Nothing unless all three numbers are there; each document names that failure in its own way.
  [[nodiscard]] static std::optional<PagingMeta> parse(const JSONObject& json);
};

}  // namespace orvo
