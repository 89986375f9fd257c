#pragma once

#include <OrvoAPI/Queues/MainQueue.h>

#include <stdexcept>
#include <thread>
#include <utility>

namespace orvo::detail {

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
  [[nodiscard]] bool isOnItsThread() const { return std::this_thread::get_id() == thread_; }

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
  const std::thread::id thread_ = std::this_thread::get_id();
};

}  // namespace orvo::detail
