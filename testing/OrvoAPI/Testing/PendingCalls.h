#pragma once

#include <OrvoAPI/Futures/Promise.h>

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <memory>
#include <mutex>
#include <utility>

namespace orvo {

/// The calls of one operation of a stub, for a test to settle when and in the order it likes; they
/// are numbered from 0 in the order in which they came. Safe to use from any thread. A number that
/// no call has throws `std::out_of_range`.
template <class T>
class PendingCalls {
 public:
  /// The futures' callbacks run on the queue unless they name another.
  explicit PendingCalls(std::shared_ptr<DispatchQueue> callbackQueue)
      : callbackQueue_(std::move(callbackQueue)) {}

  /// How many calls there were, settled or not.
  [[nodiscard]] std::size_t count() const {
    const std::lock_guard guard(lock_);
    return promises_.size();
  }

  /// Waits until there were so many calls; false when the time is over. For calls that come from
  /// another thread.
  [[nodiscard]] bool waitForCount(
      std::size_t count, std::chrono::milliseconds limit = std::chrono::seconds(10)) const {
    std::unique_lock guard(lock_);
    return came_.wait_for(guard, limit, [&] { return promises_.size() >= count; });
  }

  void succeed(std::size_t call, T value) { promise(call).success(std::move(value)); }
  void fail(std::size_t call, AnyError error) { promise(call).failure(std::move(error)); }
  [[nodiscard]] bool isCancelled(std::size_t call) const {
    return promise(call).future().isCancelled();
  }

  /// For stubs: a new call's future.
  [[nodiscard]] Future<T> add() {
    const Promise<T> promise(callbackQueue_);
    const std::lock_guard guard(lock_);
    promises_.push_back(promise);
    came_.notify_all();
    return promise.future();
  }

 private:
  [[nodiscard]] const Promise<T>& promise(std::size_t call) const {
    const std::lock_guard guard(lock_);
    return promises_.at(call);  // stays where it is when others come
  }

  const std::shared_ptr<DispatchQueue> callbackQueue_;
  mutable std::mutex lock_;
  mutable std::condition_variable came_;
  std::deque<Promise<T>> promises_;  // guarded by lock_
};

}  // namespace orvo
