#pragma once

#include <gtest/gtest.h>
#include <time.h>

#include <barrier>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

namespace orvo {

/// How long a test waits for what must come; no test waits for it to pass. It is there so that a
/// fault ends the test, soon, and is long enough for a machine that has much else to do.
inline constexpr std::chrono::seconds kPatience{20};

namespace test {

/// What one thread tells others: `wait` is true once as many as it wants were told, and says how
/// many were when they do not come.
class Signal {
 public:
  void tell() {
    const std::lock_guard guard(mutex_);
    ++told_;
    changed_.notify_all();
  }
  [[nodiscard]] testing::AssertionResult wait(int times = 1) {
    std::unique_lock guard(mutex_);
    if (changed_.wait_for(guard, kPatience, [&] { return told_ >= times; })) {
      return testing::AssertionSuccess();
    }
    return testing::AssertionFailure()
           << "told " << told_ << " times of " << times << " after " << kPatience.count() << " s";
  }

  [[nodiscard]] bool told() {
    const std::lock_guard guard(mutex_);
    return told_ > 0;
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  int told_ = 0;
};

/// The processor time of the process so far.
inline std::chrono::nanoseconds processorTime() {
  timespec time{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

/// Lets others run until the condition holds, for what no signal tells.
template <class Condition>
[[nodiscard]] testing::AssertionResult eventually(Condition condition) {
  const auto end = std::chrono::steady_clock::now() + kPatience;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) {
      return testing::AssertionFailure() << "not after " << kPatience.count() << " s";
    }
    std::this_thread::yield();
  }
  return testing::AssertionSuccess();
}

inline constexpr int kRacers = 4;

/// Lets `kRacers` threads run `body(racer, round)`, all beginning each round at the same moment,
/// with `between(round)` run alone before each.
template <class Between, class Body>
void race(int rounds, Between between, Body body) {
  int round = -1;
  std::barrier start(kRacers, [&]() noexcept { between(++round); });
  std::vector<std::thread> threads;
  for (int racer = 0; racer < kRacers; ++racer) {
    threads.emplace_back([&, racer] {
      for (int i = 0; i < rounds; ++i) {
        start.arrive_and_wait();
        body(racer, i);
      }
    });
  }
  for (auto& thread : threads) thread.join();
}

}  // namespace test
}  // namespace orvo
