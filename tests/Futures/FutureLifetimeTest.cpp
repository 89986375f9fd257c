#include <OrvoAPI/Futures/Promise.h>
#include <OrvoAPI/Queues/SerialQueue.h>
#include <OrvoAPI/Testing/ManualQueue.h>
#include <tests/support/Test.h>

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

constexpr int kRounds = 300;

TEST(FutureRace, CallbacksAreCalledOnceAndInOrderHoweverTheyMeetSeveralCompletions) {
  struct Racer {
    std::shared_ptr<SerialQueue> queue = SerialQueue::make("racer");
    int called = 0;  // on the queue
  };
  std::vector<Promise<std::string>> promises(kRounds);
  std::vector<Racer> racers(test::kRacers);
  std::atomic<int> wrong = 0;
  test::Signal called;
  const auto check = [&](const std::string& value) { wrong += value.size() != 100; };
  test::race(
      kRounds, [](int) {},
      [&](int racer, int round) {
        const auto& promise = promises[static_cast<std::size_t>(round)];
        auto& own = racers[static_cast<std::size_t>(racer)];
        if (racer < 2) promise.success(std::string(100, static_cast<char>('a' + racer)));
        for (const int turn : {0, 1}) {
          promise.future().onSuccess(own.queue, [&, turn](const std::string& value) {
            check(value);
            wrong += own.called++ % 2 != turn;
            called.tell();
          });
        }
        if (const auto* const value = promise.future().value()) check(*value);
      });
  EXPECT_TRUE(called.wait(2 * kRounds * test::kRacers));
  EXPECT_EQ(wrong, 0);
}

TEST(FutureRace, WhoRegisteredBeforeTwoCompletionsGetsTheFirst) {
  const auto queue = std::make_shared<ManualQueue>();
  std::vector<Promise<int>> promises(5000);
  int wrong = 0;
  for (const auto& promise : promises) {
    promise.future().onSuccess(
        queue, [&, own = promise.future()](int value) { wrong += value == *own.value(); });
  }
  std::atomic<std::size_t> arrived = 0;
  const auto completeAll = [&](int value) {
    for (std::size_t i = 0; i < promises.size(); ++i) {
      ++arrived;
      for (int looks = 1; arrived < 2 * (i + 1); ++looks) {
        if (looks % 500 == 0) std::this_thread::yield();
      }
      promises[i].success(value);
    }
  };
  std::thread other(completeAll, 1);
  completeAll(2);
  other.join();
  queue->run();
  EXPECT_EQ(wrong, 0) << "the second has replaced it for those who ask";
}

TEST(FutureRace, ACancelCallbackIsCalledOnceHoweverItMeetsTheCancel) {
  std::vector<Promise<int>> promises(kRounds);
  test::Signal called;
  test::race(
      kRounds, [](int) {},
      [&](int thread, int round) {
        const auto future = promises[static_cast<std::size_t>(round)].future();
        if (thread % 2 == 0) future.cancel();
        future.onCancel([&](bool) { called.tell(); });
        if (thread % 2 == 1) future.cancel();
      });
  EXPECT_TRUE(called.wait(kRounds * test::kRacers));
}

TEST(FutureRace, AFutureThatMeetsTheCancelOfItsSiblingsSettlesOnce) {
  std::optional<Promise<std::string>> promise;
  std::vector<Future<std::string>> derived(test::kRacers);
  const auto longer = [](const std::string& value) { return value + "!"; };
  test::Signal settled;
  test::race(
      kRounds,
      [&](int) {
        promise.emplace();
        for (auto& future : derived) future = promise->future().map(longer);
        promise->future().map(longer).zip(promise->future()).onComplete([&](const auto&) {
          settled.tell();
        });
      },
      [&](int thread, int) {
        if (thread == 0) promise->complete(std::string("done"));
        const auto own = std::exchange(derived[static_cast<std::size_t>(thread)], {});
        own.map(longer).zip(Future<int>()).cancel();
      });
  EXPECT_TRUE(settled.wait(kRounds));
}

TEST(FutureRace, ASourceGoesWhileWhatWasDerivedFromItIsCancelled) {
  const auto held = std::make_shared<int>(1);
  std::vector<Promise<int>> promises(test::kRacers);
  std::vector<Future<int>> derived(test::kRacers);
  test::race(
      kRounds,
      [&](int) {
        for (std::size_t i = 0; i < test::kRacers; ++i) {
          promises[i] = Promise<int>();
          derived[i] = promises[i].future().map([held](int value) { return value + *held; });
        }
      },
      [&](int thread, int) {
        const auto own = static_cast<std::size_t>(thread);
        std::exchange(promises[own], {});
        std::exchange(derived[(own + 1) % test::kRacers], {}).cancel();
      });
  EXPECT_EQ(held.use_count(), 1);
}

}  // namespace
}  // namespace orvo
