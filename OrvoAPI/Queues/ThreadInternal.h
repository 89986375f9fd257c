#pragma once

#include <OrvoAPI/Base/MutexInternal.h>
#include <OrvoAPI/Queues/Job.h>

#include <pthread.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <optional>

namespace orvo::detail {

/// Starts a detached thread of the library's own, with a name for debugging. Signals are blocked on
/// it: the app's handlers run on the app's threads only; those that a faulty instruction raises are
/// not, so that the app's crash reports are complete. What `body` throws terminates the process.
/// False when the system has no thread to give.
[[nodiscard]] bool startThread(const char* name, void (*body)());

/// As `startThread`, for a thread that is joined.
[[nodiscard]] std::optional<pthread_t> startJoinableThread(const char* name, void (*body)());
/// Waits until the thread and its thread-local state are gone, or the time has passed, on a clock
/// that cannot be set; on the thread itself not at all. Call it once.
void joinWithin(pthread_t thread, std::chrono::milliseconds patience);

/// True on a thread that `startThread` started.
[[nodiscard]] bool isLibraryThread();

/// Counts the running threads of a kind, so that their end can be waited for.
class ThreadCount {
 public:
  void add();
  void remove();
  /// Waits until no more than `count` run, or the time has passed.
  void waitUntilAtMost(unsigned count, std::chrono::milliseconds patience);

 private:
  Mutex mutex_;
  std::condition_variable changed_;
  unsigned count_ ORVO_GUARDED_BY(mutex_) = 0;
};

/// What ends with the process, in this order: nothing new arrives from the network or the timer
/// while the queues that would run it come to rest.
enum class ExitStage { network, timer, mainQueue, workers };

extern std::atomic<bool> wasForked;
/// True in a process forked from one in which threads of the library were running: it has none of
/// them, so nothing may wait for them, and what they were working on, locks included, stays as it
/// was at the fork.
[[nodiscard]] inline bool isForkedChild() { return wasForked.load(std::memory_order_relaxed); }
/// Runs a job on the calling thread, as the library's queues do in a forked child: at once, or,
/// within such a job, after it.
void runInForkedChild(Job job) noexcept;

/// How long all stages together wait for their threads, and one in any case.
constexpr std::chrono::milliseconds kExitPatience{2000};
constexpr std::chrono::milliseconds kLeastExitPatience{100};
extern std::atomic<std::chrono::steady_clock::duration> spentAtExit;
/// Waits by `wait(patience)` for the threads of one stage, on the thread that exits: for as long as
/// those before it have left, so that callbacks which block hold up the end of a process once.
template <class Wait>
void waitAtExit(Wait wait) {
  const auto begin = std::chrono::steady_clock::now();
  const auto left =
      std::chrono::ceil<std::chrono::milliseconds>(kExitPatience - spentAtExit.load());
  wait(std::max(left, kLeastExitPatience));
  spentAtExit = spentAtExit.load() + (std::chrono::steady_clock::now() - begin);
}
/// Registers a handler with the process; too late once all of them have been run.
enum class Registration { done, tooLate, noMemory };
[[nodiscard]] Registration registerExitHandler(void (*handler)());

/// Calls `end` once when the process exits, in the order of the stages, but not when a forked child
/// does. It must wait for a limited time at most, and for no longer than its own threads need.
/// False when the process is exiting already: nothing will call it.
bool atProcessExit(ExitStage stage, void (*end)());

}  // namespace orvo::detail
