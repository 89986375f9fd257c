#include <OrvoAPI/Futures/Promise.h>
#include <OrvoAPI/Platform/MainQueue.h>
#include <OrvoAPI/Platform/SerialQueue.h>
#include <gtest/gtest.h>
#include <tests/support/Signal.h>

#include <chrono>
#include <cstdlib>
#include <memory>

namespace orvo {
namespace {

/// Work of every kind that is still to be done when the end comes.
void keepBusy() {
  static void (*const keepGoing)() = [] { DispatchQueue::global()->post(keepGoing); };
  const auto serial = SerialQueue::make("busy");
  serial->postAfter(std::chrono::hours(1), [] {});
  for (int i = 0; i < 1000; ++i) {
    Future<int>::succeeded(i)
        .map(serial, [](int value) { return value; })
        .onComplete([](const auto&) { keepGoing(); });
  }
}

[[noreturn]] void exitFrom(const std::shared_ptr<DispatchQueue>& queue) {
  keepBusy();
  queue->post([] { std::exit(3); });  // NOLINT(concurrency-mt-unsafe)
  for (;;) (void)test::Signal().wait();
}

/// Each of these ends a process of its own, which must neither hang nor crash.
class ExitDeathTest : public testing::Test {
 protected:
  void SetUp() override { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
  const testing::ExitedWithCode exited_{3};
};

TEST_F(ExitDeathTest, FromAThreadOfTheLibrary) {
  EXPECT_EXIT(exitFrom(DispatchQueue::global()), exited_, "");
  EXPECT_EXIT(exitFrom(SerialQueue::make("test")), exited_, "");
  EXPECT_EXIT(exitFrom(MainQueue::shared()), exited_, "");
}

TEST_F(ExitDeathTest, FromAThreadOfTheHost) {
  const auto end = [] {
    keepBusy();
    std::exit(3);  // NOLINT(concurrency-mt-unsafe)
  };
  EXPECT_EXIT(end(), exited_, "");
}

TEST_F(ExitDeathTest, FromAJobOfAClaim) {
  const auto end = [] {
    auto claim = MainQueue::shared()->claim();
    keepBusy();
    MainQueue::shared()->post([] { std::exit(3); });  // NOLINT(concurrency-mt-unsafe)
    claim->run();
  };
  EXPECT_EXIT(end(), exited_, "");
}

}  // namespace
}  // namespace orvo
