#pragma once

#include <OrvoAPI/Base/detail/Lock.h>
#include <OrvoAPI/Queues/DispatchQueue.h>
#include <OrvoAPI/Queues/ThreadInternal.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace orvo::detail {

/// Posts jobs to their queues when their delay has passed, by the clock that also runs during
/// sleep, and reports when the wall clock was set. One thread, started when it is first needed,
/// asleep in the kernel until the earliest job is due or the clock is set. Lives as long as the
/// process; safe to use from any thread.
class Timer {
 public:
  [[nodiscard]] static Timer& shared();

  void post(std::chrono::milliseconds delay, std::shared_ptr<DispatchQueue> queue, Job job);

  /// Calls the task on the timer's thread whenever the wall clock was set, also by a wake from
  /// sleep, until the returned value is gone.
  [[nodiscard]] std::shared_ptr<const void> watchWallClock(std::function<void()> task);

  /// Ends the thread. Jobs that still wait are never posted.
  void shutDown();

 private:
  struct Entry {
    std::chrono::nanoseconds due;
    std::uint64_t order;  // equal times keep the order in which they were posted
    std::shared_ptr<DispatchQueue> queue;
    Job job;
    [[nodiscard]] bool isAfter(const Entry& other) const {
      return due != other.due ? due > other.due : order > other.order;
    }
  };

  using Watch = const std::function<void()>;

  Timer();
  void work();
  void startOnce() ORVO_REQUIRES(lock_);
  void arm() ORVO_REQUIRES(lock_);
  [[nodiscard]] std::vector<Entry> takeDue() ORVO_REQUIRES(lock_);
  [[nodiscard]] std::vector<std::shared_ptr<Watch>> watches() ORVO_REQUIRES(lock_);

  const int timer_;
  const int wallClock_;  // never expires; ends its wait when the wall clock is set
  ThreadCount running_;
  Lock lock_;
  std::vector<Entry> heap_ ORVO_GUARDED_BY(lock_);  // the earliest first
  std::uint64_t order_ ORVO_GUARDED_BY(lock_) = 0;
  std::vector<std::weak_ptr<Watch>> watches_ ORVO_GUARDED_BY(lock_);
  bool started_ ORVO_GUARDED_BY(lock_) = false;
  bool ending_ ORVO_GUARDED_BY(lock_) = false;
};

}  // namespace orvo::detail
