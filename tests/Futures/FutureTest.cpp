#include <OrvoAPI/Futures/Promise.h>
#include <OrvoAPI/Queues/QueueLabels.h>
#include <OrvoAPI/Testing/ManualQueue.h>
#include <gmock/gmock.h>
#include <malloc.h>
#include <tests/support/Test.h>

namespace orvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct Refused {};

/// A queue whose `post` does something more, as an app's own may.
struct MeddlingQueue final : DispatchQueue {
  void post(Job job) override {
    if (const auto once = std::exchange(meddle, nullptr)) once();
    jobs.post(std::move(job));
  }
  ManualQueue jobs;
  std::function<void()> meddle;
};

class FutureTest : public testing::Test {
 protected:
  /// A callback that notes its number and the value it is given.
  [[nodiscard]] auto note(int number) {
    return [this, number](const Result<int>& result) {
      seen_.emplace_back(number, result.failed() ? -1 : *result.value());
    };
  }
  using Seen = std::pair<int, int>;

  const std::shared_ptr<ManualQueue> queue_ = std::make_shared<ManualQueue>();
  const Promise<int> promise_{queue_};
  const Future<int> future_ = promise_.future();
  std::vector<Seen> seen_;
};

using FutureCompletion = FutureTest;

TEST_F(FutureCompletion, ASecondReplacesTheValueAndCallsNobodyTwice) {
  future_.onComplete(note(1));
  promise_.success(1);
  const auto* const first = future_.value();
  promise_.success(2);
  future_.onComplete(note(2));
  promise_.failure(Refused{});
  EXPECT_TRUE(future_.didFail());
  EXPECT_EQ(*first, 1) << "who holds the older result reads on";
  queue_->run();
  EXPECT_THAT(seen_, ElementsAre(Seen(1, 1), Seen(2, 2)));
}

TEST_F(FutureCompletion, PostsInTheOrderOfRegistrationEvenWhenAQueueMeddlesMeanwhile) {
  const auto meddling = std::make_shared<MeddlingQueue>();
  future_.onComplete(meddling, note(1)).onComplete(meddling, note(2));
  meddling->meddle = [&] {
    future_.onComplete(meddling, note(3));
    promise_.success(8);
  };
  promise_.success(7);
  future_.onComplete(meddling, note(4));
  EXPECT_TRUE(seen_.empty()) << "it runs none itself";
  meddling->jobs.run();
  EXPECT_THAT(seen_, ElementsAre(Seen(1, 7), Seen(2, 7), Seen(3, 7), Seen(4, 8)));
}

TEST_F(FutureCompletion, TellsSuccessFromFailure) {
  const auto success = [this](int value) { seen_.emplace_back(1, value); };
  const auto failure = [this](const AnyError& error) {
    seen_.emplace_back(2, error.is<Refused>());
  };
  future_.onSuccess(success).onFailure(failure);
  promise_.failure(Refused{});
  Future<int>::completed(3).onSuccess(queue_, success).onFailure(queue_, failure);
  queue_->run();
  EXPECT_THAT(seen_, ElementsAre(Seen(2, 1), Seen(1, 3)));
}

TEST_F(FutureCompletion, APromiseTakesTheOutcomeOfAnotherFutureUnlessItIsCancelled) {
  const auto otherQueue = std::make_shared<ManualQueue>();
  const Promise<int> other(otherQueue);
  const Promise<int> cancelled;
  const Promise<int> failed;
  const Promise<int> failing(otherQueue);
  cancelled.future().cancel();
  promise_.complete(other.future());
  cancelled.complete(other.future());
  failed.complete(failing.future());
  other.success(5);
  failing.failure(Refused{});
  EXPECT_FALSE(future_.didComplete()) << "it comes on the other's queue";
  EXPECT_EQ(otherQueue->run(), 3U);
  EXPECT_EQ(*future_.value(), 5);
  EXPECT_TRUE(failed.future().didFail());
  EXPECT_FALSE(cancelled.future().didComplete());
}

TEST_F(FutureTest, HasOneLabelForTheQueueOfItsOwn) {
  const auto label = future_.internalCallbackQueueLabel();
  EXPECT_TRUE(label.starts_with(std::string(FutureQueueLabelPrefix) + "internal_"));
  EXPECT_EQ(future_.internalCallbackQueueLabel(), label);
  EXPECT_NE(Future<int>().internalCallbackQueueLabel(), label);
}

