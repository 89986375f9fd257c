#pragma once

#include <OrvoAPI/Futures/Promise.h>
#include <OrvoAPI/HTTP/URLError.h>

#include <atomic>
#include <coroutine>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>

namespace orvo::detail {

template <class T>
class CoroutinePromise;

/// A suspended coroutine: destroyed with this, unless it is resumed.
class Frame {
 public:
  explicit Frame(std::coroutine_handle<> handle) : handle_(handle) {}
  Frame(Frame&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
  Frame& operator=(Frame&& other) noexcept {
    std::swap(handle_, other.handle_);
    return *this;
  }
  ~Frame() {
    if (handle_) handle_.destroy();
  }

  explicit operator bool() const { return static_cast<bool>(handle_); }
  void resume() { std::exchange(handle_, nullptr).resume(); }

 private:
  std::coroutine_handle<> handle_;
};

/// A coroutine's wait for a future: a callback for its result and one for its cancel in one block,
/// freed when the future has let go of both. The first to come takes the frame and resumes the
/// coroutine; the callback for the result destroys it when it is dropped.
template <class T>
class Suspension final : public Continuation {
 public:
  /// `result` lies in the frame: only the callback that has taken the frame may touch it.
  Suspension(std::shared_ptr<DispatchQueue> queue, std::coroutine_handle<> frame,
             std::optional<Result<T>>& result)
      : queue_(std::move(queue)), frame_(frame.address()), result_(&result) {}

  /// Gives itself to the future. The coroutine may have resumed, elsewhere, before this returns.
  void waitFor(FutureCore& future) {
    if (future.isCompleted()) {
      onCancel_.drop();  // too late for a cancel to make a difference
    } else {
      future.add(&onCancel_, *queue_);
    }
    future.add(this);
  }

  [[nodiscard]] const std::shared_ptr<DispatchQueue>& queue() const override { return queue_; }

  void run() override {
    Frame frame = take();
    if (frame) takeResult();
    letGo();
    if (frame) frame.resume();
  }

  void drop() noexcept override {
    const Frame destroyed = take();
    letGo();
  }

 private:
  /// A result that cannot be copied resumes the coroutine with what the copy threw.
  void takeResult() {
    try {
      result_->emplace(*static_cast<const Result<T>*>(this->sourceResult()));
    } catch (...) {
      result_->emplace(Failure{AnyError::current()});
    }
  }

  /// Also the job that resumes with the cancellation, so that no memory is needed for one.
  class OnCancel final : public CancelCallback, public JobNode {
   public:
    explicit OnCancel(Suspension& whole) : whole_(whole) {}
    void call(bool completed) override {
      if (completed) return drop();
      // Taken now, not when the job runs: the cancel was there before a later completion.
      frame_ = whole_.take();
      const auto queue = whole_.queue_;
      queue->post(Job(static_cast<JobNode*>(this)));
    }
    Job intoJob(CoreRef<FutureCore> future) override {
      if (!future->isCompleted()) frame_ = whole_.take();
      return Job(static_cast<JobNode*>(this));
    }
    void run() override {
      Frame frame = std::move(frame_);
      if (frame) whole_.result_->emplace(Failure{URLError{URLError::cancelled, "cancelled"}});
      whole_.release();
      if (frame) frame.resume();
    }
    void drop() noexcept override {
      const Frame destroyed = std::move(frame_);
      whole_.release();
    }

   private:
    Suspension& whole_;
    Frame frame_{nullptr};
  };

  /// The frame, for the first caller only.
  Frame take() {
    void* const frame = frame_.exchange(nullptr, std::memory_order_acq_rel);
    return Frame(frame ? std::coroutine_handle<>::from_address(frame) : nullptr);
  }
  void letGo() noexcept {
    this->releaseSource();
    release();
  }
  void release() noexcept {
    if (holds_.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
  }

  const std::shared_ptr<DispatchQueue> queue_;
  std::atomic<void*> frame_;
  std::optional<Result<T>>* const result_;
  std::atomic<int> holds_{2};
  OnCancel onCancel_{*this};
};

/// What `co_await` makes of a future. It lies in the frame and holds the future only until the
/// coroutine is suspended.
template <class T>
class FutureAwaiter {
 public:
  FutureAwaiter(std::shared_ptr<DispatchQueue> queue, Future<T>&& future)
      : queue_(std::move(queue)), future_(std::move(future.core_)) {}

  [[nodiscard]] bool await_ready() const noexcept { return false; }
  /// For coroutines that return a `Future` only: the wait owns their frames.
  template <class U>
  [[gnu::noinline]] void await_suspend(std::coroutine_handle<CoroutinePromise<U>> frame) {
    // Once the wait has begun the frame may be gone, and with it this. Not inlined, lest a compiler
    // keep these variables in the frame.
    const auto future = std::move(future_);
    (new Suspension<T>(std::move(queue_), frame, result_))->waitFor(*future.get());
  }
  [[nodiscard]] Result<T> await_resume() { return *std::move(result_); }

 private:
  std::shared_ptr<DispatchQueue> queue_;
  CoreRef<FutureState<T>> future_;
  std::optional<Result<T>> result_;
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
