#pragma once

#include <OrvoAPI/Base/detail/ThreadAnnotations.h>

#include <atomic>
#include <cstdint>

namespace orvo::detail {

/// A mutual-exclusion lock of four bytes, for the few instructions that change a small state. A
/// thread that finds it taken sleeps. Never held while foreign code runs.
class ORVO_CAPABILITY("lock") Lock {
 public:
  Lock() = default;
  Lock(const Lock&) = delete;
  Lock& operator=(const Lock&) = delete;

  void lock() ORVO_ACQUIRE() {
    std::uint32_t expected = kFree;
    if (!state_.compare_exchange_strong(expected, kHeld, std::memory_order_acquire)) lockSlowly();
  }
  void unlock() ORVO_RELEASE() {
    // Sequentially consistent: it is seen before `wakeOne` checks whether a thread sleeps.
    if (state_.exchange(kFree) == kContended) wakeOne();
  }

 private:
  static constexpr std::uint32_t kFree = 0;
  static constexpr std::uint32_t kHeld = 1;
  static constexpr std::uint32_t kContended = 2;

  void lockSlowly();
  void wakeOne();

  std::atomic<std::uint32_t> state_{kFree};
};

/// Holds a `Lock` for a scope, within which it can be released and taken again.
class ORVO_SCOPED_CAPABILITY LockGuard {
 public:
  explicit LockGuard(Lock& lock) ORVO_ACQUIRE(lock) : lock_(lock), held_(true) { lock_.lock(); }
  ~LockGuard() ORVO_RELEASE() {
    if (held_) lock_.unlock();
  }
  LockGuard(const LockGuard&) = delete;
  LockGuard& operator=(const LockGuard&) = delete;

  void lock() ORVO_ACQUIRE() {
    lock_.lock();
    held_ = true;
  }
  void unlock() ORVO_RELEASE() {
    held_ = false;
    lock_.unlock();
  }

 private:
  Lock& lock_;
  bool held_;
};

}  // namespace orvo::detail
