#pragma once

#include <cstddef>
#include <list>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace orvo::detail {

/// A table from text to values with room for a fixed number of entries; the least recently used one
/// goes first. Not thread-safe: the owner guards it. A look-up allocates nothing.
///
/// What an operation takes out is handed to the caller, to be destroyed after the lock that guards
/// the table is released: a destructor may run foreign code.
template <class Value>
class BoundedCache {
 public:
  struct Entry {
    std::string key;
    Value value;
  };
  using Dropped = std::list<Entry>;

  /// A bound of zero keeps nothing.
  explicit BoundedCache(std::size_t bound) : bound_(bound) {}

  /// The value under the key, now the most recently used one, or null.
  [[nodiscard]] Value* find(std::string_view key) {
    const auto found = positions_.find(key);
    if (found == positions_.end()) return nullptr;
    entries_.splice(entries_.begin(), entries_, found->second);
    return &found->second->value;
  }

  /// Puts the value under the key and returns what it replaced or displaced.
  [[nodiscard]] Dropped put(std::string_view key, Value value) {
    Dropped fresh;
    fresh.push_front(Entry{std::string(key), std::move(value)});
    Dropped dropped;
    // What may be refused memory comes first: nothing has changed by then.
    const auto [position, isNew] = positions_.try_emplace(fresh.front().key, fresh.begin());
    if (!isNew) {
      dropped.splice(dropped.end(), entries_, position->second);
      auto node = positions_.extract(position);
      node.key() = fresh.front().key;  // the earlier one lies in what it replaces
      node.mapped() = fresh.begin();
      positions_.insert(std::move(node));
    }
    entries_.splice(entries_.begin(), fresh);
    while (entries_.size() > bound_) {
      positions_.erase(entries_.back().key);
      dropped.splice(dropped.end(), entries_, std::prev(entries_.end()));
    }
    return dropped;
  }

  [[nodiscard]] Dropped remove(std::string_view key) {
    Dropped dropped;
    if (const auto found = positions_.find(key); found != positions_.end()) {
      const auto entry = found->second;
      positions_.erase(found);
      dropped.splice(dropped.end(), entries_, entry);
    }
    return dropped;
  }

  [[nodiscard]] Dropped removeAll() {
    positions_.clear();
    return std::exchange(entries_, {});
  }

  [[nodiscard]] std::size_t size() const { return entries_.size(); }

 private:
  using Position = typename std::list<Entry>::iterator;

  std::size_t bound_;
  std::list<Entry> entries_;                                  // the most recently used first
  std::unordered_map<std::string_view, Position> positions_;  // the keys lie in `entries_`
};

}  // namespace orvo::detail
