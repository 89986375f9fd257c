#include <OrvoAPI/Futures/Promise.h>
#include <OrvoAPI/Platform/Clock.h>
#include <OrvoAPI/Queues/MainQueue.h>
#include <OrvoAPI/Queues/SerialQueue.h>
#include <signal.h>
#include <tests/support/Test.h>
#include <unistd.h>

#include <fstream>

namespace orvo {
namespace {

/// More jobs than there are workers.
constexpr int kMany = 64;

/// Keeps every worker of the global queue until they are let go.
class HeldWorkers {
 public:
  HeldWorkers() {
    for (int i = 0; i < kMany; ++i) {
      DispatchQueue::global()->post([this] {
        if (released_.wait()) ended_.tell();
      });
    }
  }
  /// Returns when all are free.
  void letGo() {
    released_.tell();
    EXPECT_TRUE(ended_.wait(kMany));
  }

 private:
  test::Signal released_;
  test::Signal ended_;
};

bool isAsleep(pid_t thread) {
  std::string name;
  char state = 0;
  std::ifstream("/proc/self/task/" + std::to_string(thread) + "/stat") >> thread >> name >> state;
  return state == 'S';
}

class SerialQueueTest : public testing::Test {
 protected:
  [[nodiscard]] auto note(int number) {
    return [this, number] { ran_.push_back(number); };
  }

  const std::shared_ptr<SerialQueue> queue_ = SerialQueue::make("test");
  std::vector<int> ran_;  // by one job at a time
};

using SerialQueueDeathTest = SerialQueueTest;

TEST_F(SerialQueueTest, RunsOneJobAtATimeInTheOrderOfEachPoster) {
  constexpr int kJobs = 500;
  std::atomic<int> inside = 0;
  std::array<std::vector<int>, test::kRacers> ran;
  test::race(
      kJobs, [](int) {},
      [&](int racer, int round) {
        queue_->post([&inside, &own = ran.at(static_cast<std::size_t>(racer)), round] {
          EXPECT_EQ(inside.fetch_add(1), 0);
          own.push_back(round);
          inside.fetch_sub(1);
        });
      });
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
  HeldWorkers workers;
  queue_->post(note(1));
  queue_->sync(note(2));
  EXPECT_EQ(ran_, (std::vector{1, 2}));
  queue_->post(note(3));
  workers.letGo();
  test::Signal later;
  const auto before = test::processorTime();
  queue_->postAfter(200ms, [&] { later.tell(); });
  EXPECT_TRUE(later.wait());
  EXPECT_LT(test::processorTime() - before, 10ms) << "it stands in line again and again";
  EXPECT_EQ(ran_, (std::vector{1, 2, 3}));
}

TEST_F(SerialQueueTest, AWorkerThatComesToItLeavesItToTheCallerThatDrainsIt) {
  HeldWorkers workers;
  queue_->post(note(1));
  queue_->sync([&] {
    queue_->post(note(2));
    workers.letGo();
    test::Signal passed;  // by those who stood in line behind it
    for (int i = 0; i < kMany; ++i) DispatchQueue::global()->post([&] { passed.tell(); });
    EXPECT_TRUE(passed.wait(kMany));
    EXPECT_EQ(ran_, std::vector{1});
  });
  queue_->sync([] {});
  EXPECT_EQ(ran_, (std::vector{1, 2}));
}

TEST_F(SerialQueueTest, WorkersThatAllWaitForItDoNotLockEachOtherOut) {
  test::Signal done;
  int count = 0;
  std::array<std::atomic<pid_t>, kMany> callers{};
  queue_->sync([&] {
    for (auto& caller : callers) {
      DispatchQueue::global()->post([&] {
        queue_->post([&] { ++count; });
        caller = gettid();
        queue_->sync([&] { ++count; });
        done.tell();
      });
    }
    const auto waits = [](const auto& caller) { return caller != 0 && isAsleep(caller); };
    const auto workers = std::clamp(sysconf(_SC_NPROCESSORS_ONLN), 2L, long{kMany});
    EXPECT_TRUE(test::eventually([&] { return std::ranges::count_if(callers, waits) >= workers; }));
  });
  ASSERT_TRUE(done.wait(kMany));
  queue_->sync([&] { EXPECT_EQ(count, 2 * kMany); });
}

TEST_F(SerialQueueTest, ASynchronousCallerLeavesWhatCameAfterItToTheOnesThatWait) {
  test::Signal returned;
  std::atomic<pid_t> caller = 0;
  std::thread other;
  queue_->sync([&] {
    queue_->post([&] { EXPECT_TRUE(returned.wait()) << "it works for others"; });
    other = std::thread([&] {
      caller = gettid();
      queue_->sync(note(1));
    });
    EXPECT_TRUE(test::eventually([&] { return caller != 0 && isAsleep(caller); }));
  });
  returned.tell();
  other.join();
  EXPECT_EQ(ran_, std::vector{1});
}

TEST_F(SerialQueueDeathTest, ASynchronousCallFromItsOwnJobStopsTheProcessAndSoDoesAJobThatThrows) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_DEATH(queue_->sync([this] { queue_->sync([] {}); }), "own jobs");
  const auto thrower = [] { throw std::runtime_error("nobody's"); };
  EXPECT_THROW(queue_->sync(thrower), std::runtime_error) << "it reaches the caller";
  const auto leaveItToAWorker = [&] {
    queue_->post(thrower);
    (void)test::Signal().wait();
  };
  EXPECT_DEATH(leaveItToAWorker(), "nobody's");
}

TEST(DelayedJobs, ComeInTheOrderOfTheirTimesAndNotTooEarly) {
  const auto queue = SerialQueue::make("test");
  const auto clock = Clock::system();
  const auto begun = clock->elapsed();
  std::vector<std::pair<int, bool>> ran;
  test::Signal done;
  queue->postAfter(std::chrono::milliseconds::max(), [] { ADD_FAILURE(); });
  bool isDue = false;
  queue->postAfter(0ms, [&] { isDue = true; });
  queue->sync([&] { EXPECT_TRUE(isDue) << "it was to be posted at once"; });
  for (const auto delay : {30ms, 10ms, 20ms, 10ms, 0ms}) {
    queue->postAfter(delay, [&, delay] {
      ran.emplace_back(delay.count(), clock->elapsed() - begun >= delay);
      done.tell();
    });
  }
  ASSERT_TRUE(done.wait(5));
  EXPECT_EQ(ran, (decltype(ran){{0, true}, {10, true}, {10, true}, {20, true}, {30, true}}));
}

TEST(DelayedJobs, KeepTheirQueueUntilThen) {
  test::Signal done;
  auto queue = SerialQueue::make("test");
  const std::weak_ptr probe = queue;
  queue->postAfter(1ms, [&] { done.tell(); });
  queue.reset();
  EXPECT_TRUE(done.wait());
  EXPECT_TRUE(test::eventually([&] { return probe.expired(); }));
}

TEST(GlobalQueue, LeavesSignalsToTheHostsThreadsButForCrashes) {
  sigset_t blocked{};
  sigset_t own{};
  test::Signal done;
  DispatchQueue::global()->post([&] {
    pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
    done.tell();
  });
  ASSERT_TRUE(done.wait());
  EXPECT_TRUE(sigismember(&blocked, SIGTERM) && sigismember(&blocked, SIGCHLD));
  EXPECT_FALSE(sigismember(&blocked, SIGSEGV) || sigismember(&blocked, SIGBUS));
  pthread_sigmask(SIG_SETMASK, nullptr, &own);
  EXPECT_FALSE(sigismember(&own, SIGTERM)) << "a thread that starts one of the library's";
}

// What a continuation posts as its last act may stay on its worker. These are the cases in which
// that must not be the last act of all.

/// A promise on a serial queue, and a continuation of it that follows on the global one.
class FollowedPromise : public testing::Test {
 protected:
  FollowedPromise() {
    promise_.future()
        .map([](int value) { return value; })
        .onComplete(DispatchQueue::global(), [this](const auto&) { followed_.tell(); });
  }
  void waitForWhatFollows() {
    if (followed_.wait()) ended_.tell();
  }

