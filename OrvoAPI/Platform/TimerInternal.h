#pragma once

#include <OrvoAPI/Platform/DispatchQueue.h>
#include <OrvoAPI/Platform/ThreadInternal.h>

#include <chrono>
#include <cstdint>
#include <mutex>
#include <vector>

namespace orvo::detail {

/// Posts jobs to their queues when their delay has passed, by the clock that counts sleep. One
/// thread, started with the first delay, asleep in the kernel until the earliest is due. Lives as
/// long as the process; safe to use from any thread.
class Timer {
 public:
  [[nodiscard]] static Timer& shared();

  void post(std::chrono::milliseconds delay, std::shared_ptr<DispatchQueue> queue, Job job);

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

  Timer();
  void work();
  void arm();
  [[nodiscard]] std::vector<Entry> takeDue();

  const int timer_;
  ThreadCount running_;
  std::mutex mutex_;
  std::vector<Entry> heap_;  // guarded by mutex_, the earliest first
  std::uint64_t order_ = 0;  // guarded by mutex_
  bool started_ = false;     // guarded by mutex_
  bool ending_ = false;      // guarded by mutex_
};

}  // namespace orvo::detail
