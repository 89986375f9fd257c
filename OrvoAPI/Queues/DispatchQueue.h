#pragma once

#include <OrvoAPI/Queues/Job.h>

#include <chrono>
#include <memory>
#include <string>

namespace orvo {

/// Runs jobs somewhere, later. Implement it to have callbacks on an event loop of your own: `post`
/// is called from any thread, must never run the job itself, and must not throw. Held by shared
/// pointers: outstanding work keeps its queue alive, and so do the jobs waiting in it. So a queue
/// whose loop has ended must destroy the jobs that it has not run, and any that are posted later.
///
/// An exception that a job throws propagates to whoever runs it. On the library's threads it
/// terminates the process; a loop of your own decides for itself.
class DispatchQueue : public std::enable_shared_from_this<DispatchQueue> {
 public:
  DispatchQueue() = default;
  DispatchQueue(const DispatchQueue&) = delete;
  DispatchQueue& operator=(const DispatchQueue&) = delete;
  virtual ~DispatchQueue() = default;

  /// Enqueues the job, to be run once, later.
  virtual void post(Job job) = 0;

  /// Posts the job when the delay has passed, by a clock that also runs while the device sleeps. A
  /// delay of zero or less posts it at once. The queue is kept alive until then. Throws
  /// `std::bad_alloc` when the system refuses memory for it or, the first time, a descriptor or a
  /// thread; the job is then destroyed.
  virtual void postAfter(std::chrono::milliseconds delay, Job job);

  /// For debugging.
  [[nodiscard]] virtual std::string label() const { return {}; }

  /// The concurrent queue: a few worker threads, started as needed, that all serial queues share.
  /// Lives as long as the process.
  ///
  /// There are as many workers as processors, at least two, and a job that blocks holds one of
  /// them. When jobs wait and no worker has come back for about 50 ms, a spare one is started, up
  /// to 16 of them; a line in the log says so once. Spare workers leave after some seconds without
  /// work. While all of these are blocked, nothing that runs on the workers makes progress,
  /// timeouts included.
  [[nodiscard]] static std::shared_ptr<DispatchQueue> global();

  /// True on a thread that must not block: the library's own, and the one that the main queue
  /// currently runs on.
  [[nodiscard]] static bool isBlockingRefused();
};

}  // namespace orvo
