#pragma once

#include <OrvoAPI/Base/MutexInternal.h>
#include <OrvoAPI/HTTP/ConnectionsInternal.h>
#include <pthread.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <optional>
#include <vector>

namespace orvo::detail {

/// Makes sure that a host that keeps libcurl from returning, with frames that come faster than they
/// are read, holds up nobody else: all sessions share the network thread. When one call has kept
/// that thread busy for too long, with next to nothing to show for it, the connection that brings
/// the most is shut down, so that libcurl finds its end. A thread of its own, asleep while the
/// network is; lives as long as the process.
class Watchdog {
 public:
  [[nodiscard]] static Watchdog& shared();

  // On the network thread, whose calls are watched from start to stop; not at all when the watchdog
  // gets no thread.
  void start();
  void stop();
  void add(Connections& connections);
  void remove(Connections& connections);

  /// Within a call, bytes of a header or a body have come out of it.
  void noteDelivered(std::size_t bytes) {
    delivered_.store(delivered_.load(std::memory_order_relaxed) + bytes, std::memory_order_relaxed);
  }

  /// One call into libcurl, for as long as it lives.
  class Call {
   public:
    Call() { shared().enter(); }
    ~Call() { shared().leave(); }
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;
  };

 private:
  Watchdog() = default;

  void enter() {
    // Sequentially consistent, like the watchdog's falling asleep before it looks once more.
    calls_.fetch_add(1);
    if (isAsleep_.load()) wake();
  }
  void leave() { calls_.fetch_add(1, std::memory_order_release); }
  void wake();
  void work();
  void look() ORVO_REQUIRES(mutex_);

  std::atomic<std::size_t> calls_{0};  // odd within a call; may wrap, as the next
  std::atomic<bool> isAsleep_{false};
  std::atomic<std::size_t> delivered_{0};

  Mutex mutex_;
  std::condition_variable changed_;
  std::vector<Connections*> watched_ ORVO_GUARDED_BY(mutex_);
  bool isEnding_ ORVO_GUARDED_BY(mutex_) = false;
  /// The network thread's time when the call was first seen.
  std::optional<std::chrono::nanoseconds> began_ ORVO_GUARDED_BY(mutex_);
  std::size_t deliveredBefore_ ORVO_GUARDED_BY(mutex_) = 0;  // likewise
  clockid_t networkClock_ = CLOCK_MONOTONIC;                 // set before its thread starts
  std::optional<pthread_t> thread_;                          // network thread only
};

}  // namespace orvo::detail
