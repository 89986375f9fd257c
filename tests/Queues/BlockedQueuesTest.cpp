#include <OrvoAPI/Queues/detail/QueuePatience.h>
#include <tests/Context/StubbedContext.h>

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <set>

namespace orvo {
namespace {

using namespace std::chrono_literals;

/// The threads of the process that have this name.
std::size_t threadsNamed(std::string_view name) {
  std::size_t count = 0;
  for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
    std::string own;
    std::ifstream(task.path() / "comm") >> own;
    count += own == name;
  }
  return count;
}

std::size_t processors() { return std::max<std::size_t>(std::thread::hardware_concurrency(), 2); }

/// Notes what is said about the queues.
class QueueLog final : public Logger {
 public:
  void log(std::string_view message, LogLevel level, std::string_view subsystem,
           std::string_view category) override {
    if (subsystem != "queues" || level != LogLevel::warning) return;
    {
      const std::lock_guard guard(mutex_);
      lines_.push_back(std::string(category) + ": " + std::string(message));
    }
    told.tell();
  }
  [[nodiscard]] std::vector<std::string> lines() {
    const std::lock_guard guard(mutex_);
    return lines_;
  }
  test::Signal told;

 private:
  std::mutex mutex_;
  std::vector<std::string> lines_;
};

/// Jobs on the global queue that block until they are let go.
class Blockers {
 public:
  void block(std::size_t jobs) {
    count_ += static_cast<int>(jobs);
    for (; jobs > 0; --jobs) {
      DispatchQueue::global()->post([this] {
        begun_.tell();
        EXPECT_TRUE(released_.wait());
        ended_.tell();
      });
    }
  }
  [[nodiscard]] auto begun(std::size_t jobs) { return begun_.wait(static_cast<int>(jobs)); }
  ~Blockers() {
    released_.tell();
    EXPECT_TRUE(ended_.wait(count_));
  }

 private:
  int count_ = 0;
  test::Signal begun_, released_, ended_;
};

class BlockedQueues : public testing::Test {
 protected:
  void SetUp() override {
    detail::setQueuePatience({.ofNeglect = 100ms, .ofSpareWorkers = 100ms});
    awaitNoSpares();
  }
  void TearDown() override {
    awaitNoSpares();
    detail::setQueuePatience({});
  }
  /// The workers are those of the process.
  static void awaitNoSpares() {
    EXPECT_TRUE(test::eventually([] { return threadsNamed("orvo-worker") <= processors(); }));
  }
  static std::shared_ptr<Context> contextWith(std::shared_ptr<Logger> logger) {
    return makeContext(std::make_shared<StubSessionProvider>(),
                       std::make_shared<StubNetworkDataProvider>(), {.logger = std::move(logger)});
  }

  const std::shared_ptr<QueueLog> log_ = std::make_shared<QueueLog>();
  const std::shared_ptr<Context> context_ = contextWith(log_);
};

TEST_F(BlockedQueues, JobsThatBlockGetSpareWorkersUpToABoundThatLeaveLater) {
  constexpr std::size_t kSpare = 16;
  {
    Blockers blockers;
    blockers.block(processors() + kSpare);
    ASSERT_TRUE(blockers.begun(processors() + kSpare));
    EXPECT_EQ(threadsNamed("orvo-worker"), processors() + kSpare);
    EXPECT_TRUE(log_->told.wait());
  }
  awaitNoSpares();
  ASSERT_EQ(log_->lines().size(), 1U);
  EXPECT_TRUE(log_->lines()[0].starts_with("global: Callbacks block"));
  Blockers again;
  test::Signal ran;
  again.block(processors());
  DispatchQueue::global()->post([&] { ran.tell(); });
  EXPECT_TRUE(ran.wait()) << "and once more";
  EXPECT_EQ(log_->lines().size(), 1U) << "it is said once";
}

/// Posts itself now and then, for longer than idle spare workers stay, and notes who runs it.
struct Chain {
  void run() {
    runners.insert(gettid());  // unlike the standard one it is not used again at once
    if (--left == 0) return ended.tell();
    DispatchQueue::global()->postAfter(10ms, [this] { run(); });
  }
  int left = 60;
  std::set<pid_t> runners;
  test::Signal ended;
};

TEST_F(BlockedQueues, KeepASpareWorkerThatIsNeededNowAndThen) {
  Blockers blockers;
  blockers.block(processors());
  ASSERT_TRUE(blockers.begun(processors()));
  Chain chain;
  DispatchQueue::global()->post([&] { chain.run(); });
  ASSERT_TRUE(chain.ended.wait());
  EXPECT_EQ(chain.runners.size(), 1U);
}

TEST_F(BlockedQueues, TellEveryLoggerThatLives) {
  const auto other = std::make_shared<QueueLog>();
  const auto second = contextWith(other);
  const auto third = contextWith(log_);
  contextWith(std::make_shared<QueueLog>()).reset();
  auto claim = MainQueue::shared()->claim();
  const auto value = Future<int>::succeeded(1);
  EXPECT_TRUE(log_->told.wait());
  EXPECT_TRUE(other->told.wait());
  EXPECT_EQ(log_->lines().size(), 1U) << "each once";
  claim->drain();
}

TEST_F(BlockedQueues, AClaimThatRunsNothingIsReportedOnce) {
  auto claim = MainQueue::shared()->claim();
  const auto value = Future<int>::succeeded(1);
  EXPECT_TRUE(log_->told.wait());
  EXPECT_FALSE(value.didComplete());
  const auto other = Future<int>::succeeded(2);
  EXPECT_EQ(claim->drain(), 2U);
  ASSERT_EQ(log_->lines().size(), 1U);
  EXPECT_TRUE(log_->lines()[0].starts_with("main: Jobs have waited in the main queue for 5 s"));
}

}  // namespace
}  // namespace orvo
