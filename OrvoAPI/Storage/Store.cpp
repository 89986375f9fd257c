#include <OrvoAPI/Base/BoundedCacheInternal.h>
#include <OrvoAPI/Base/detail/Lock.h>
#include <OrvoAPI/Futures/AnyError.h>
#include <OrvoAPI/Queues/QueueLabels.h>
#include <OrvoAPI/Storage/Store.h>

#include <chrono>

namespace orvo::detail {

/// Its lock plays the part of a serial queue that is only ever used synchronously.
class StoreCore {
 public:
  StoreCore(std::size_t bound, std::shared_ptr<const Clock> clock)
      : clock_(std::move(clock)), cache_(bound) {}

  void store(StoredElement element, double ttl, std::string_view key) {
    const auto now = clock_->elapsed();
    Cache::Dropped dropped;  // destroyed after the lock is released
    const LockGuard guard(lock_);
    dropped = cache_.put(key, Box{std::move(element), now, ttl});
  }

  [[nodiscard]] StoredElement element(std::string_view key) {
    const auto now = clock_->elapsed();
    Cache::Dropped expired;  // destroyed after the lock is released
    const LockGuard guard(lock_);
    const Box* const box = cache_.find(key);
    if (box == nullptr) return nullptr;
    if (box->isFresh(now)) return box->element;
    expired = cache_.remove(key);
    return nullptr;
  }

  void removeAll() {
    Cache::Dropped dropped;  // destroyed after the lock is released
    const LockGuard guard(lock_);
    dropped = cache_.removeAll();
  }

 private:
  struct Box {
    StoredElement element;
    std::chrono::milliseconds made;
    double ttl;

    [[nodiscard]] bool isFresh(std::chrono::milliseconds now) const {
      // The time to live comes from a server: it may be any number of seconds, zero and less
      // included. Compared like this it can neither overflow nor lose the last millisecond.
      return static_cast<double>((now - made).count()) / 1000 < ttl;
    }
  };
  using Cache = BoundedCache<Box>;

  const std::shared_ptr<const Clock> clock_;
  Lock lock_;
  Cache cache_ ORVO_GUARDED_BY(lock_);
};

std::shared_ptr<StoreCore> makeStoreCore(std::size_t bound, std::shared_ptr<const Clock> clock) {
  return std::make_shared<StoreCore>(bound, std::move(clock));
}
void storeElement(StoreCore& core, StoredElement element, double ttl, std::string_view key) {
  core.store(std::move(element), ttl, key);
}
StoredElement freshElement(StoreCore& core, std::string_view key) { return core.element(key); }
void removeAllElements(StoreCore& core) { core.removeAll(); }

std::string storeQueueLabel(const std::type_info& type) {
  std::string name = readableTypeName(type);
  if (const auto scope = name.rfind("::"); scope != std::string::npos) name.erase(0, scope + 2);
  return std::string(ServiceDomainPrefix) + ".store." + name;
}

}  // namespace orvo::detail
