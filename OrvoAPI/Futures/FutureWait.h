#pragma once

#include <OrvoAPI/Platform/DispatchQueue.h>

#include <chrono>
#include <memory>

namespace orvo::detail {

/// What a blocked thread sleeps on.
class Waiter {
 public:
  enum class Outcome { completed, cancelled, timedOut };

  Waiter();
  ~Waiter();
  void wake(Outcome outcome);
  [[nodiscard]] Outcome wait(std::chrono::milliseconds limit);

  /// A queue that runs jobs at once; only for jobs that do nothing but wake a waiter.
  [[nodiscard]] static std::shared_ptr<DispatchQueue> immediateQueue();

 private:
  struct State;
  const std::unique_ptr<State> state_;
};

}  // namespace orvo::detail