TEST_F(FutureTest, OneThatIsSettledAlreadyIsNeverCompleteOnReturn) {
  auto claim = MainQueue::shared()->claim();
  const auto succeeded = Future<int>::succeeded(7).onComplete(queue_, note(1));
  const auto failed = Future<int>::failed(Refused{}).onComplete(queue_, note(2));
  const auto cancelled = Future<int>::succeeded(7);
  const auto nothing = Future<int>::concat({});
  EXPECT_FALSE(succeeded.didComplete() || failed.didComplete() || nothing.didComplete());
  cancelled.cancel();
  claim->drain();
  queue_->run();
  EXPECT_THAT(seen_, ElementsAre(Seen(1, 7), Seen(2, -1)));
  EXPECT_TRUE(nothing.value()->empty());
  EXPECT_FALSE(cancelled.didComplete());
}

/// A wait that a test expects to end before its time.
constexpr std::chrono::milliseconds kLong = 60s;

int urlErrorCode(const Result<int>& result) { return result.error()->as<URLError>()->code; }
bool isRefused(const Result<int>& result) {
  const auto* const error = result.failed() ? result.error()->as<GeneralError>() : nullptr;
  return error != nullptr && error->is<GeneralError::unableToPerformAction>();
}

TEST(FutureWait, EndsWithTheResultOfAnotherThread) {
  const Promise<int> promise;
  std::thread other([&] { promise.success(7); });
  EXPECT_EQ(promise.future().wait(std::chrono::milliseconds::max()).force(), 7);
  other.join();
}

TEST(FutureWait, EndsAtItsTimeLimitUnlessAResultIsThere) {
  const Promise<int> promise(std::make_shared<ManualQueue>());
  EXPECT_EQ(urlErrorCode(promise.future().wait(1ms)), URLError::timedOut);
  EXPECT_EQ(urlErrorCode(promise.future().wait(-1ms)), URLError::timedOut);
  promise.success(1);
  EXPECT_EQ(promise.future().wait(0ms).force(), 1) << "no queue has to be run";
}

TEST(FutureWait, IsEndedByACancel) {
  const Promise<int> promise;
  std::thread other([&] { promise.future().cancel(); });
  EXPECT_EQ(urlErrorCode(promise.future().wait(kLong)), URLError::cancelled);
  other.join();
  EXPECT_EQ(urlErrorCode(promise.future().wait(kLong)), URLError::cancelled);
  promise.complete(5);
  EXPECT_EQ(promise.future().wait(kLong).force(), 5);
}

