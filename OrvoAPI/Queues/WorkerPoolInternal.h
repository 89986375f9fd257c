#pragma once

#include <OrvoAPI/Base/detail/Lock.h>
#include <OrvoAPI/Queues/DispatchQueue.h>
#include <OrvoAPI/Queues/ThreadInternal.h>

#include <atomic>
#include <cstdint>
#include <memory>

namespace orvo::detail {

/// The threads behind the global queue. One lock and one first-in-first-out list of jobs; idle
/// workers are woken last-in-first-out, since the one that slept last has the warmest caches.
/// Workers are started as jobs find none idle, up to the number of processors (at least two).
/// Lives as long as the process; safe to use from any thread.
class WorkerPool final : public DispatchQueue {
 public:
  [[nodiscard]] static WorkerPool& shared();

  void post(Job job) override;
  void postAfter(std::chrono::milliseconds delay, Job job) override;
  [[nodiscard]] std::string label() const override;

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
    Worker* nextIdle = nullptr;
    std::atomic<std::uint32_t> woken{0};
  };

  WorkerPool();
  [[gnu::noinline]] static WorkerPool& makeShared();
  static void wake(Worker& sleeper);
  /// Finds a worker for one more job: null is one that is to be started. False when all are at
  /// work.
  [[nodiscard]] bool pickWorker(Worker*& sleeper) ORVO_REQUIRES(lock_);
  void summon(Worker* sleeper);
  [[gnu::cold]] void postHeld(Job job);
  [[nodiscard]] static bool start();
  /// For one that `pickWorker` has counted. Stops the process when there is none and, for a second,
  /// the system has no thread to give: a job that was taken would never be run.
  void startWorker();
  void work(Worker& self);
  [[nodiscard]] JobNode* take(Worker& worker);

  const unsigned maximumWorkers_;
  const std::unique_ptr<Worker[]> slots_;
  Lock lock_;
  JobList jobs_ ORVO_GUARDED_BY(lock_);
  Worker* idle_ ORVO_GUARDED_BY(lock_) = nullptr;
  unsigned workers_ ORVO_GUARDED_BY(lock_) = 0;
  bool ending_ ORVO_GUARDED_BY(lock_) = false;
  ThreadCount running_;
};

}  // namespace orvo::detail
