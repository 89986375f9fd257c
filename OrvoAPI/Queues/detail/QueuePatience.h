#pragma once

#include <chrono>

namespace orvo::detail {

/// How long the queues watch before they act. Other than by default only in the library's tests.
struct QueuePatience {
  /// Jobs of the main queue that a claim does not run, until the log says so.
  std::chrono::milliseconds ofNeglect{5000};
  /// Spare workers that are idle, until they leave; a callback that blocks is often followed by
  /// others.
  std::chrono::milliseconds ofSpareWorkers{3000};
};

/// From now on; what was said once is said again. From any thread.
void setQueuePatience(const QueuePatience& patience);

}  // namespace orvo::detail
