#include <OrvoAPI/Futures/Promise.h>
#include <OrvoAPI/Platform/SerialQueue.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <tests/support/Signal.h>

#include <atomic>
#include <latch>
#include <memory>

namespace orvo {
namespace {

TEST(GlobalQueue, RunsJobsAtTheSameTime) {
  const auto meeting = std::make_shared<std::latch>(2);
  test::Signal met;
  for (int i = 0; i < 2; ++i) {
    DispatchQueue::global()->post([&, meeting] {
      meeting->arrive_and_wait();
      met.tell();
    });
  }
  EXPECT_TRUE(met.wait(2));
}

TEST(GlobalQueue, LeavesSignalsToTheHostsThreadsButForCrashes) {
  sigset_t blocked{};
  test::Signal done;
  DispatchQueue::global()->post([&] {
    pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
    done.tell();
  });
  ASSERT_TRUE(done.wait());
  EXPECT_TRUE(sigismember(&blocked, SIGTERM) && sigismember(&blocked, SIGCHLD));
  EXPECT_FALSE(sigismember(&blocked, SIGSEGV) || sigismember(&blocked, SIGBUS));
}

// What a continuation posts as its last act may stay on its worker. These are the cases in which
// that must not be the last act of all.

TEST(GlobalQueueTail, EveryContinuationOfASerialQueuePosts) {
  constexpr int kChains = 1000;
  const auto serial = SerialQueue::make("test");
  test::Signal done;
  for (int i = 0; i < kChains; ++i) {
    Future<int>::completed(i)
        .map(serial, [](int value) { return value; })
        .onComplete(DispatchQueue::global(), [&](const auto&) { done.tell(); });
  }
  EXPECT_TRUE(done.wait(kChains));
}

TEST(GlobalQueueTail, AContinuationsSuccessorDoesNotWaitForTheSerialQueuesNextJob) {
  const auto serial = SerialQueue::make("test");
  const Promise<int> promise(serial);
  test::Signal first;
  test::Signal second;
  promise.future()
      .map([](int value) { return value; })
      .onComplete(DispatchQueue::global(), [&](const auto&) { first.tell(); });
  promise.future().onComplete([&](const auto&) {
    if (first.wait()) second.tell();
  });
  promise.success(1);
  EXPECT_TRUE(second.wait());
}

TEST(GlobalQueueTail, AContinuationsSuccessorDoesNotWaitForASynchronousCaller) {
  const auto serial = SerialQueue::make("test");
  const Promise<int> promise(serial);
  test::Signal first;
  test::Signal second;
  promise.future()
      .map([](int value) { return value; })
      .onComplete(DispatchQueue::global(), [&](const auto&) { first.tell(); });
  DispatchQueue::global()->post([&] {
    serial->sync([&] { promise.success(1); });
    serial->sync([] {});
    if (first.wait()) second.tell();
  });
  EXPECT_TRUE(second.wait());
}

TEST(GlobalQueueTail, AnEndlessChainLetsOthersHaveTheirTurn) {
  struct Chain {
    std::atomic<bool> stop = false;
    test::Signal ended;
    void goOn(const Future<int>& future) {
      future.flatMap([](int value) { return Future<int>::completed(value); })
          .onComplete([this, future](const auto&) {
            if (stop) return ended.tell();
            goOn(future);
          });
    }
  };
  constexpr int kChains = 64;
  Chain chain;
  for (int i = 0; i < kChains; ++i) chain.goOn(Future<int>::completed(i));
  test::Signal turn;
  DispatchQueue::global()->post([&] { turn.tell(); });
  EXPECT_TRUE(turn.wait());
  chain.stop = true;
  EXPECT_TRUE(chain.ended.wait(kChains));
}

}  // namespace
}  // namespace orvo