  const std::shared_ptr<SerialQueue> serial_ = SerialQueue::make("test");
  const Promise<int> promise_{serial_};
  test::Signal followed_;
  test::Signal ended_;
};

TEST_F(FollowedPromise, DoesNotWaitForTheSerialQueuesNextJob) {
  promise_.future().onComplete([this](const auto&) { waitForWhatFollows(); });
  promise_.success(1);
  EXPECT_TRUE(ended_.wait());
}

TEST_F(FollowedPromise, DoesNotWaitForASynchronousCaller) {
  DispatchQueue::global()->post([this] {
    serial_->sync([this] { promise_.success(1); });
    serial_->sync([] {});
    waitForWhatFollows();
  });
  EXPECT_TRUE(ended_.wait());
}

TEST(GlobalQueueTail, ALongChainLetsOthersHaveTheirTurn) {
  HeldWorkers workers;
  test::Signal turn;
  test::Signal ended;
  for (int i = 0; i < kMany; ++i) {
    auto future = Future<int>::completed(i);
    for (int hop = 0; hop < 100; ++hop) future = future.map([](int value) { return value; });
    future.onComplete([&](const auto&) {
      if (turn.wait()) ended.tell();
    });
  }
  DispatchQueue::global()->post([&] { turn.tell(); });
  workers.letGo();
  EXPECT_TRUE(ended.wait(kMany));
}

/// Posts itself again and again until it is told to end.
struct Endless {
  void operator()() const {
    if (!end->told()) queue->post(*this);
  }
  std::shared_ptr<SerialQueue> queue;
  std::shared_ptr<test::Signal> end;
};

TEST(GlobalQueue, ABusySerialQueueLetsOthersHaveTheirTurn) {
  const auto turn = std::make_shared<test::Signal>();
  for (int i = 0; i < kMany; ++i) {
    const auto queue = SerialQueue::make("busy");
    queue->post(Endless{queue, turn});
  }
  DispatchQueue::global()->post([turn] { turn->tell(); });
  EXPECT_TRUE(turn->wait());
}

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

void exitJob(DispatchQueue& queue) {
  keepBusy();
  queue.post([] { std::exit(3); });  // NOLINT(concurrency-mt-unsafe)
}

[[noreturn]] void exitFrom(const std::shared_ptr<DispatchQueue>& queue) {
  exitJob(*queue);
  for (;;) (void)test::Signal().wait();
}

void exitFromHost() {
  keepBusy();
  std::exit(3);  // NOLINT(concurrency-mt-unsafe)
}

void exitFromClaim() {
  auto claim = MainQueue::shared()->claim();
  exitJob(*MainQueue::shared());
  claim->run();
}

TEST(ExitDeathTest, NeitherHangsNorCrashesWhereverItIsCalled) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const testing::ExitedWithCode exited(3);
  EXPECT_EXIT(exitFrom(DispatchQueue::global()), exited, "");
  EXPECT_EXIT(exitFrom(SerialQueue::make("test")), exited, "");
  EXPECT_EXIT(exitFrom(MainQueue::shared()), exited, "");
  EXPECT_EXIT(exitFromHost(), exited, "");
  EXPECT_EXIT(exitFromClaim(), exited, "");
}

}  // namespace
}  // namespace orvo
