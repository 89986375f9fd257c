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

TEST(GlobalQueueTail, WhatFollowsDoesNotWaitForTheSerialQueuesNextJob) {
  const Promise<int> promise(SerialQueue::make("test"));
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

TEST(GlobalQueueTail, WhatFollowsDoesNotWaitForASynchronousCaller) {
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

TEST(GlobalQueueTail, ALongChainLetsOthersHaveTheirTurn) {
  constexpr int kChains = 64;  // more than there are workers, which wait until all is posted
  const auto posted = std::make_shared<std::latch>(1);
  test::Signal turn;
  test::Signal ended;
  for (int i = 0; i < kChains; ++i) DispatchQueue::global()->post([=] { posted->wait(); });
  for (int i = 0; i < kChains; ++i) {
    auto future = Future<int>::completed(i);
    for (int hop = 0; hop < 100; ++hop) future = future.map([](int value) { return value; });
    future.onComplete([&](const auto&) {
      if (turn.wait()) ended.tell();
    });
  }
  DispatchQueue::global()->post([&] { turn.tell(); });
  posted->count_down();
  EXPECT_TRUE(ended.wait(kChains));
}

}  // namespace
}  // namespace orvo
