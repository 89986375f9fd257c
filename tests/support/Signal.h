#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace orvo::test {

/// What one thread tells others: `wait` returns whether as many as it wants were told in time. The
/// limit is there for a fault to end a test; no test waits for it to pass.
class Signal {
 public:
  void tell() {
    const std::lock_guard guard(mutex_);
    ++told_;
    changed_.notify_all();
  }
  [[nodiscard]] bool wait(int times = 1) {
    std::unique_lock guard(mutex_);
    return changed_.wait_for(guard, std::chrono::seconds(60), [&] { return told_ >= times; });
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

}  // namespace orvo::test
