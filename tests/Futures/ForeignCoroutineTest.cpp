#include <OrvoAPI/Futures/Coroutine.h>
#include <OrvoAPI/Queues/SerialQueue.h>
#include <OrvoAPI/Testing/ManualQueue.h>
#include <gmock/gmock.h>
#include <tests/support/Test.h>

#include <coroutine>

namespace orvo {
namespace {

using testing::ElementsAre;

/// A coroutine that owns its frame itself, and runs to its end whatever comes.
struct Detached {
  struct promise_type {
    Detached get_return_object() { return {}; }
    std::suspend_never initial_suspend() { return {}; }
    std::suspend_never final_suspend() noexcept { return {}; }
    void return_void() {}
    void unhandled_exception() { std::terminate(); }
  };
};

/// A coroutine that goes with its handle.
class Task {
 public:
  struct promise_type : Detached::promise_type {
    Task get_return_object() {
      return Task(std::coroutine_handle<promise_type>::from_promise(*this));
    }
    std::suspend_always final_suspend() noexcept { return {}; }
  };
  Task(Task&& other) noexcept : frame_(std::exchange(other.frame_, nullptr)) {}
  Task& operator=(Task&&) = delete;
  ~Task() {
    if (frame_) frame_.destroy();
  }

 private:
  explicit Task(std::coroutine_handle<> frame) : frame_(frame) {}
  std::coroutine_handle<> frame_;
};

int numberOrCode(const Result<int>& result) {
  return result.failed() ? result.error()->as<URLError>()->code : *result.value();
}

class ForeignCoroutine : public testing::Test {
 protected:
  Task note(Future<int> future) { seen_.push_back(numberOrCode(co_await std::move(future))); }
  Task noteOn(std::shared_ptr<DispatchQueue> queue, Future<int> future) {
    seen_.push_back(numberOrCode(co_await resumeOn(std::move(queue), std::move(future))));
  }

  const std::shared_ptr<ManualQueue> queue_ = std::make_shared<ManualQueue>();
  const std::shared_ptr<ManualQueue> other_ = std::make_shared<ManualQueue>();
  std::optional<Promise<int>> promise_{queue_};
  std::vector<int> seen_;
};

TEST_F(ForeignCoroutine, GoesOnOnTheFuturesQueueOrTheOneNamedAndNeverAtOnce) {
  const Promise<int> cancelled(queue_);
  const auto early = note(promise_->future()), stopped = note(cancelled.future());
  promise_->success(1);
  cancelled.future().cancel();
  const auto late = note(promise_->future()), elsewhere = noteOn(other_, promise_->future());
  EXPECT_TRUE(seen_.empty());
  queue_->run();
  EXPECT_THAT(seen_, ElementsAre(1, URLError::cancelled, 1));
  other_->run();
  EXPECT_THAT(seen_, ElementsAre(1, URLError::cancelled, 1, 1));
}

TEST_F(ForeignCoroutine, GoesOnWithACancellationOnItsQueueWhenThePromiseIsDropped) {
  const auto waiting = note(promise_->future()), elsewhere = noteOn(other_, promise_->future());
  promise_.reset();
  const auto hopeless = note(Future<int>(queue_));
  EXPECT_TRUE(seen_.empty()) << "not where the promise was dropped";
  EXPECT_EQ(queue_->run(), 2U);
  EXPECT_EQ(other_->run(), 1U);
  EXPECT_THAT(seen_, ElementsAre(URLError::cancelled, URLError::cancelled, URLError::cancelled));
}

TEST_F(ForeignCoroutine, DestroyedWhileItWaitsIsNeverResumed) {
  const Promise<int> completed(queue_), cancelled(queue_);
  {
    const auto unposted = note(promise_->future()), once = note(completed.future());
    const auto stopped = note(cancelled.future()), hopeless = note(Future<int>(queue_));
    completed.success(1);
    cancelled.future().cancel();
    EXPECT_EQ(queue_->waiting(), 3U);
  }
  promise_.reset();
  queue_->run();
  EXPECT_TRUE(seen_.empty());
}

TEST_F(ForeignCoroutine, StaysAsItIsWhenItsQueueDestroysTheJob) {
  /// The queue of a loop that has ended.
  class DeadQueue final : public DispatchQueue {
    void post(Job) override {}
  };
  const auto queue = std::make_shared<DeadQueue>();
  const auto held = std::make_shared<int>(0);
  const auto wait = [](Future<int> future, std::shared_ptr<int> value) -> Task {
    *value = numberOrCode(co_await std::move(future));
  };
  {
    const Future<int> completed(queue), cancelled(queue);
    const auto first = wait(completed, held), second = wait(cancelled, held);
    const auto third = wait(Future<int>(queue), held);
    completed.success(1);
    cancelled.cancel();
    EXPECT_EQ(held.use_count(), 4);
  }
  EXPECT_EQ(held.use_count(), 1);
  EXPECT_EQ(*held, 0);
}

/// Notes that a frame has gone.
struct Local {
  test::Signal& gone;
  ~Local() { gone.tell(); }
};

TEST(ForeignCoroutineRace, NoneIsLostHoweverCompletionCancelAndDropMeetItsWait) {
  constexpr int kRounds = 500;
  test::Signal gone;
  std::atomic<int> wrong = 0;
  const auto wait = [](Future<int> future, test::Signal& signal, auto& mistakes) -> Detached {
    const Local local{signal};
    const int code = numberOrCode(co_await std::move(future));
    mistakes += code != 1 && code != URLError::cancelled;
  };
  std::array<Future<int>, test::kRacers> handles;
  test::race(
      kRounds,
      [&](int) {
        handles.fill(Promise<int>().future());
        wait(handles[0], gone, wrong);
      },
      [&](int racer, int round) {
        const auto own = std::exchange(handles[static_cast<std::size_t>(racer)], {});
        if (racer == 0 && round % 2 == 0) own.complete(1);
        if (racer == 1 && round % 3 == 0) own.cancel();
        if (racer == 2) wait(own, gone, wrong);
      });
  EXPECT_TRUE(gone.wait(2 * kRounds));
  EXPECT_EQ(wrong, 0);
}

TEST(ForeignCoroutineRace, OneThatIsDestroyedOnItsQueueIsNotResumedAfterwards) {
  constexpr int kRounds = 500;
  const auto queue = SerialQueue::make("owner");
  test::Signal gone;
  std::atomic<int> wrong = 0;
  const auto wait = [](Future<int> future, test::Signal& signal, auto& mistakes) -> Task {
    const Local local{signal};
    const int code = numberOrCode(co_await std::move(future));
    mistakes += code != 1 && code != URLError::cancelled;
  };
  std::array<Future<int>, test::kRacers> handles;
  std::optional<Task> task;
  test::race(
      kRounds,
      [&](int) {
        handles.fill(Promise<int>(queue).future());
        task.emplace(wait(handles[0], gone, wrong));
      },
      [&](int racer, int round) {
        const auto own = std::exchange(handles[static_cast<std::size_t>(racer)], {});
        if (racer == 0 && round % 2 == 0) own.complete(1);
        if (racer == 1 && round % 3 == 0) own.cancel();
        if (racer == 2) {
          queue->post([destroyed = std::move(*task)] {});
          task.reset();
        }
      });
  EXPECT_TRUE(gone.wait(kRounds));
  EXPECT_EQ(wrong, 0);
}

}  // namespace
}  // namespace orvo
