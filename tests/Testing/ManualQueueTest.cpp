#include <OrvoAPI/Testing/ManualQueue.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace orvo {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

TEST(ManualQueue, RunsJobsInTheirOrderWhenItIsTold) {
  ManualQueue queue;
  std::vector<int> ran;
  queue.post([&] {
    ran.push_back(1);
    queue.post([&] { ran.push_back(3); });
  });
  queue.post([&] { ran.push_back(2); });
  EXPECT_TRUE(queue.runOne());
  EXPECT_THAT(ran, ElementsAre(1));
  EXPECT_EQ(queue.waiting(), 2U);
  EXPECT_EQ(queue.run(), 2U);
  EXPECT_THAT(ran, ElementsAre(1, 2, 3));
  EXPECT_FALSE(queue.runOne());
}

TEST(ManualQueue, StopsTheClockAtEachDelayedJob) {
  ManualQueue queue;
  std::vector<std::pair<int, std::chrono::milliseconds>> ran;
  const auto job = [&](int number) {
    return [&ran, &queue, number] { ran.emplace_back(number, queue.clock().elapsed()); };
  };
  queue.postAfter(20ms, job(2));
  queue.postAfter(10ms, [&] {
    job(1)();
    queue.postAfter(10ms, job(3));
    queue.postAfter(25ms, job(4));
  });
  queue.postAfter(-1ms, job(0));
  EXPECT_EQ(queue.run(), 1U);
  EXPECT_EQ(queue.advance(30ms), 3U);
  EXPECT_EQ(queue.clock().elapsed(), 30ms);
  EXPECT_THAT(ran, ElementsAre(std::pair(0, 0ms), std::pair(1, 10ms), std::pair(2, 20ms),
                               std::pair(3, 20ms)));
  EXPECT_EQ(queue.delayed(), 1U);
}

TEST(ManualQueue, SharesItsClockWithOthers) {
  const auto clock = std::make_shared<ManualClock>();
  ManualQueue first("first", clock);
  ManualQueue second("second", clock);
  int ran = 0;
  second.postAfter(10ms, [&] { ++ran; });
  first.postAfter(5ms, [&] { clock->advance(1min); });
  EXPECT_EQ(first.advance(20ms), 1U);
  EXPECT_EQ(clock->elapsed(), 1min + 5ms);
  EXPECT_EQ(clock->now(), ManualClock::kDefaultWall + (1min + 5ms));
  EXPECT_EQ(second.run(), 1U);
  EXPECT_EQ(ran, 1);
}

TEST(ManualQueue, DropsWhatItNeverRan) {
  const auto held = std::make_shared<int>();
  {
    ManualQueue queue;
    queue.post([held] { FAIL(); });
    queue.postAfter(1s, [held] { FAIL(); });
    EXPECT_EQ(held.use_count(), 3);
  }
  EXPECT_EQ(held.use_count(), 1);
}

}  // namespace
}  // namespace orvo