TEST(FutureWait, LeavesNothingBehindHoweverOftenItIsTried) {
  const Promise<int> promise;
  const auto future = promise.future();
  (void)future.wait(0ms);
  const auto before = mallinfo2().uordblks;
  for (int i = 0; i < 1000; ++i) (void)future.wait(0ms);
  EXPECT_LT(mallinfo2().uordblks, before + 20'000);
  std::thread other([&] { promise.success(7); });
  EXPECT_EQ(future.wait(kLong).force(), 7);
  other.join();
}

TEST(FutureWait, SaysWhatToDoWhenTheMainQueueIsClaimedAndNotRun) {
  const auto hint = [](const Result<int>& result, std::string_view text) {
    return result.error()->description().find(text) != std::string::npos;
  };
  auto claim = MainQueue::shared()->claim();
  const auto settled = Future<int>::succeeded(1);
  EXPECT_TRUE(hint(settled.wait(kLong), "use onComplete, or wait on another thread"));
  std::thread([&] {
    EXPECT_TRUE(hint(settled.wait(1ms), "have its claim run or drain it"));
  }).join();
  claim->drain();
  std::thread([&] { EXPECT_FALSE(hint(Promise<int>().future().wait(1ms), "claim")); }).join();
}

TEST(FutureWait, IsRefusedOnTheLibrarysThreadsAndOnTheOneThatHasClaimedTheMainQueue) {
  const Promise<int> promise;
  const auto settled = Future<int>::succeeded(1);
  for (const std::shared_ptr<DispatchQueue>& queue :
       {DispatchQueue::global(), std::shared_ptr<DispatchQueue>(MainQueue::shared())}) {
    test::Signal refused;
    queue->post([&] {
      if (isRefused(promise.future().wait(kLong))) refused.tell();
    });
    EXPECT_TRUE(refused.wait());
  }
  std::optional claim = MainQueue::shared()->claim();
  EXPECT_TRUE(isRefused(settled.wait(kLong)));
  claim.reset();
  EXPECT_EQ(settled.wait(kLong).force(), 1) << "nobody's claim is in the way";
}

class FutureCancel : public testing::Test {
 protected:
  /// A cancel callback that notes its name and what it is told.
  [[nodiscard]] auto note(std::string name) {
    return [this, name = std::move(name)](bool completed) {
      seen_.push_back(name + (completed ? " completed" : " pending"));
    };
  }
  static int same(int value) { return value; }

  const std::shared_ptr<ManualQueue> queue_ = std::make_shared<ManualQueue>();
  const Promise<int> promise_{queue_};
  const Future<int> future_ = promise_.future();
  std::vector<std::string> seen_;
};

TEST_F(FutureCancel, DropsALaterSuccessAndFailureButNotACompletion) {
  future_.onSuccess([this](int value) { seen_.push_back(std::to_string(value)); });
  future_.cancel();
  promise_.success(1);
  promise_.failure(Refused{});
  EXPECT_FALSE(future_.didComplete());
  promise_.complete(2);
  EXPECT_EQ(*future_.value(), 2);
  queue_->run();
  EXPECT_THAT(seen_, ElementsAre("2")) << "callbacks from before the cancel stay";
}

TEST_F(FutureCancel, CallsEarlierCallbacksAtOnceInTheirOrderAndPostsLaterOnesWhichAskAnew) {
  future_.onCancel([this](bool completed) {
    note("first")(completed);
    future_.onCancel(note("from inside"));
    promise_.complete(1);
  });
  future_.onCancel(note("second"));
  future_.cancel();
  future_.cancel();
  EXPECT_THAT(seen_, ElementsAre("first pending", "second pending"))
      << "told whether a result was there when it began";
  queue_->run();
  EXPECT_EQ(seen_.back(), "from inside completed");
}

TEST_F(FutureCancel, GoesUpTheChainAndCallsTheSourcesCallbacksFirst) {
  const auto middle = future_.map(same);
  const auto last = middle.map(same);
  last.onCancel([this](bool) {
    seen_.push_back("last");
    EXPECT_TRUE(future_.isCancelled());
  });
  middle.onCancel([this](bool) { seen_.push_back("middle"); });
  future_.onCancel([&, thread = std::this_thread::get_id()](bool) {
    seen_.push_back("source");
    EXPECT_TRUE(last.isCancelled()) << "all are marked before anybody is called";
    EXPECT_EQ(std::this_thread::get_id(), thread);
  });
  last.cancel();
  EXPECT_THAT(seen_, ElementsAre("source", "middle", "last"));
}

TEST_F(FutureCancel, ReachesNothingDownTheChainNorUpFromASuccessResultNorWhatHasGone) {
  const auto derived = future_.map(same);
  future_.successResult().cancel();
  EXPECT_FALSE(future_.isCancelled());
  future_.cancel();
  EXPECT_FALSE(derived.isCancelled());
  const auto orphan = Promise<int>(queue_).future().map(same).map(same);
  orphan.onCancel(note("orphan"));
  orphan.cancel();
  EXPECT_THAT(seen_, ElementsAre("orphan pending"));
}

TEST_F(FutureCancel, DropsWhatATransformMakesWithoutKeepingItFromRunning) {
  const Promise<int> inner(queue_);
  const auto mapped = future_.map([this](int value) {
    seen_.push_back("transform");
    return value;
  });
  const auto flat = future_.flatMap([&](int) { return inner.future(); });
  promise_.success(1);
  mapped.cancel();
  queue_->run();
  flat.cancel();
  inner.success(2);
  queue_->run();
  EXPECT_THAT(seen_, ElementsAre("transform"));
  EXPECT_FALSE(mapped.didComplete() || flat.didComplete());
  EXPECT_FALSE(inner.future().isCancelled()) << "a flatMap's cancel never reaches it";
}

TEST_F(FutureCancel, KeepsAFailedSourceFromAMapButNotFromAFlatMap) {
  const auto mapped = future_.map(same);
  const auto flat = future_.flatMap([](int) { return Future<int>(); });
  mapped.cancel();
  flat.cancel();
  promise_.complete(Failure{Refused{}});
  queue_->run();
  EXPECT_FALSE(mapped.didComplete());
  EXPECT_TRUE(flat.didFail());
}

TEST_F(FutureCancel, OfACombinationReachesItsFirstFutureOnlyAndThatUntilItIsDone) {
  const Future<int> first(queue_);
  const Future<int> done(queue_);
  const Future<int> other(queue_);
  const auto halfway = Future<int>::concat({done, other});
  done.success(1);
  queue_->run();
  halfway.cancel();
  future_.zip(other).cancel();
  Future<int>::concat({first, other}).cancel();
  EXPECT_TRUE(future_.isCancelled() && first.isCancelled());
  EXPECT_FALSE(other.isCancelled() || done.isCancelled());
}

TEST_F(FutureCancel, LetsAnExceptionOutAndDropsTheCallbacksThatWereToFollow) {
  auto held = std::make_shared<int>();
  const std::weak_ptr probe = held;
  future_.onCancel([](bool) { throw std::runtime_error("thrown"); });
  future_.onCancel(
      [held = std::move(held), told = note("second")](bool completed) { told(completed); });
  EXPECT_THROW(future_.cancel(), std::runtime_error);
  EXPECT_TRUE(future_.isCancelled() && probe.expired());
  EXPECT_THAT(seen_, IsEmpty());
}

}  // namespace
}  // namespace orvo
