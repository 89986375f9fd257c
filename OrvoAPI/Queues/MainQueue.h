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

/// The one queue that stands for the app's main thread: cache hits, `Future::succeeded` and every
/// fetch with a fresh token come through it. Jobs run one at a time, in the order in which they
/// were posted. Safe to use from any thread; lives as long as the process.
///
/// An app claims it, to have its jobs run where its own events run: it runs the queue on a thread,
/// or drains it now and then, or puts the event descriptor into a loop of its own. While it is
/// unclaimed, a thread of the library runs it, so that a program without a loop never waits for
/// ever. When a claim lets jobs wait for five seconds without running one, a line in the log says
/// so.
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
/// another stops the process; `stop` may be called from any. Destroying it, even from a job of the
/// queue, gives the queue back with its waiting jobs.
///
/// What a job throws leaves `run` and `drain`; the next call goes on with the next job.
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

  /// A descriptor that is readable while jobs wait: put it into a loop of your own and `drain` when
  /// it wakes. It stays the queue's; do not read or close it. -1 when the system has none to give.
  [[nodiscard]] int eventDescriptor() const;

 private:
  friend class MainQueue;
  Claim(State& state, std::uint64_t id) : state_(&state), id_(id) {}

  State* state_;
  std::uint64_t id_;
};

}  // namespace orvo
