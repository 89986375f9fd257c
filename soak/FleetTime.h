#pragma once

#include <OrvoAPI/Queues/DispatchQueue.h>
#include <OrvoAPI/Queues/MainQueue.h>
#include <OrvoAPI/Testing/ManualClock.h>

#include <chrono>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace orvo::soak {

/// The main thread of all devices: jobs run on the simulation's thread, delays pass in virtual
/// time, rounded up to a tick. `post` and `postAfter` may be called from any thread.
class FleetQueue final : public DispatchQueue {
 public:
  static constexpr std::chrono::milliseconds kTick{100};

  explicit FleetQueue(std::shared_ptr<ManualClock> clock) : clock_(std::move(clock)) {}

  void post(Job job) override;
  void postAfter(std::chrono::milliseconds delay, Job job) override;
  [[nodiscard]] std::string label() const override { return "fleet"; }

  /// Runs what is due, and returns how many jobs that were.
  std::size_t run();
  /// When the next delayed job is due, on the clock's `elapsed`.
  [[nodiscard]] std::optional<std::chrono::milliseconds> nextDue() const;
  /// Destroys all jobs, and those that still come: they hold what holds the queue.
  void close();

 private:
  const std::shared_ptr<ManualClock> clock_;
  mutable std::mutex lock_;
  bool isClosed_ = false;                                          // guarded by lock_
  std::deque<Job> ready_;                                          // guarded by lock_
  std::map<std::chrono::milliseconds, std::vector<Job>> delayed_;  // guarded by lock_
};

/// Virtual time for a fleet: it only passes when the library has nothing more to do. What the
/// library does on its own threads happens in no time at all.
class FleetTime {
 public:
  explicit FleetTime(Date begin);
  FleetTime(const FleetTime&) = delete;
  FleetTime& operator=(const FleetTime&) = delete;
  ~FleetTime() { queue_->close(); }

  [[nodiscard]] const std::shared_ptr<ManualClock>& clock() const { return clock_; }
  [[nodiscard]] const std::shared_ptr<FleetQueue>& queue() const { return queue_; }
  [[nodiscard]] Date now() const { return clock_->now(); }
  [[nodiscard]] Date begin() const { return begin_; }

  void runUntil(Date end);
  /// Lets the library work until all of its threads sleep and no job is ready.
  void settle();

 private:
  [[nodiscard]] std::size_t runJobs();

  const Date begin_;
  const std::shared_ptr<ManualClock> clock_;
  const std::shared_ptr<FleetQueue> queue_;
  std::optional<MainQueue::Claim> claim_;
};

}  // namespace orvo::soak
