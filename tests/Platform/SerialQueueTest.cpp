#include <OrvoAPI/Platform/SerialQueue.h>
#include <gtest/gtest.h>
#include <tests/support/Signal.h>

#include <algorithm>
#include <atomic>
#include <latch>
#include <stdexcept>
#include <thread>
#include <vector>

namespace orvo {
namespace {

class SerialQueueTest : public testing::Test {
 protected:
  /// More jobs than there are workers, all of which wait.
  static constexpr int kMany = 64;

  const std::shared_ptr<SerialQueue> queue_ = SerialQueue::make("test");
  std::vector<int> ran_;  // by one job at a time
};

using SerialQueueDeathTest = SerialQueueTest;

TEST_F(SerialQueueTest, RunsOneJobAtATimeInTheOrderOfEachPoster) {
  constexpr int kJobs = 500;
  std::atomic<int> inside = 0;
  std::vector<std::vector<int>> ran(4);
  std::vector<std::thread> posters;
  for (auto& own : ran) {
    posters.emplace_back([&] {
      for (int i = 0; i < kJobs; ++i) {
        queue_->post([&, i] {
          EXPECT_EQ(inside.fetch_add(1), 0);
          own.push_back(i);
          inside.fetch_sub(1);
        });
      }
    });
  }
  for (auto& poster : posters) poster.join();
  queue_->sync([&] {
    for (const auto& own : ran) {
      EXPECT_EQ(own.size(), static_cast<std::size_t>(kJobs));
      EXPECT_TRUE(std::is_sorted(own.begin(), own.end()));
    }
  });
}

TEST_F(SerialQueueTest, JobsThatWaitKeepItAlive) {
  test::Signal done;
  auto queue = SerialQueue::make("short-lived");
  for (int i = 0; i < 200; ++i) {
    queue->post([&] { done.tell(); });
  }
  queue.reset();
  EXPECT_TRUE(done.wait(200));
}

TEST_F(SerialQueueTest, ASynchronousCallerTakesOverAQueueThatNoWorkerIsFreeFor) {
  std::latch release(1);
  test::Signal ended;
  for (int i = 0; i < kMany; ++i) {
    DispatchQueue::global()->post([&] {
      release.wait();
      ended.tell();
    });
  }
  queue_->post([this] { ran_.push_back(1); });
  queue_->sync([this] { ran_.push_back(2); });
  EXPECT_EQ(ran_, (std::vector{1, 2}));
  queue_->post([this] { ran_.push_back(3); });
  release.count_down();
  EXPECT_TRUE(ended.wait(kMany));
  queue_->sync([] {});
  EXPECT_EQ(ran_.back(), 3) << "it was scheduled once more";
}

TEST_F(SerialQueueTest, WorkersThatAllWaitForItDoNotLockEachOtherOut) {
  test::Signal done;
  int count = 0;
  for (int i = 0; i < kMany; ++i) {
    DispatchQueue::global()->post([&] {
      queue_->post([&] { ++count; });
      queue_->sync([&] { ++count; });
      done.tell();
    });
  }
  ASSERT_TRUE(done.wait(kMany));
  queue_->sync([&] { EXPECT_EQ(count, 2 * kMany); });
}

TEST_F(SerialQueueTest, ASynchronousCallWaitsForItsTurnWhileAnotherThreadRunsJobs) {
  test::Signal begun;
  std::latch proceed(1);
  queue_->post([&] {
    begun.tell();
    proceed.wait();
    ran_.push_back(1);
  });
  ASSERT_TRUE(begun.wait());
  queue_->post([this] { ran_.push_back(2); });
  std::thread other([&] { queue_->sync([this] { ran_.push_back(3); }); });
  proceed.count_down();
  other.join();
  queue_->sync([this] { ran_.push_back(4); });
  EXPECT_EQ(ran_, (std::vector{1, 2, 3, 4}));
}

TEST_F(SerialQueueDeathTest, ASynchronousCallFromItsOwnJobStopsTheProcessAndSoDoesAJobThatThrows) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_DEATH(queue_->sync([this] { queue_->sync([] {}); }), "own jobs");
  const auto thrower = [] { throw std::runtime_error("nobody's"); };
  const auto runItself = [&] {
    try {
      queue_->sync(thrower);
    } catch (...) {
    }
  };
  const auto leaveItToAWorker = [&] {
    queue_->post(thrower);
    (void)test::Signal().wait();
  };
  EXPECT_DEATH(runItself(), "nobody's");
  EXPECT_DEATH(leaveItToAWorker(), "nobody's");
}

}  // namespace
}  // namespace orvo
