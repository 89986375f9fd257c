#pragma once

#include <OrvoAPI/Queues/DispatchQueue.h>
#include <OrvoAPI/Testing/ManualClock.h>
#include <OrvoAPI/Testing/detail/Locked.h>

#include <chrono>
#include <cstddef>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace orvo {

/// A queue whose jobs run when a test says so, on the test's thread, in the order in which they
/// were posted. `post` is thread-safe. Delays are measured on a manual clock, which several queues
/// may share. Jobs that were never run are destroyed with the queue.
///
///     const auto queue = std::make_shared<ManualQueue>();
///     future.onSuccess(queue, [&](const Shared<Video>& video) { … });
///     queue->run();
class ManualQueue final : public DispatchQueue {
 public:
  explicit ManualQueue(std::string label = "manual",
                       std::shared_ptr<ManualClock> clock = std::make_shared<ManualClock>())
      : label_(std::move(label)), clock_(std::move(clock)) {}

  void post(Job job) override;
  void postAfter(std::chrono::milliseconds delay, Job job) override;
  [[nodiscard]] std::string label() const override { return label_; }

  /// Runs the next job; false when there is none that is due.
  bool runOne();
  /// Runs jobs until none is due, including those that come meanwhile; returns how many there were.
  std::size_t run();
  /// Lets time pass: the clock stops at each delayed job that becomes due on the way, and runs it.
  /// Returns how many jobs were run.
  std::size_t advance(std::chrono::milliseconds span);
  /// Lets time pass until the next delayed job is due, and runs what is due then. Returns how many
  /// jobs were run; 0 when none waits.
  std::size_t advanceToNext();
  /// Waits until a job is ready to be run; false when the limit has passed. For jobs that come from
  /// another thread.
  [[nodiscard]] bool waitForJob(std::chrono::milliseconds limit = std::chrono::seconds(10)) const;

  /// How many jobs wait to be run.
  [[nodiscard]] std::size_t waiting() const;
  /// How many jobs wait for their time.
  [[nodiscard]] std::size_t delayed() const;
  [[nodiscard]] ManualClock& clock() const { return *clock_; }

 private:
  struct Jobs {
    std::deque<Job> ready;
    std::multimap<std::chrono::milliseconds, Job> delayed;  // by due time
  };

  [[nodiscard]] Job next();
  [[nodiscard]] std::optional<std::chrono::milliseconds> nextDue() const;
  void moveTo(std::chrono::milliseconds time);

  const std::string label_;
  const std::shared_ptr<ManualClock> clock_;
  detail::Locked<Jobs> jobs_;
};

}  // namespace orvo
