#include <OrvoAPI/Futures/Promise.h>
#include <OrvoAPI/Platform/MainQueue.h>
#include <OrvoAPI/Platform/SerialQueue.h>
#include <gtest/gtest.h>
#include <tests/support/Signal.h>

#include <chrono>
#include <cstdlib>
#include <functional>

namespace orvo {
namespace {

using namespace std::chrono_literals;

/// Each of these ends a process of its own, which must neither hang nor crash.
class ExitDeathTest : public testing::Test {
 protected:
  void SetUp() override { GTEST_FLAG_SET(death_test_style, "threadsafe"); }

  [[noreturn]] static void exitFrom(const std::shared_ptr<DispatchQueue>& queue) {
    keepBusy();
    queue->post([] { std::exit(3); });  // NOLINT(concurrency-mt-unsafe)
    for (;;) (void)test::Signal().wait();
  }
  /// Work of every kind that is still to be done when the end comes.
  static void keepBusy() {
    const auto serial = SerialQueue::make("busy");
    serial->postAfter(1h, [] {});
    for (int i = 0; i < 1000; ++i) {
      Future<int>::succeeded(i)
          .map(serial, [](int value) { return value; })
          .onComplete([](const auto&) { keepGoing(); });
    }
  }
  static void keepGoing() { DispatchQueue::global()->post(keepGoing); }
};

const auto kExited = testing::ExitedWithCode(3);

TEST_F(ExitDeathTest, FromAWorker) { EXPECT_EXIT(exitFrom(DispatchQueue::global()), kExited, ""); }

TEST_F(ExitDeathTest, FromASerialQueue) {
  EXPECT_EXIT(exitFrom(SerialQueue::make("test")), kExited, "");
}

TEST_F(ExitDeathTest, FromTheMainQueuesOwnThread) {
  EXPECT_EXIT(exitFrom(MainQueue::shared()), kExited, "");
}

TEST_F(ExitDeathTest, FromAThreadOfTheHosts) {
  EXPECT_EXIT(
      {
        keepBusy();
        std::exit(3);  // NOLINT(concurrency-mt-unsafe)
      },
      kExited, "");
}

TEST_F(ExitDeathTest, FromAJobOfAClaim) {
  EXPECT_EXIT(
      {
        auto claim = MainQueue::shared()->claim();
        keepBusy();
        MainQueue::shared()->post([] { std::exit(3); });  // NOLINT(concurrency-mt-unsafe)
        claim->run();
      },
      kExited, "");
}

}  // namespace
}  // namespace orvo
