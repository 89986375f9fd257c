#pragma once

#include <OrvoAPI/Base/detail/ThreadAnnotations.h>

#include <condition_variable>
#include <mutex>

namespace orvo::detail {

/// A mutual-exclusion lock under which a thread can wait for a condition; everything else uses the
/// smaller `Lock`.
class ORVO_CAPABILITY("mutex") Mutex {
 private:
  friend class MutexGuard;
  std::mutex mutex_;
};

/// Holds a `Mutex` for a scope, within which it can be released and taken again.
class ORVO_SCOPED_CAPABILITY MutexGuard {
 public:
  explicit MutexGuard(Mutex& mutex) ORVO_ACQUIRE(mutex) : lock_(mutex.mutex_) {}
  ~MutexGuard() ORVO_RELEASE() {}
  MutexGuard(const MutexGuard&) = delete;
  MutexGuard& operator=(const MutexGuard&) = delete;

  void lock() ORVO_ACQUIRE() { lock_.lock(); }
  void unlock() ORVO_RELEASE() { lock_.unlock(); }
  /// Releases the mutex until `condition` is notified. It may also return without that: check
  /// again.
  void wait(std::condition_variable& condition) { condition.wait(lock_); }
  /// The same, until `end` at the latest; false when it has passed.
  template <class Time>
  [[nodiscard]] bool waitUntil(std::condition_variable& condition, const Time& end) {
    return condition.wait_until(lock_, end) == std::cv_status::no_timeout;
  }

 private:
  std::unique_lock<std::mutex> lock_;
};

}  // namespace orvo::detail
