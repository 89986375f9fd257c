#include <OrvoAPI/Futures/Coroutine.h>
#include <OrvoAPI/Testing/ManualQueue.h>
#include <gmock/gmock.h>
#include <tests/support/Outcome.h>
#include <tests/support/Test.h>

namespace orvo {
namespace {

using testing::ElementsAre;

struct Thrown {};
using Held = std::shared_ptr<int>;

/// The value, or the code of the `URLError`.
int valueOrCode(const Result<int>& result) {
  return result.failed() ? result.error()->as<URLError>()->code : *result.value();
}

class Coroutine : public testing::Test {
 protected:
  /// Notes what the future gives.
  Future<bool> note(Future<int> future) {
    seen_.push_back(valueOrCode(co_await std::move(future)));
    co_return true;
  }
  Future<bool> noteOn(std::shared_ptr<DispatchQueue> queue, Future<int> future) {
    seen_.push_back(valueOrCode(co_await resumeOn(std::move(queue), std::move(future))));
    co_return true;
  }
  /// One more than the future's value. Holds something until it ends.
  static Future<int> plusOne(Future<int> future, Held held) {
    const auto result = co_await std::move(future);
    co_return *held + result.force() + 1;
  }

  const Held held_ = std::make_shared<int>(0);
  std::shared_ptr<ManualQueue> queue_ = std::make_shared<ManualQueue>();
  std::optional<Promise<int>> promise_{queue_};
  const std::shared_ptr<ManualQueue> other_ = std::make_shared<ManualQueue>();
  std::vector<int> seen_;
};

using CoroutineCancel = Coroutine;
using CoroutineLifetime = Coroutine;

TEST_F(Coroutine, ResumesWithWhatTheCopyOfAResultThrew) {
  struct Refused {
    Refused() = default;
    Refused(Refused&&) noexcept = default;
    Refused(const Refused&) { throw std::bad_alloc(); }
  };
  const auto hasFailed = [](Future<Refused> future) -> Future<bool> {
    co_return (co_await std::move(future)).failed();
  };
  const Promise<Refused> promise;
  const auto outcome = hasFailed(promise.future());
  promise.success(Refused());
  EXPECT_TRUE(valueOf(outcome));
}

TEST_F(Coroutine, GoesOnOnTheFuturesQueueOrTheOneNamedAndNeverAtOnce) {
  note(promise_->future());
  promise_->success(1);
  note(promise_->future());
  noteOn(other_, promise_->future());
  EXPECT_TRUE(seen_.empty());
  queue_->run();
  EXPECT_THAT(seen_, ElementsAre(1, 1));
  other_->run();
  EXPECT_THAT(seen_, ElementsAre(1, 1, 1));
}

TEST_F(Coroutine, EndsWithWhatItReturnsOrThrows) {
  const auto convert = []() -> Future<std::string> { co_return "text"; };
  const auto fail = []() -> Future<int> { co_return Failure{Thrown{}}; };
  const auto pass = [](Result<int> result) -> Future<int> { co_return result; };
  const auto raise = [](std::size_t far) -> Future<int> { co_return std::string("near").at(far); };
  const auto force = [](Future<int> f) -> Future<int> {
    co_return (co_await std::move(f)).force();
  };
  const auto converted = convert();
  const auto failed = fail(), passed = pass(7), raised = raise(9);
  EXPECT_EQ(*converted.value(), "text") << "one that never waits is done on return";
  EXPECT_TRUE(failed.error()->is<Thrown>());
  EXPECT_EQ(*passed.value(), 7);
  EXPECT_TRUE(raised.error()->is<std::out_of_range>());
  const auto forced = force(failed);
  EXPECT_TRUE(errorOf(forced).is<Thrown>()) << "not wrapped";
}

TEST_F(Coroutine, CompletesItsFutureAfterItsVariablesAndParametersHaveGone) {
  /// Notes how many hold the value when it is posted to.
  class Counting final : public DispatchQueue {
   public:
    explicit Counting(const Held& held) : held_(held) {}
    void post(Job) override { holders = held_.use_count(); }
    long holders = 0;

   private:
    const Held& held_;
  };
  const auto counting = std::make_shared<Counting>(held_);
  const auto future = plusOne(promise_->future(), held_).onComplete(counting, [](const auto&) {});
  EXPECT_EQ(held_.use_count(), 2);
  promise_->success(1);
  queue_->run();
  EXPECT_EQ(counting->holders, 1);
  EXPECT_EQ(*future.value(), 2);
}

TEST_F(CoroutineCancel, OrCompletionWhicheverCameFirstIsWhatAWaitGivesOnce) {
  const Promise<int> completed(queue_);
  note(completed.future());
  completed.success(1);
  completed.future().cancel();
  note(completed.future());
  noteOn(other_, promise_->future());
  promise_->future().cancel();
  note(promise_->future());
  promise_->complete(2);
  EXPECT_TRUE(seen_.empty());
  queue_->run();
  other_->run();
  EXPECT_THAT(seen_, ElementsAre(1, 1, URLError::cancelled, URLError::cancelled));
}

TEST_F(CoroutineCancel, OfWhatItReturnedDropsTheOutcomeAndReachesNothing) {
  const auto cancelled = plusOne(promise_->future(), held_);
  (void)plusOne(promise_->future(), held_);
  cancelled.cancel();
  EXPECT_FALSE(promise_->future().isCancelled());
  EXPECT_EQ(held_.use_count(), 3) << "both go on, the one too whose future was dropped";
  promise_->success(1);
  EXPECT_EQ(queue_->run(), 2U);
  EXPECT_FALSE(cancelled.didComplete());
  EXPECT_EQ(held_.use_count(), 1);
}

TEST_F(CoroutineLifetime, ADroppedPromiseDestroysTheFramesThatWaitForIt) {
  const auto last = plusOne(plusOne(promise_->future(), held_), held_);
  EXPECT_EQ(held_.use_count(), 3);
  promise_.reset();
  EXPECT_EQ(held_.use_count(), 1);
  EXPECT_FALSE(last.didComplete());
  (void)plusOne(Future<int>(), held_);
  EXPECT_EQ(held_.use_count(), 1) << "nobody could ever complete that one";
}

TEST_F(CoroutineLifetime, AQueueThatDestroysItsJobsDestroysTheFrames) {
  /// The queue of a loop that has ended.
  class DeadQueue final : public DispatchQueue {
    void post(Job) override {}
  };
  const Future<int> completed(std::make_shared<DeadQueue>());
  const Future<int> cancelled(completed.callbackQueue());
  (void)plusOne(completed, held_);
  (void)plusOne(cancelled, held_);
  EXPECT_EQ(held_.use_count(), 3);
  completed.success(1);
  cancelled.cancel();
  (void)plusOne(completed, held_);
  (void)plusOne(cancelled, held_);
  EXPECT_EQ(held_.use_count(), 1);
}

TEST_F(CoroutineLifetime, ManyFramesInARowEndAndGoInLoops) {
  constexpr int kLong = 50'000;
  const auto chain = [this] {
    auto future = promise_->future();
    for (int i = 0; i < kLong; ++i) future = plusOne(std::move(future), held_);
    return future;
  };
  const auto last = chain();
  promise_->success(0);
  queue_->run();
  EXPECT_EQ(last.wait(std::chrono::seconds(60)).force(), kLong);
  promise_.emplace(queue_);
  (void)chain();
  promise_.reset();
  EXPECT_EQ(held_.use_count(), 1);
}

TEST_F(CoroutineLifetime, AWaitInALoopNeitherRecursesNorKeepsAnything) {
  const auto loop = [](Future<int> source, Held held) -> Future<int> {
    for (; *held < 50'000; ++*held) (void)co_await source;
    co_return *held;
  };
  EXPECT_EQ(loop(Future<int>::completed(1), held_).wait(std::chrono::seconds(60)).force(), 50'000);
  EXPECT_EQ(held_.use_count(), 1);
}

TEST(CoroutineRace, EveryFrameGoesHoweverCompletionCancelAndDropMeetItsWait) {
  constexpr int kRounds = 500;
  struct Local {
    test::Signal& gone;
    ~Local() { gone.tell(); }
  };
  test::Signal gone;
  std::atomic<int> wrong = 0;
  const auto wait = [](Future<int> future, test::Signal& signal, auto& mistakes) -> Future<bool> {
    const Local local{signal};
    const int code = valueOrCode(co_await std::move(future));
    mistakes += code != 1 && code != URLError::cancelled;
    co_return true;
  };
  std::array<Future<int>, test::kRacers> handles;
  test::race(
      kRounds,
      [&](int) {
        handles.fill(Promise<int>().future());
        (void)wait(handles[0], gone, wrong);
      },
      [&](int racer, int round) {
        const auto own = std::exchange(handles[static_cast<std::size_t>(racer)], {});
        if (racer == 0 && round % 2 == 0) own.complete(1);
        if (racer == 1 && round % 3 != 0) own.cancel();
        if (racer == 2) (void)wait(own, gone, wrong);
      });
  EXPECT_TRUE(gone.wait(2 * kRounds));
  EXPECT_EQ(wrong, 0);
}

}  // namespace
}  // namespace orvo
