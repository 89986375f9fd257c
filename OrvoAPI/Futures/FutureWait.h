#pragma once

#include <OrvoAPI/Futures/Future.h>
#include <OrvoAPI/Platform/URLError.h>

#include <chrono>
#include <memory>

namespace orvo {

namespace detail {

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

}  // namespace detail

template <class T>
Result<T> Future<T>::wait(std::chrono::milliseconds limit) const {
  using Outcome = detail::Waiter::Outcome;
  if (DispatchQueue::isBlockingRefused()) return Failure{GeneralError::unableToPerformAction{}};
  if (const auto* const present = result()) return *present;
  const auto waiter = std::make_shared<detail::Waiter>();
  const auto queue = detail::Waiter::immediateQueue();
  onComplete(queue, [waiter](const Result<T>&) { waiter->wake(Outcome::completed); });
  onCancel(queue, [waiter](bool) { waiter->wake(Outcome::cancelled); });
  const auto outcome = waiter->wait(limit);
  if (const auto* const present = result()) return *present;
  if (outcome == Outcome::cancelled) return Failure{URLError{URLError::cancelled, "cancelled"}};
  return Failure{URLError{URLError::timedOut, "no result within the time limit"}};
}

}  // namespace orvo
