#pragma once

#include <OrvoAPI/Queues/DispatchQueue.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace orvo {

namespace detail {
class MainQueueView;
}

/// The queue that stands for the app's main thread: cache hits, `Future::succeeded` and every fetch
/// with a fresh token go through it. Jobs run one at a time, in the order in which they were
/// posted. Thread-safe; lives as long as the process.
///
/// An app claims it to have its jobs run on its event loop's thread: it runs the queue on a thread,
/// drains it regularly, or adds its event descriptor to the loop. While it is unclaimed, a thread
/// of the library runs it, so that a program without an event loop never waits forever. When a
/// claim lets jobs wait for five seconds without running one, a line in the log says so.
class MainQueue final : public DispatchQueue {
 public:
  class Claim;

  [[nodiscard]] static std::shared_ptr<MainQueue> shared();

  /// Waits for the job that is running, then takes the queue over for the calling thread; nothing
  /// when it is claimed already, or when called from one of the queue's jobs.
  [[nodiscard]] std::optional<Claim> claim();

  void post(Job job) override;
  void postAfter(std::chrono::milliseconds delay, Job job) override;
  [[nodiscard]] std::string label() const override;

  /// True when the calling thread is the one that the queue's jobs currently run on.
  [[nodiscard]] bool isCurrent() const;

 private:
  friend class detail::MainQueueView;
  struct State;
  MainQueue();
  ~MainQueue() override;
  void runAsFallback();
  void runAsStandIn();
  void endFallback();
  void look();

  const std::unique_ptr<State> state_;
};

/// The right to run the main queue. It belongs to the thread that made it: running or draining on
/// another terminates the process; `stop` may be called from any. Destroying it, even from a job of
/// the queue, gives the queue back with its waiting jobs.
///
/// An exception that a job throws propagates from `run` and `drain`; the next call continues with
/// the next job.
class MainQueue::Claim {
 public:
  Claim(Claim&& other) noexcept;
  Claim& operator=(Claim&&) = delete;
  ~Claim();

  /// Runs jobs as they come, until `stop`.
  void run();
  /// Makes `run` return after the job that is running; a `run` that has not begun returns at once.
  void stop();

  /// Runs the jobs that wait at the time of the call and returns how many it ran.
  std::size_t drain();

  /// A file descriptor that is readable while jobs wait: add it to your event loop and `drain` when
  /// it is readable. The queue owns it; do not read or close it. -1 if the system refuses one.
  [[nodiscard]] int eventDescriptor() const;

 private:
  friend class MainQueue;
  Claim(State& state, std::uint64_t id) : state_(&state), id_(id) {}

  State* state_;
  std::uint64_t id_;
};

}  // namespace orvo
