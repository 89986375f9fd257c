#pragma once

#include <OrvoAPI/Base/detail/SharedText.h>
#include <OrvoAPI/Model/KeySet.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace orvo {

/// The resources of one product, as a map from key to `Resource`, a record { key, productID }.
/// Immutable and thread-safe. It stores the identifier once and a set of keys; the records are made
/// on access.
template <RawValueEnum Key, class Resource>
class ResourceTable {
 public:
  using Value = Resource;
  using Iterator = KeyedTableIterator<ResourceTable, Key>;

  ResourceTable() = default;
  ResourceTable(std::string_view productID, KeySet<Key> keys)
      : ResourceTable(detail::SharedText(keys.empty() ? std::string_view() : productID), keys) {}
  ResourceTable(detail::SharedText productID, KeySet<Key> keys)
      : productID_(keys.empty() ? detail::SharedText() : std::move(productID)), keys_(keys) {}

  [[nodiscard]] std::optional<Resource> find(Key key) const {
    if (!contains(key)) return std::nullopt;
    return Resource{.key = key, .productID = std::string(productID_.view())};
  }
  [[nodiscard]] bool contains(Key key) const { return keys_.contains(key); }
  [[nodiscard]] std::size_t size() const { return keys_.size(); }
  [[nodiscard]] bool empty() const { return keys_.empty(); }

  /// Pairs of key and record, in declaration order of the keys.
  [[nodiscard]] Iterator begin() const { return {this, keys_}; }
  [[nodiscard]] Iterator end() const { return {this, {}}; }

  friend bool operator==(const ResourceTable&, const ResourceTable&) = default;

 private:
  detail::SharedText productID_;
  KeySet<Key> keys_;
};

}  // namespace orvo
