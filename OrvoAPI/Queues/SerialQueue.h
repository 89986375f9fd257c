#pragma once

#include <OrvoAPI/Base/detail/Lock.h>
#include <OrvoAPI/Queues/DispatchQueue.h>

#include <atomic>
#include <cstdint>
#include <exception>
#include <memory>
#include <string>
#include <utility>

namespace orvo {

/// Runs its jobs one after another, in the order in which they were posted, on the workers of the
/// global queue; it has no thread of its own. Thread-safe. Jobs that wait keep it alive. A job that
/// throws terminates the process.
///
/// A queue is idle (no job waits), scheduled (jobs wait, and it stands itself in the global queue's
/// list) or draining (one thread runs its jobs). A synchronous caller that finds it draining waits;
/// otherwise it drains the queue itself. A thread that has drained enough (a synchronous caller
/// when its own job has run, a worker after a number of jobs) hands the queue to the synchronous
/// caller that has waited longest, or to the workers when none waits. So a caller works only for
/// those before it, and workers that all wait for the queue cannot lock each other out: one of them
/// drains it.
class SerialQueue final : public DispatchQueue, private detail::JobNode {
 public:
  [[nodiscard]] static std::shared_ptr<SerialQueue> make(std::string label);

  void post(Job job) override;
  [[nodiscard]] std::string label() const override { return label_; }

  /// Runs `function` in its turn and returns when it has run; it may run on another thread. An
  /// exception that it throws propagates to the caller. Called from one of the queue's own jobs it
  /// would deadlock, and therefore terminates the process.
  template <class F>
  void sync(F&& function) {
    SyncJob<F> job(function);
    runSynchronously(job);
    if (job.thrown) std::rethrow_exception(job.thrown);
  }

 private:
  enum class State { idle, scheduled, draining };

  template <class F>
  struct SyncJob final : detail::JobNode {
    explicit SyncJob(F& f) : function(f) {}
    void run() override {
      try {
        function();
      } catch (...) {
        thrown = std::current_exception();
      }
    }
    void drop() noexcept override {}
    F& function;
    std::exception_ptr thrown;
  };

  /// A synchronous caller that waits while another thread drains.
  struct Waiter {
    enum Turn : std::uint32_t { waits, hasRun, drains };
    void drop() noexcept {}
    const detail::JobNode* job;
    std::atomic<std::uint32_t> turn{waits};
    Waiter* next = nullptr;
  };

  explicit SerialQueue(std::string label) : label_(std::move(label)) {}

  void run() override;
  void drop() noexcept override;
  void runSynchronously(detail::JobNode& job) noexcept;
  [[nodiscard]] bool waitToDrain(const detail::JobNode& job) ORVO_REQUIRES(lock_);
  void drain(const detail::JobNode* own) ORVO_REQUIRES(lock_);
  void runFirst(bool asWorker) ORVO_REQUIRES(lock_);
  void handOn() ORVO_REQUIRES(lock_);
  static void wake(Waiter& waiter, Waiter::Turn turn);

  const std::string label_;
  detail::Lock lock_;
  detail::JobList jobs_ ORVO_GUARDED_BY(lock_);
  State state_ ORVO_GUARDED_BY(lock_) = State::idle;
  /// In the order of their jobs, all of which wait.
  detail::NodeList<Waiter> waiters_ ORVO_GUARDED_BY(lock_);
  /// The queue itself while it stands in the global queue's list; present exactly then.
  std::shared_ptr<DispatchQueue> scheduledSelf_ ORVO_GUARDED_BY(lock_);
  /// The token of the thread that drains; null when none does.
  std::atomic<const void*> drainer_{nullptr};
};

}  // namespace orvo
