#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <utility>

namespace orvo::detail {

/// A value together with its lock: neither is reached without the other.
template <class T>
class Locked {
 public:
  Locked() = default;
  explicit Locked(T value) : value_(std::move(value)) {}

  /// What `task` returns for the value; it runs under the lock.
  template <class F>
  decltype(auto) with(F&& task) {
    const std::lock_guard guard(mutex_);
    return std::forward<F>(task)(value_);
  }
  template <class F>
  decltype(auto) with(F&& task) const {
    const std::lock_guard guard(mutex_);
    return std::forward<F>(task)(value_);
  }

  /// Changes the value, and makes the threads that wait check it.
  template <class F>
  void change(F&& task) {
    const std::lock_guard guard(mutex_);
    std::forward<F>(task)(value_);
    changed_.notify_all();
  }
  /// Waits until `holds` is true of the value; false when the limit has passed.
  template <class F>
  [[nodiscard]] bool waitUntil(F&& holds, std::chrono::milliseconds limit) const {
    std::unique_lock guard(mutex_);
    return changed_.wait_for(guard, limit, [&] { return holds(value_); });
  }

 private:
  mutable std::mutex mutex_;
  mutable std::condition_variable changed_;
  T value_;
};

}  // namespace orvo::detail
