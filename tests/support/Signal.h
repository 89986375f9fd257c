#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

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

}  // namespace test
}  // namespace orvo
