#include <OrvoAPI/Futures/AnyError.h>
#include <OrvoAPI/Platform/QueueLabels.h>
#include <OrvoAPI/Storage/Store.h>

namespace orvo::detail {

bool StoreCore::Box::isFresh(std::chrono::milliseconds now) const {
  // The time to live comes from a server: as a number of seconds it may be anything, also none.
  // Compared like this it can neither overflow nor lose the last millisecond.
  return static_cast<double>((now - made).count()) / 1000 < ttl;
}

void StoreCore::store(Element element, double ttl, std::string_view key) {
  const auto now = clock_->elapsed();
  Cache::Dropped dropped;  // destroyed after the lock is released
  const LockGuard guard(lock_);
  dropped = cache_.put(key, Box{std::move(element), now, ttl});
}

StoreCore::Element StoreCore::element(std::string_view key) {
  const auto now = clock_->elapsed();
  Cache::Dropped expired;  // destroyed after the lock is released
  const LockGuard guard(lock_);
  const Box* const box = cache_.find(key);
  if (box == nullptr) return nullptr;
  if (box->isFresh(now)) return box->element;
  expired = cache_.remove(key);
  return nullptr;
}

void StoreCore::removeAll() {
  Cache::Dropped dropped;  // destroyed after the lock is released
  const LockGuard guard(lock_);
  dropped = cache_.removeAll();
}

std::string StoreCore::queueLabel(const std::type_info& type) {
  std::string name = readableTypeName(type);
  if (const auto scope = name.rfind("::"); scope != std::string::npos) name.erase(0, scope + 2);
  return std::string(ServiceDomainPrefix) + ".store." + name;
}

}  // namespace orvo::detail
