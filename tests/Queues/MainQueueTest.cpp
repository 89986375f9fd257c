#include <OrvoAPI/Queues/MainQueue.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <poll.h>
#include <tests/support/Test.h>

namespace orvo {
namespace {

using testing::ElementsAre;

const std::shared_ptr<MainQueue> kQueue = MainQueue::shared();

class MainQueueTest : public testing::Test {
 protected:
  /// A job that notes its number.
  [[nodiscard]] auto note(int number) {
    return [this, number] { ran_.push_back(number); };
  }
  /// Waits until the fallback thread has run what waits.
  static void letFallbackRun() {
    test::Signal done;
    kQueue->post([&] { done.tell(); });
    EXPECT_TRUE(done.wait());
  }
  static bool readable(int descriptor) {
    pollfd entry{descriptor, POLLIN, 0};
    return poll(&entry, 1, 0) == 1;
  }

  std::vector<int> ran_;  // by one job at a time
};

using MainQueueDeathTest = MainQueueTest;

TEST_F(MainQueueTest, RunsInAClaimUntilItIsStopped) {
  std::optional claim = kQueue->claim();
  claim->stop();
  kQueue->post(note(1));
  claim->run();
  EXPECT_TRUE(ran_.empty()) << "a stop before it runs ends it at once";
  std::thread other([&] {
    kQueue->post([&] {
      kQueue->post([&] { claim->stop(); });
      kQueue->post(note(2));
    });
  });
  claim->run();
  other.join();
  EXPECT_THAT(ran_, ElementsAre(1)) << "it ends after the job that is running";
  claim->stop();
  claim.reset();
  auto next = kQueue->claim();
  kQueue->post([&] { next->stop(); });
  next->run();
  EXPECT_THAT(ran_, ElementsAre(1, 2)) << "a stop is for the claim of its time";
}

TEST_F(MainQueueTest, DrainsWhatWaitsAndItsDescriptorIsReadableExactlyWhileJobsWait) {
  std::optional claim = kQueue->claim();
  EXPECT_EQ(claim->drain(), 0U);
  kQueue->post([&] { kQueue->post(note(2)); });
  kQueue->post(note(1));
  const int descriptor = claim->eventDescriptor();
  EXPECT_EQ(claim->eventDescriptor(), descriptor);
  EXPECT_EQ(fcntl(descriptor, F_GETFD), FD_CLOEXEC);
  EXPECT_TRUE(readable(descriptor)) << "jobs were waiting before it was made";
  EXPECT_EQ(claim->drain(), 2U);
  EXPECT_TRUE(readable(descriptor)) << "a job came while it was drained";
  EXPECT_EQ(claim->drain(), 1U);
  EXPECT_FALSE(readable(descriptor));
  kQueue->post(note(3));
  EXPECT_TRUE(readable(descriptor));
  claim->drain();
  EXPECT_THAT(ran_, ElementsAre(1, 2, 3));
  claim.reset();
  EXPECT_EQ(fcntl(descriptor, F_GETFD), -1) << "it ends with its claim";
  const auto next = kQueue->claim();
  EXPECT_EQ(fcntl(next->eventDescriptor(), F_GETFD), FD_CLOEXEC);
}

TEST_F(MainQueueTest, AClaimWaitsForTheJobThatTheFallbackRuns) {
  std::atomic<bool> finished = false;
  test::Signal begun;
  kQueue->post([&] {
    begun.tell();
    kQueue->post(note(1));
    for (int i = 0; i < 1000; ++i) std::this_thread::yield();
    finished = true;
  });
  ASSERT_TRUE(begun.wait());
  auto claim = kQueue->claim();
  EXPECT_TRUE(finished);
  // The second job runs before the claim is asked for, or waits for it.
  EXPECT_EQ(ran_.size() + claim->drain(), 1U);
}

TEST_F(MainQueueTest, HasOneClaimAtATimeAndNoneFromItsJobs) {
  std::optional claim = kQueue->claim();
  EXPECT_FALSE(kQueue->claim().has_value());
  std::thread([&] { EXPECT_FALSE(kQueue->claim().has_value()); }).join();
  claim.reset();
  kQueue->post([&] { EXPECT_FALSE(kQueue->claim().has_value()); });
  letFallbackRun();
  EXPECT_TRUE(kQueue->claim().has_value());
}

TEST_F(MainQueueTest, AJobThatThrowsLeavesDrainAndTheNextOneRuns) {
  std::optional claim = kQueue->claim();
  kQueue->post([] { throw std::runtime_error("thrown"); });
  kQueue->post([] { throw std::runtime_error("thrown"); });
  kQueue->post(note(1));
  EXPECT_THROW(claim->drain(), std::runtime_error);
  EXPECT_THROW(claim->run(), std::runtime_error);
  EXPECT_TRUE(readable(claim->eventDescriptor()));
  std::thread([last = std::move(claim)] {}).join();  // it may end on any thread
  letFallbackRun();
  EXPECT_THAT(ran_, ElementsAre(1));
}

TEST_F(MainQueueTest, AClaimGivenUpByAJobEndsRunAndHandsOnAfterThatJob) {
  std::optional claim = kQueue->claim();
  const auto self = std::this_thread::get_id();
  kQueue->post([&] {
    claim.reset();
    for (int i = 0; i < 1000; ++i) std::this_thread::yield();
    note(1)();
  });
  kQueue->post([&] {
    EXPECT_NE(std::this_thread::get_id(), self);
    note(2)();
  });
  claim->run();
  letFallbackRun();
  EXPECT_THAT(ran_, ElementsAre(1, 2));
}

TEST_F(MainQueueTest, KeepsOrderAndNeverRunsTwoJobsAtOnceWhileItChangesHands) {
  constexpr int kJobs = 2000;
  std::atomic<int> inside = 0;
  std::thread poster([&] {
    for (int i = 0; i < kJobs; ++i) {
      kQueue->post([&, i] {
        EXPECT_EQ(inside.fetch_add(1), 0);
        ran_.push_back(i);
        inside.fetch_sub(1);
      });
    }
  });
  const auto changeHands = [&] {
    for (int i = 0; i < 200; ++i) {
      if (auto claim = kQueue->claim()) claim->drain();
    }
  };
  std::thread other(changeHands);
  changeHands();
  other.join();
  poster.join();
  letFallbackRun();
  ASSERT_EQ(ran_.size(), static_cast<std::size_t>(kJobs));
  EXPECT_TRUE(std::is_sorted(ran_.begin(), ran_.end()));
}

TEST_F(MainQueueDeathTest, RunOnAThreadThatHasNotClaimedItStopsTheProcess) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  auto claim = kQueue->claim();
  EXPECT_DEATH(std::thread([&] { claim->drain(); }).join(), "another thread");
}

}  // namespace
}  // namespace orvo
