#pragma once

#include <OrvoAPI/Base/detail/Lock.h>
#include <OrvoAPI/Queues/DispatchQueue.h>
#include <OrvoAPI/Queues/ThreadInternal.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>

namespace orvo::detail {

/// The threads behind the global queue. One lock and one first-in-first-out list of jobs; idle
/// workers are woken last-in-first-out, since the one that slept last has the warmest caches.
/// Workers are started as jobs find none idle, up to the number of processors (at least two). Lives
/// as long as the process; thread-safe.
///
/// Jobs that block keep the others from running. So a job that finds all workers at work has the
/// timer *look* after 50 ms: if jobs wait and none has been taken since, a *spare* worker is
/// started; it looks again as long as jobs wait. Nothing tells a spare worker from the others: as
/// long as there are more than there should be, those that have been idle for a few seconds
/// *leave*.
class WorkerPool final : public DispatchQueue {
 public:
  [[nodiscard]] static WorkerPool& shared();
  /// Says again that jobs block.
  void forgetReport();

  void post(Job job) override;
  void postAfter(std::chrono::milliseconds delay, Job job) override;
  [[nodiscard]] std::string label() const override;

  /// Before all that wait; from a thread of the library that is no worker.
  void postFirst(Job job);
  /// Starts the first worker unless there is one, or throws `std::bad_alloc`: for who begins
  /// something that could not even fail without one.
  void demandWorker();

  /// Says that the calling worker goes on with `job` now. What an earlier one kept for its tail is
  /// queued.
  static void goOnWith(const JobNode* job);

  /// From here until `wakeHeld`, the calling thread wakes no worker for the jobs that it posts.
  /// Waking one costs as much as many a job does: posting several in a row saves most of that.
  static void holdWakes();
  [[nodiscard]] static bool holdsAWake();
  static void wakeHeld();

  /// Asks the workers to end and waits, for a limited time, until they have; a job that is running
  /// may finish. Jobs that still wait are never run.
  void shutDown();

 private:
  struct Worker {
    Worker* next = nullptr;  // among the idle, or among those of no thread
    std::atomic<std::uint32_t> woken{0};
    // Guarded by lock_.
    bool leaves = false;
    unsigned idleSince = 0;  // the dismissal before
  };
  /// What is to be done about a job that was just queued.
  enum class Help { none, wakeWorker, startWorker, look };
  template <void (WorkerPool::*task)()>
  struct TimerJob final : JobNode {
    void run() override { (shared().*task)(); }
    void drop() noexcept override {}
  };
  using Time = std::chrono::steady_clock::time_point;
  /// `DispatchQueue::global` states it.
  static constexpr unsigned kMostSpareWorkers = 16;

  WorkerPool();
  [[gnu::noinline]] static WorkerPool& makeShared();
  static void wake(Worker& sleeper);
  /// Finds help for one more job.
  [[nodiscard]] Help findHelp(Worker*& sleeper) ORVO_REQUIRES(lock_);
  void summon(Help help, Worker* sleeper);
  [[gnu::cold]] void postHeld(Job job);
  [[nodiscard]] static bool start();
  /// For one that `pickWorker` has counted. Terminates the process when there is none and, for a
  /// second, the system has no thread to give: a job that was taken would never be run.
  void startWorker();
  /// Looks for jobs that wait in vain.
  void look();
  void lookLater() noexcept;
  void beginLook() ORVO_REQUIRES(lock_);
  [[nodiscard]] bool countsSpareWorker() ORVO_REQUIRES(lock_);
  /// For one that was counted. False when the system has no thread to give.
  [[nodiscard]] bool startSpareWorker();
  [[nodiscard]] Worker* takeSuperfluous() ORVO_REQUIRES(lock_);
  void dismissSpareWorkers();
  void dismissLater() noexcept;
  void work();
  [[nodiscard]] JobNode* take(Worker& worker);

  const unsigned maximumWorkers_;  // without spare ones
  const std::unique_ptr<Worker[]> slots_;
  Lock lock_;
  JobList jobs_ ORVO_GUARDED_BY(lock_);
  Worker* idle_ ORVO_GUARDED_BY(lock_) = nullptr;
  Worker* unused_ ORVO_GUARDED_BY(lock_) = nullptr;
  unsigned workers_ ORVO_GUARDED_BY(lock_) = 0;
  unsigned leaving_ ORVO_GUARDED_BY(lock_) = 0;     // of them, when they find no job
  std::uint64_t taken_ ORVO_GUARDED_BY(lock_) = 0;  // jobs so far
  TimerJob<&WorkerPool::look> look_;
  bool looks_ ORVO_GUARDED_BY(lock_) = false;  // the timer has it
  /// When the timer was given it, and what had been taken by then.
  Time lookBegun_ ORVO_GUARDED_BY(lock_);
  std::uint64_t takenBefore_ ORVO_GUARDED_BY(lock_) = 0;
  TimerJob<&WorkerPool::dismissSpareWorkers> dismissal_;
  bool dismisses_ ORVO_GUARDED_BY(lock_) = false;  // the timer has it
  unsigned dismissals_ ORVO_GUARDED_BY(lock_) = 0;
  bool isReported_ ORVO_GUARDED_BY(lock_) = false;
  bool ending_ ORVO_GUARDED_BY(lock_) = false;
  ThreadCount running_;
};

}  // namespace orvo::detail
