#pragma once

#include <OrvoAPI/Queues/MainQueue.h>

#include <atomic>
#include <cstdint>
#include <stdexcept>
#include <utility>

namespace orvo::detail {

/// Tells threads apart for good: a `std::thread::id` may come again once its thread has ended.
[[nodiscard]] inline std::uint64_t numberOfThisThread() {
  static std::atomic<std::uint64_t> last{0};
  thread_local const std::uint64_t number = ++last;
  return number;
}

/// The claim of the main queue by a loop that watches its descriptor.
class LoopClaim {
 public:
  LoopClaim() : claim_(claimed()), descriptor_(claim_.eventDescriptor()) {
    if (descriptor_ < 0) {
      throw std::runtime_error("the system has no descriptor for the main queue");
    }
  }

  void drain() { claim_.drain(); }
  [[nodiscard]] int descriptor() const { return descriptor_; }
  [[nodiscard]] bool isOnItsThread() const { return numberOfThisThread() == thread_; }

 private:
  [[nodiscard]] static MainQueue::Claim claimed() {
    auto claim = MainQueue::shared()->claim();
    if (!claim) {
      throw std::logic_error(
          "the main queue is claimed already: claim it once, at the start of the thread that has "
          "the event loop, and not from one of the queue's own jobs");
    }
    return *std::move(claim);
  }

  MainQueue::Claim claim_;
  const int descriptor_;
  const std::uint64_t thread_ = numberOfThisThread();
};

}  // namespace orvo::detail
