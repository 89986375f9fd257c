#pragma once

#include <OrvoAPI/Base/Shared.h>
#include <OrvoAPI/Futures/Future.h>
#include <OrvoAPI/Platform/Clock.h>
#include <OrvoAPI/Queues/detail/InlineQueue.h>
#include <OrvoAPI/Storage/Cacheable.h>

#include <concepts>
#include <cstddef>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <typeinfo>
#include <utility>

namespace orvo {

namespace detail {

/// What a store does whatever the type of its elements; the table's own headers stay out of here.
class StoreCore;
using StoredElement = std::shared_ptr<const void>;

[[nodiscard]] std::shared_ptr<StoreCore> makeStoreCore(std::size_t bound,
                                                       std::shared_ptr<const Clock> clock);
void storeElement(StoreCore& core, StoredElement element, double ttl, std::string_view key);
[[nodiscard]] StoredElement freshElement(StoreCore& core, std::string_view key);
void removeAllElements(StoreCore& core);
[[nodiscard]] std::string storeQueueLabel(const std::type_info& type);

}  // namespace detail

/// A cache: keeps elements in memory, each for its own time to live. Thread-safe. Shares its
/// elements: a hit copies a pointer. It has room for a fixed number of elements; the least recently
/// used one goes first.
///
/// The age of an element is judged when it is read, by a clock that only goes forward and also runs
/// while the device sleeps, so that setting the wall clock makes nothing fresh or stale.
template <Cacheable T>
class Store {
 public:
  explicit Store(std::size_t bound, std::shared_ptr<const Clock> clock = Clock::system())
      : core_(detail::makeStoreCore(bound, std::move(clock))) {}
  Store(const Store&) = delete;
  Store& operator=(const Store&) = delete;

  /// Keeps the element, from now on for its time to live, in place of any other under the key.
  void store(Shared<T> element, std::string_view key) { store(*core_, std::move(element), key); }

  /// The element, or null when there is none that is still fresh. An expired one is removed.
  [[nodiscard]] Shared<T> element(std::string_view key) {
    return std::static_pointer_cast<const T>(detail::freshElement(*core_, key));
  }

  /// A fresh element as a future that completes from the main queue. Otherwise the future that
  /// `fallback()` returns, which is kept.
  template <std::invocable F>
  [[nodiscard]] Future<Shared<T>> access(std::string_view key, F&& fallback) {
    if (auto found = element(key)) return Future<Shared<T>>::succeeded(std::move(found));
    return keep(std::forward<F>(fallback)(), key);
  }

  /// Stores the future's value while it completes, unless the store is gone by then, and returns
  /// the future.
  Future<Shared<T>> keep(Future<Shared<T>> future, std::string_view key) {
    future.onSuccess(detail::inlineQueue(),
                     [core = std::weak_ptr(core_), key = std::string(key)](const Shared<T>& value) {
                       const auto alive = core.lock();
                       if (alive == nullptr) return;
                       try {
                         store(*alive, value, key);
                       } catch (const std::bad_alloc&) {  // it is not kept then
                       }
                     });
    return future;
  }

  /// Empties the store, for when memory is low.
  void removeAll() { detail::removeAllElements(*core_); }

  /// The label of the serial queue that the store's lock stands for; for debugging.
  [[nodiscard]] static std::string accessQueueLabel() { return detail::storeQueueLabel(typeid(T)); }

 private:
  static void store(detail::StoreCore& core, Shared<T> element, std::string_view key) {
    if (!element) return;
    const double ttl = element->ttl();
    detail::storeElement(core, std::move(element), ttl, key);
  }

  const std::shared_ptr<detail::StoreCore> core_;
};

}  // namespace orvo
