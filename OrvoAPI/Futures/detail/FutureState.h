#pragma once

#include <OrvoAPI/Futures/Result.h>
#include <OrvoAPI/Futures/detail/FutureCore.h>

#include <atomic>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

namespace orvo::detail {

/// The state of a future with the type of its value: holds the results, of which the first lies in
/// the block itself.
template <class T>
class FutureState : public FutureCore {
  static_assert(std::is_nothrow_move_constructible_v<T>);

 public:
  explicit FutureState(std::shared_ptr<DispatchQueue> callbackQueue)
      : FutureCore(std::move(callbackQueue)) {}
  FutureState(std::shared_ptr<DispatchQueue> callbackQueue, FutureCore& source)
      : FutureCore(std::move(callbackQueue), source) {}

  [[nodiscard]] const Result<T>* result() const {
    return static_cast<const Result<T>*>(this->currentResult());
  }

  /// Takes the result in any case.
  void complete(Result<T>&& result) {
    if (!this->claimFirstResult()) return replace(std::move(result));
    std::construct_at(&first_.result, std::move(result));
    this->publish(&first_.result);
  }
  /// Takes the result unless the future is cancelled.
  void settle(Result<T>&& result) {
    if (!this->isCancelled()) complete(std::move(result));
  }

 protected:
  ~FutureState() override {
    if (!this->hasFirstResult()) return;
    std::destroy_at(&first_.result);
    if (auto* const later = later_.load(std::memory_order_relaxed)) destroyLater(later);
  }

 private:
  struct Later {
    Result<T> result;
    Later* older;
  };
  // Out of line, because it is rare. Without memory the result that is there stays: whoever
  // completes a future of the library's may be a thread that could do nothing with an exception.
  [[gnu::noinline]] void replace(Result<T>&& result) {
    auto* const later =
        new (std::nothrow) Later{std::move(result), later_.load(std::memory_order_relaxed)};
    if (later == nullptr) return;
    while (!later_.compare_exchange_weak(later->older, later, std::memory_order_acq_rel)) {
    }
    this->publish(&later->result);
  }
  [[gnu::noinline]] static void destroyLater(Later* later) {
    while (later != nullptr) {
      const std::unique_ptr<Later> last(std::exchange(later, later->older));
    }
  }
  union First {
    First() {}
    ~First() {}
    Result<T> result;
  };

  First first_;
  std::atomic<Later*> later_{nullptr};
};

/// Calls a task with the result of a future, on a queue.
template <class T, class F>
class TaskContinuation final : public Continuation {
 public:
  template <class From>
  TaskContinuation(std::shared_ptr<DispatchQueue> queue, From&& task)
      : queue_(std::move(queue)), task_(std::forward<From>(task)) {}

  [[nodiscard]] const std::shared_ptr<DispatchQueue>& queue() const override { return queue_; }
  void run() override {
    const std::unique_ptr<TaskContinuation> self(this);
    task_(*static_cast<const Result<T>*>(this->sourceResult()));
  }
  void drop() noexcept override { delete this; }

 private:
  friend std::default_delete<TaskContinuation>;
  ~TaskContinuation() { this->releaseSource(); }

  const std::shared_ptr<DispatchQueue> queue_;
  F task_;
};

template <class F>
class TaskCancelCallback final : public CancelCallback {
 public:
  template <class From>
  explicit TaskCancelCallback(From&& task) : task_(std::forward<From>(task)) {}

  void call(bool completed) override {
    const std::unique_ptr<TaskCancelCallback> self(this);
    task_(completed);
  }
  void drop() noexcept override { delete this; }
  Job intoJob(CoreRef<FutureCore> future) override {
    return
        [future = std::move(future), self = std::unique_ptr<TaskCancelCallback>(this)]() mutable {
          self.release()->call(future->isCompleted());
        };
  }

 private:
  F task_;
};

}  // namespace orvo::detail
