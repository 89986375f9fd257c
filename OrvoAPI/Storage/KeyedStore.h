#pragma once

#include <OrvoAPI/Base/detail/UUID.h>

#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orvo {

/// A table of elements by text keys. Safe to use from any thread; an element's copy constructor may
/// use the table again. Owns its elements and hands out copies.
template <class T>
class KeyedStore {
 public:
  KeyedStore() = default;
  KeyedStore(const KeyedStore&) = delete;
  KeyedStore& operator=(const KeyedStore&) = delete;

  /// Adds the element under a new random key, a UUID, and returns that.
  std::string add(T element) {
    std::string key = detail::makeUUID();
    add(std::move(element), key);
    return key;
  }

  /// Adds the element in place of any other under the key.
  void add(T element, std::string key) {
    // What it replaces goes with the parameter, after the lock: its destructor may be anybody's.
    const std::lock_guard guard(lock_);
    const auto [position, isNew] = store_.try_emplace(std::move(key), std::move(element));
    if (!isNew) std::swap(position->second, element);
  }

  /// Removes the element, if there is one.
  void remove(std::string_view key) {
    typename Table::node_type removed;  // destroyed after the lock is released
    const std::lock_guard guard(lock_);
    if (const auto found = store_.find(key); found != store_.end()) {
      removed = store_.extract(found);
    }
  }

  [[nodiscard]] std::optional<T> element(std::string_view key) const {
    const std::lock_guard guard(lock_);
    const auto found = store_.find(key);
    if (found == store_.end()) return std::nullopt;
    return found->second;
  }

  /// All elements, in no defined order.
  [[nodiscard]] std::vector<T> elements() const {
    std::vector<T> elements;
    const std::lock_guard guard(lock_);
    elements.reserve(store_.size());
    for (const auto& entry : store_) elements.push_back(entry.second);
    return elements;
  }

 private:
  using Table = std::map<std::string, T, std::less<>>;

  mutable std::recursive_mutex lock_;
  Table store_;  // guarded by lock_
};

}  // namespace orvo
