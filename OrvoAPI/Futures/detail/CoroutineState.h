#pragma once

#include <OrvoAPI/Futures/Promise.h>
#include <OrvoAPI/Futures/detail/Suspension.h>

#include <coroutine>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>

namespace orvo::detail {

template <class T>
class CoroutinePromise;

/// The wait of a frame that has an owner, withdrawn when the frame is destroyed.
template <class T>
class Withdrawal {
 public:
  using Wait = Suspension<T, FrameOwner::somebody>;
  Withdrawal() = default;
  Withdrawal(Withdrawal&& other) noexcept : wait_(std::exchange(other.wait_, nullptr)) {}
  Withdrawal& operator=(Withdrawal&&) = delete;
  ~Withdrawal() {
    if (wait_ != nullptr) wait_->withdraw();
  }
  void from(Wait& wait) { wait_ = &wait; }

 private:
  Wait* wait_ = nullptr;
};

/// What `co_await` makes of a future. It lies in the frame and holds the future only until the
/// coroutine is suspended.
template <class T>
class FutureAwaiter {
 public:
  FutureAwaiter(std::shared_ptr<DispatchQueue> queue, Future<T>&& future)
      : queue_(std::move(queue)), future_(std::move(future.core_)) {}

  [[nodiscard]] bool await_ready() const noexcept { return false; }
  // Once a wait has begun the frame may be gone, and with it this. Not inlined, lest a compiler
  // keep these variables in the frame.
  template <class U>
  [[gnu::noinline]] void await_suspend(std::coroutine_handle<CoroutinePromise<U>> frame) {
    const auto future = std::move(future_);
    using Wait = Suspension<T, FrameOwner::wait>;
    (new Wait(std::move(queue_), frame, result_))->waitFor(*future.get());
  }
  template <class P>
  [[gnu::noinline]] void await_suspend(std::coroutine_handle<P> frame) {
    const auto future = std::move(future_);
    using Wait = Suspension<T, FrameOwner::somebody>;
    auto* const wait = new Wait(std::move(queue_), frame, result_);
    withdrawal_.from(*wait);
    wait->waitFor(*future.get());
  }
  [[nodiscard]] Result<T> await_resume() { return *std::move(result_); }

 private:
  std::shared_ptr<DispatchQueue> queue_;
  CoreRef<FutureState<T>> future_;
  std::optional<Result<T>> result_;
  Withdrawal<T> withdrawal_;
};

/// The side of a coroutine that completes the future that it returned.
template <class T>
class CoroutinePromise {
 public:
  [[nodiscard]] Future<T> get_return_object() const { return promise_.future(); }
  [[nodiscard]] std::suspend_never initial_suspend() const noexcept { return {}; }
  [[nodiscard]] auto final_suspend() const noexcept { return Finish(); }
  void return_value(Result<T> result) { result_.emplace(std::move(result)); }
  template <class U = T>
  requires(std::is_convertible_v<U, T> &&
           !std::is_convertible_v<U, Result<T>>) void return_value(U&& value) {
    result_.emplace(T(std::forward<U>(value)));
  }
  void unhandled_exception() { result_.emplace(Failure{AnyError::current()}); }

 private:
  /// Destroys the frame, then completes: whoever sees the result sees nothing of the frame.
  struct Finish {
    [[nodiscard]] bool await_ready() const noexcept { return false; }
    [[gnu::noinline]] void await_suspend(
        std::coroutine_handle<CoroutinePromise> frame) const noexcept {
      const auto promise = std::move(frame.promise().promise_);
      auto& result = *frame.promise().result_;
      if (result.failed()) {
        auto error = *result.error();
        frame.destroy();
        promise.failure(std::move(error));
      } else {
        auto value = std::move(*result.value());
        frame.destroy();
        promise.success(std::move(value));
      }
    }
    void await_resume() const noexcept {}
  };

  Promise<T> promise_;
  std::optional<Result<T>> result_;
};

}  // namespace orvo::detail
