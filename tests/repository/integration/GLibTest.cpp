#include <OrvoAPI/Futures/Promise.h>
#include <OrvoAPI/Integration/GLib.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>

namespace orvo {
namespace {

const auto kMainQueue = MainQueue::shared();

/// A loop over the calling thread's default context.
struct Loop {
  Loop() : loop(g_main_loop_new(g_main_context_get_thread_default(), FALSE)) {}
  ~Loop() { g_main_loop_unref(loop); }
  void run() { g_main_loop_run(loop); }
  void quit() { g_main_loop_quit(loop); }
  GMainLoop* const loop;
};

TEST(GLibMainQueue, RunsCallbacksInTheLoopAndInALoopWithinOne) {
  const GLibMainQueue mainQueue;
  Loop outer, inner;
  std::string order;
  const auto future = Future<int>::succeeded(1);
  future.onComplete(kMainQueue, [&](const auto&) {
    order += "a";
    inner.run();
    order += "c";
    outer.quit();
  });
  future.onComplete(kMainQueue, [&](const auto&) {
    order += "b";
    inner.quit();
  });
  EXPECT_TRUE(order.empty());
  outer.run();
  EXPECT_EQ(order, "abc");
}

TEST(GLibMainQueue, OfAThreadWithAContextOfItsOwnRunsThere) {
  std::thread::id ran;
  std::thread thread([&] {
    GMainContext* const context = g_main_context_new();
    g_main_context_push_thread_default(context);
    {
      const GLibMainQueue mainQueue;
      Loop loop;
      kMainQueue->post([&] {
        ran = std::this_thread::get_id();
        loop.quit();
      });
      loop.run();
    }
    g_main_context_pop_thread_default(context);
    g_main_context_unref(context);
  });
  const auto expected = thread.get_id();
  thread.join();
  EXPECT_EQ(ran, expected);
}

TEST(GLibMainQueue, RefusesASecondClaimAndGivesTheFirstBack) {
  std::optional<GLibMainQueue> first(std::in_place);
  try {
    const GLibMainQueue second;
    FAIL() << "two claims";
  } catch (const std::logic_error& error) {
    EXPECT_NE(std::string(error.what()).find("claim it once"), std::string::npos) << error.what();
  }
  first.reset();
  const GLibMainQueue again;
}

TEST(GLibMainQueue, MayEndInACallbackOfItsOwn) {
  auto mainQueue = std::make_unique<GLibMainQueue>();
  Loop loop;
  kMainQueue->post([&] {
    mainQueue.reset();
    loop.quit();
  });
  loop.run();
  EXPECT_TRUE(kMainQueue->claim());
}

TEST(GLibMainQueueDeathTest, EndsTheProcessWhenItIsDestroyedOnAnotherThread) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  auto mainQueue = std::make_unique<GLibMainQueue>();
  EXPECT_DEATH(std::thread([&] { mainQueue.reset(); }).join(), "on the thread that made it");
}

}  // namespace
}  // namespace orvo
