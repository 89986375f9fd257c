#include <OrvoAPI/Futures/Promise.h>
#include <OrvoAPI/Testing/ManualQueue.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace orvo {
namespace {

using Held = std::shared_ptr<int>;

/// The queue of a loop that has ended.
class DeadQueue final : public DispatchQueue {
 public:
  void post(Job) override {}
};

class FutureLifetime : public testing::Test {
 protected:
  [[nodiscard]] static Future<int> longChain(Future<int> future) {
    for (int i = 0; i < kLong; ++i) future = future.map([](int value) { return value + 1; });
    return future;
  }
  /// A function that holds something.
  [[nodiscard]] auto holder() const {
    return [held = held_](auto) { return *held; };
  }

  static constexpr int kLong = 100'000;
  const Held held_ = std::make_shared<int>(0);
  std::shared_ptr<ManualQueue> queue_ = std::make_shared<ManualQueue>();
  std::optional<Promise<int>> promise_{queue_};
};

TEST_F(FutureLifetime, ADroppedPromiseFreesCallbacksAndTheTransformsOfFuturesThatAreHeld) {
  const auto future = [this] { return promise_->future(); };
  future().onComplete(holder()).onCancel(holder());
  const auto outcome = future().successResult();
  const auto mapped = future().map(holder());
  const auto further = mapped.map(holder());
  const auto flat = future().flatMap([held = held_](int) { return Future<int>(); });
  EXPECT_EQ(held_.use_count(), 6);
  promise_.reset();
  EXPECT_EQ(held_.use_count(), 2) << "`mapped` is held, and so its own list lives on";
}

TEST_F(FutureLifetime, ADroppedInputFreesAConcat) {
  std::optional<Promise<Held>> first(queue_);
  std::optional<Promise<Held>> second(queue_);
  const auto all = Future<Held>::concat({first->future(), second->future()});
  first->success(held_);
  queue_->run();
  first.reset();
  EXPECT_EQ(held_.use_count(), 2) << "it has the first value and waits for the second";
  second.reset();
  EXPECT_EQ(held_.use_count(), 1);
  EXPECT_FALSE(all.didComplete());
}

TEST_F(FutureLifetime, ClosuresGoOnTheQueueTheyRanOnAndOutsideLocks) {
  const auto future = promise_->future();
  int gone = 0;
  bool running = false;
  const auto atEnd = [&] {
    return std::shared_ptr<void>(nullptr, [&](void*) {
      ++gone;
      EXPECT_TRUE(running);
      future.onCancel([](bool) {}).onComplete([](const auto&) {});  // would hang within a lock
    });
  };
  future.onComplete([end = atEnd()](const auto&) {});
  const auto mapped = future.map([end = atEnd()](int value) { return value; });
  const auto flat = future.flatMap([end = atEnd()](int) { return Future<int>(); });
  promise_->success(1);
  EXPECT_EQ(gone, 0);
  running = true;
  queue_->run();
  EXPECT_EQ(gone, 3);
}

TEST_F(FutureLifetime, AQueueThatDestroysItsJobsFreesThemAndLeavesTheFuturePending) {
  const auto queue = std::make_shared<DeadQueue>();
  const auto mapped = promise_->future().map(queue, holder());
  const auto flat =
      promise_->future().flatMap(queue, [held = held_](int) { return Future<int>(); });
  const auto all = Future<int>::concat({mapped, flat});
  promise_->future().onComplete(queue, holder());
  EXPECT_EQ(held_.use_count(), 4);
  promise_->success(1);
  mapped.cancel();
  mapped.onCancel(holder());
  EXPECT_EQ(held_.use_count(), 1);
  EXPECT_FALSE(mapped.didComplete() || flat.didComplete() || all.didComplete());
}

TEST_F(FutureLifetime, ALongChainIsCompletedCancelledAndDestroyedInLoops) {
  auto last = longChain(promise_->future());
  promise_->success(0);
  promise_.reset();
  EXPECT_EQ(queue_->run(), static_cast<std::size_t>(kLong));
  EXPECT_EQ(*last.value(), kLong);
  promise_.emplace(queue_);
  int cancelled = 0;
  last = longChain(promise_->future().onCancel([&](bool) { ++cancelled; }));
  last.cancel();
  EXPECT_EQ(cancelled, 1);
  last = last.map(holder());
  last = Future<int>();
  EXPECT_EQ(held_.use_count(), 2) << "the promise keeps the chain";
  promise_.reset();
  EXPECT_EQ(held_.use_count(), 1);
}

}  // namespace
}  // namespace orvo
