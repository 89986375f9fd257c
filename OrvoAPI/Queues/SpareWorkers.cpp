#include <OrvoAPI/Queues/QueueWarningsInternal.h>
#include <OrvoAPI/Queues/TimerInternal.h>
#include <OrvoAPI/Queues/WorkerPoolInternal.h>
#include <OrvoAPI/Queues/detail/InlineQueue.h>

#include <new>
#include <utility>

namespace orvo::detail {
namespace {

/// Longer than most jobs take, shorter than what people notice.
constexpr std::chrono::milliseconds kBetweenLooks{50};

}  // namespace

void WorkerPool::beginLook() {
  looks_ = true;
  lookBegun_ = std::chrono::steady_clock::now();
  takenBefore_ = taken_;
}

void WorkerPool::lookLater() noexcept {
  try {
    Timer::shared().post(kBetweenLooks, inlineQueue(), Job(static_cast<JobNode*>(&look_)));
  } catch (const std::bad_alloc&) {
    const LockGuard guard(lock_);
    looks_ = false;  // the next job tries again
  }
}

/// On the timer's thread.
void WorkerPool::look() {
  bool isSpareNeeded = false;
  bool isNews = false;
  {
    const LockGuard guard(lock_);
    looks_ = false;
    if (jobs_.empty() || ending_) return;
    isSpareNeeded = countsSpareWorker();
    isNews = isSpareNeeded && !isReported_;
    beginLook();
    if (isSpareNeeded) ++takenBefore_;  // what it takes first shows nothing of the others
  }
  const bool isStarted = isSpareNeeded && startSpareWorker();
  lookLater();
  if (!isNews) return;
  const bool isReported = warnOfQueue(
      "global",
      isStarted ? "Callbacks block the library's worker threads: jobs have waited for 50 ms, so "
                  "that a spare thread was started; do what takes long on a thread or a queue of "
                  "your own"
                : "Callbacks block the library's worker threads: jobs have waited for 50 ms, and "
                  "the system has no thread to give for a spare one; do what takes long on a "
                  "thread or a queue of your own");
  const LockGuard guard(lock_);
  isReported_ = isReported;
}

bool WorkerPool::countsSpareWorker() {
  // The timer also counts the time that the device slept: then nobody could have come back.
  if (taken_ > takenBefore_ || std::chrono::steady_clock::now() - lookBegun_ < kBetweenLooks) {
    return false;
  }
  if (workers_ >= maximumWorkers_ + kMostSpareWorkers) return false;
  ++workers_;
  running_.add();
  return true;
}

void WorkerPool::forgetReport() {
  const LockGuard guard(lock_);
  isReported_ = false;
}

bool WorkerPool::startSpareWorker() {
  bool dismisses = false;
  const bool isStarted = start();
  {
    const LockGuard guard(lock_);
    if (!isStarted) {
      --workers_;
      running_.remove();
      return false;
    }
    dismisses = !std::exchange(dismisses_, true);
  }
  if (dismisses) dismissLater();
  return true;
}

void WorkerPool::dismissLater() noexcept {
  try {
    Timer::shared().post(queuePatience().ofSpareWorkers, inlineQueue(),
                         Job(static_cast<JobNode*>(&dismissal_)));
  } catch (const std::bad_alloc&) {
    const LockGuard guard(lock_);
    dismisses_ = false;  // with the next spare worker
  }
}

/// Those that no job has needed since the last dismissal, as many as there are too many.
WorkerPool::Worker* WorkerPool::takeSuperfluous() {
  Worker* taken = nullptr;
  for (auto** place = &idle_; *place != nullptr && workers_ - leaving_ > maximumWorkers_;) {
    auto* const worker = *place;
    if (worker->idleSince == dismissals_) {
      place = &worker->next;
      continue;
    }
    *place = worker->next;
    worker->leaves = true;
    ++leaving_;
    worker->next = std::exchange(taken, worker);
  }
  return taken;
}

/// On the timer's thread.
void WorkerPool::dismissSpareWorkers() {
  Worker* dismissed = nullptr;
  {
    const LockGuard guard(lock_);
    dismisses_ = workers_ > maximumWorkers_ && !ending_;
    if (!dismisses_) return;
    dismissed = takeSuperfluous();
    ++dismissals_;
  }
  while (dismissed != nullptr) {
    auto* const next = dismissed->next;  // it may be gone, and come back, once it is woken
    wake(*std::exchange(dismissed, next));
  }
  dismissLater();
}

}  // namespace orvo::detail
