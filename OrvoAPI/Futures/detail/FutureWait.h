#pragma once

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

 private:
  struct State;
  const std::unique_ptr<State> state_;
};

}  // namespace orvo::detail
