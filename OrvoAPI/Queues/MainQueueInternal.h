#pragma once

#include <OrvoAPI/Queues/MainQueue.h>

namespace orvo::detail {

/// What the library itself may know about the main queue.
class MainQueueView {
 public:
  /// Whether jobs wait under a claim and none is running.
  [[nodiscard]] static bool isNeglected();
};

}  // namespace orvo::detail
