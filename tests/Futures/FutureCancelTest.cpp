#include <OrvoAPI/Futures/Promise.h>
#include <OrvoAPI/Testing/ManualQueue.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace orvo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct Broken {};

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
  promise_.failure(Broken{});
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
  promise_.complete(Failure{Broken{}});
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
