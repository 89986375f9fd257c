#pragma once

#include <OrvoAPI/Futures/Promise.h>
#include <OrvoAPI/Testing/detail/Locked.h>

#include <chrono>
#include <cstddef>
#include <deque>
#include <memory>
#include <utility>

namespace orvo {

/// The calls of one operation of a stub, for a test to settle when and in the order it likes; they
/// are numbered from 0 in the order in which they came. Thread-safe. A number that no call has
/// throws `std::out_of_range`.
template <class T>
class PendingCalls {
 public:
  /// The futures' callbacks run on the queue unless they name another.
  explicit PendingCalls(std::shared_ptr<DispatchQueue> callbackQueue)
      : callbackQueue_(std::move(callbackQueue)) {}

  /// How many calls there were, settled or not.
  [[nodiscard]] std::size_t count() const {
    return promises_.with([](const Promises& promises) { return promises.size(); });
  }

  /// Waits until there were that many calls; false when the limit has passed. For calls that come
  /// from another thread.
  [[nodiscard]] bool waitForCount(
      std::size_t count, std::chrono::milliseconds limit = std::chrono::seconds(10)) const {
    return promises_.waitUntil([&](const Promises& promises) { return promises.size() >= count; },
                               limit);
  }

  void succeed(std::size_t call, T value) { promise(call).success(std::move(value)); }
  void fail(std::size_t call, AnyError error) { promise(call).failure(std::move(error)); }
  [[nodiscard]] bool isCancelled(std::size_t call) const {
    return promise(call).future().isCancelled();
  }

  /// For stubs: a new call's future.
  [[nodiscard]] Future<T> add() {
    const Promise<T> promise(callbackQueue_);
    promises_.change([&](Promises& promises) { promises.push_back(promise); });
    return promise.future();
  }

 private:
  using Promises = std::deque<Promise<T>>;

  [[nodiscard]] const Promise<T>& promise(std::size_t call) const {
    return promises_.with([&](const Promises& promises) -> const Promise<T>& {
      return promises.at(call);  // stays where it is when others come
    });
  }

  const std::shared_ptr<DispatchQueue> callbackQueue_;
  detail::Locked<Promises> promises_;
};

}  // namespace orvo
