#pragma once

#include <OrvoAPI/Futures/Result.h>
#include <OrvoAPI/Futures/detail/FutureCore.h>
#include <OrvoAPI/HTTP/URLError.h>
#include <OrvoAPI/Queues/DispatchQueue.h>

#include <atomic>
#include <coroutine>
#include <memory>
#include <optional>
#include <utility>

namespace orvo::detail {

/// Whose frame a wait resumes.
enum class FrameOwner {
  wait,      // a coroutine that returns a `Future`: the wait destroys the frame when nothing comes
  somebody,  // any other: whoever owns the frame may destroy it while it waits
};

/// A coroutine's wait for a future: a callback for its result and one for its cancel in one block,
/// freed when the future has let go of both, and the awaiter too when the frame has an owner. The
/// first to come resumes the coroutine:
///
///     waiting --result--> over
///     waiting --cancel, or an owned frame and the promise was dropped--> ending --job--> over
///     waiting or ending --awaiter destroyed--> over, with nothing resumed
///
/// The frame, in which the result is put, is touched only by whom the state lets go on to `over`.
template <class T, FrameOwner owner>
class Suspension final : public Continuation {
 public:
  Suspension(std::shared_ptr<DispatchQueue> queue, std::coroutine_handle<> frame,
             std::optional<Result<T>>& result)
      : queue_(std::move(queue)), frame_(frame), result_(&result) {}

  /// Gives itself to the future. The coroutine may have resumed, elsewhere, before this returns.
  void waitFor(FutureCore& future) {
    if (future.isCompleted()) {
      release();  // too late for a cancel to make a difference
    } else {
      future.add(&onCancel_, *queue_);
    }
    future.add(this);
  }

  /// For the awaiter: the frame is being destroyed, or has been resumed.
  void withdraw() noexcept {
    state_.exchange(State::over, std::memory_order_acq_rel);
    release();
  }

  [[nodiscard]] const std::shared_ptr<DispatchQueue>& queue() const override { return queue_; }

  void run() override {
    const bool isFirst = advance(State::waiting, State::over);
    if (isFirst) takeResult();
    const auto frame = frame_;
    letGo();
    if (isFirst) frame.resume();
  }

  void drop() noexcept override {
    const auto frame = frame_;
    if constexpr (owner == FrameOwner::wait) {
      const bool isFirst = advance(State::waiting, State::over);
      letGo();
      if (isFirst) frame.destroy();
    } else if (this->source() == nullptr && advance(State::waiting, State::ending)) {
      onCancel_.post();  // with the hold of this callback
    } else {
      letGo();
    }
  }

 private:
  enum class State { waiting, ending, over };

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
      // Told now, not when the job runs: the cancel was there before a later completion.
      if (!completed && whole_.advance(State::waiting, State::ending)) {
        post();
      } else {
        whole_.release();
      }
    }
    Job intoJob(CoreRef<FutureCore> future) override {
      if (!future->isCompleted()) whole_.advance(State::waiting, State::ending);
      return Job(static_cast<JobNode*>(this));
    }
    void post() {
      const auto queue = whole_.queue_;
      queue->post(Job(static_cast<JobNode*>(this)));
    }
    void run() override {
      const bool isFirst = whole_.advance(State::ending, State::over);
      if (isFirst) {
        whole_.result_->emplace(Failure{URLError{URLError::cancelled, "cancelled"}});
      }
      const auto frame = whole_.frame_;
      whole_.release();
      if (isFirst) frame.resume();
    }
    /// By a queue, or with a future that was never cancelled.
    void drop() noexcept override {
      const bool isFirst = owner == FrameOwner::wait && whole_.advance(State::ending, State::over);
      const auto frame = whole_.frame_;
      whole_.release();
      if (isFirst) frame.destroy();
    }

   private:
    Suspension& whole_;
  };

  /// True for the one caller that the state lets go on.
  bool advance(State from, State to) noexcept {
    return state_.compare_exchange_strong(from, to, std::memory_order_acq_rel);
  }
  void letGo() noexcept {
    this->releaseSource();
    release();
  }
  void release() noexcept {
    if (holds_.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
  }

  const std::shared_ptr<DispatchQueue> queue_;
  const std::coroutine_handle<> frame_;
  std::optional<Result<T>>* const result_;
  std::atomic<State> state_{State::waiting};
  std::atomic<int> holds_{owner == FrameOwner::wait ? 2 : 3};
  OnCancel onCancel_{*this};
};

}  // namespace orvo::detail
