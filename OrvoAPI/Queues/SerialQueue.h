#pragma once

#include <OrvoAPI/Base/detail/Lock.h>
#include <OrvoAPI/Queues/DispatchQueue.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>

namespace orvo {

/// Runs its jobs one after another, in the order in which they were posted, on the workers of the
/// global queue; it has no thread of its own. Safe to use from any thread. Jobs that wait keep it
/// alive. A job that throws stops the process.
///
/// A queue is idle (no job waits), scheduled (jobs wait, and it stands itself in the global queue's
/// list) or draining (one thread runs its jobs). A synchronous caller who finds it scheduled drains
/// it himself, so that workers who all wait for it cannot lock each other out; one who finds it
/// draining waits until the draining thread has run his job in its turn.
class SerialQueue final : public DispatchQueue, private detail::JobNode {
 public:
  [[nodiscard]] static std::shared_ptr<SerialQueue> make(std::string label);

  void post(Job job) override;
  [[nodiscard]] std::string label() const override { return label_; }

  /// Runs `function` in its turn and returns when it has run; it may run on another thread. It must
  /// not throw. Called from one of the queue's own jobs it could never return: that stops the
  /// process.
  template <class F>
  void sync(F&& function) {
    SyncJob<F> job(function);
    runSynchronously(job, job.done);
  }

 private:
  enum class State { idle, scheduled, draining };

  template <class F>
  struct SyncJob final : detail::JobNode {
    explicit SyncJob(F& f) : function(f) {}
    void run() override {
      function();
      done.store(true, std::memory_order_release);
    }
    void drop() noexcept override {}
    F& function;
    std::atomic<bool> done{false};
  };

  explicit SerialQueue(std::string label) : label_(std::move(label)) {}

  void run() override;
  void drop() noexcept override;
  void runSynchronously(detail::JobNode& job, const std::atomic<bool>& done) noexcept;
  void waitUntil(const std::atomic<bool>& done);
  void drain(const std::atomic<bool>* done) ORVO_REQUIRES(lock_);
  [[nodiscard]] bool mayLeave(unsigned ran, const std::atomic<bool>* done) const
      ORVO_REQUIRES(lock_);

  const std::string label_;
  detail::Lock lock_;
  detail::JobList jobs_ ORVO_GUARDED_BY(lock_);
  State state_ ORVO_GUARDED_BY(lock_) = State::idle;
  unsigned waiters_ ORVO_GUARDED_BY(lock_) = 0;
  /// The queue itself while it stands in the global queue's list; present exactly then.
  std::shared_ptr<DispatchQueue> scheduledSelf_ ORVO_GUARDED_BY(lock_);
  /// Counts the jobs run while somebody waited, for him to sleep on.
  std::atomic<std::uint32_t> turn_{0};
  /// The thread that drains, by a token of its own; null when none does.
  std::atomic<const void*> drainer_{nullptr};
};

}  // namespace orvo
