#pragma once

#include <OrvoAPI/Base/detail/Lock.h>
#include <OrvoAPI/Queues/DispatchQueue.h>
#include <OrvoAPI/Queues/ThreadInternal.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace orvo::detail {

/// Posts jobs to their queues when their delay has passed, by the clock that also runs during
/// sleep, and reports when the wall clock was set. One thread, started when it is first needed,
/// asleep in the kernel until the earliest job is due or the clock is set. Lives as long as the
/// process; thread-safe.
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

  struct Watch {
    std::function<void()> task;
  };
  struct NumberedWatch {
    std::uint64_t number = 0;
    std::weak_ptr<const Watch> watch;
  };

  Timer();
  void work();
  void startOnce() ORVO_REQUIRES(lock_);
  void arm() ORVO_REQUIRES(lock_);
  [[nodiscard]] std::optional<Entry> takeDue();
  [[nodiscard]] std::shared_ptr<const Watch> nextToTell();
  [[nodiscard]] bool tellWatches();

  const int timer_;
  const int wallClock_;  // never expires; ends its wait when the wall clock is set
  ThreadCount running_;
  Lock lock_;
  std::vector<Entry> heap_ ORVO_GUARDED_BY(lock_);  // the earliest first
  std::uint64_t order_ ORVO_GUARDED_BY(lock_) = 0;
  std::vector<NumberedWatch> watches_ ORVO_GUARDED_BY(lock_);  // in the order of their numbers
  std::uint64_t latestWatch_ ORVO_GUARDED_BY(lock_) = 0;
  std::uint64_t told_ ORVO_GUARDED_BY(lock_) = 0;  // the last to be told of the present setting
  bool started_ ORVO_GUARDED_BY(lock_) = false;
  bool ending_ ORVO_GUARDED_BY(lock_) = false;
};

}  // namespace orvo::detail
