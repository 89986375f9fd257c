#pragma once

#include <OrvoAPI/Base/Shared.h>
#include <OrvoAPI/Base/detail/Lock.h>
#include <OrvoAPI/Base/detail/UUID.h>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orvo {

/// A map from text keys to elements. Thread-safe; may also be used from an element's copy
/// constructor or destructor. Owns its elements and hands out copies.
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
    // Made, and what it replaces destroyed, outside the lock: elements may run foreign code.
    auto added = std::make_shared<const T>(std::move(element));
    const detail::LockGuard guard(lock_);
    store_[std::move(key)].swap(added);
  }

  /// Removes the element, if there is one.
  void remove(std::string_view key) {
    typename Table::node_type removed;  // destroyed after the lock is released
    const detail::LockGuard guard(lock_);
    if (const auto found = store_.find(key); found != store_.end()) {
      removed = store_.extract(found);
    }
  }

  [[nodiscard]] std::optional<T> element(std::string_view key) const {
    const auto found = shared(key);
    if (found == nullptr) return std::nullopt;
    return *found;
  }

  /// All elements, in no defined order.
  [[nodiscard]] std::vector<T> elements() const {
    std::vector<T> elements;
    for (const auto& element : allShared()) elements.push_back(*element);
    return elements;
  }

 private:
  using Table = std::map<std::string, Shared<T>, std::less<>>;

  [[nodiscard]] Shared<T> shared(std::string_view key) const {
    const detail::LockGuard guard(lock_);
    const auto found = store_.find(key);
    return found != store_.end() ? found->second : nullptr;
  }
  [[nodiscard]] std::vector<Shared<T>> allShared() const {
    std::vector<Shared<T>> all;
    const detail::LockGuard guard(lock_);
    all.reserve(store_.size());
    for (const auto& entry : store_) all.push_back(entry.second);
    return all;
  }

  mutable detail::Lock lock_;
  Table store_ ORVO_GUARDED_BY(lock_);
};

}  // namespace orvo
