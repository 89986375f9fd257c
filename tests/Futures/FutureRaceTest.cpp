#include <OrvoAPI/Futures/Promise.h>
#include <OrvoAPI/Platform/SerialQueue.h>
#include <gtest/gtest.h>
#include <tests/support/Race.h>
#include <tests/support/Signal.h>

#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace orvo {
namespace {

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
