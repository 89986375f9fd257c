#include <OrvoAPI/Base/MutexInternal.h>
#include <OrvoAPI/Futures/detail/FutureWait.h>

#include <algorithm>
#include <condition_variable>
#include <optional>

namespace orvo::detail {
namespace {

/// Longer limits wait this long: no sum overflows.
constexpr std::chrono::hours kLongestWait{24 * 365 * 100};

}  // namespace

struct Waiter::State {
  Mutex mutex;
  std::condition_variable woken;
  std::optional<Outcome> outcome ORVO_GUARDED_BY(mutex);
};

Waiter::Waiter() : state_(std::make_unique<State>()) {}
Waiter::~Waiter() = default;

void Waiter::wake(Outcome outcome) {
  const MutexGuard guard(state_->mutex);
  if (!state_->outcome) state_->outcome = outcome;
  state_->woken.notify_all();
}

Waiter::Outcome Waiter::wait(std::chrono::milliseconds limit) {
  const auto end =
      std::chrono::steady_clock::now() + std::min<std::chrono::milliseconds>(limit, kLongestWait);
  MutexGuard guard(state_->mutex);
  while (!state_->outcome && guard.waitUntil(state_->woken, end)) {
  }
  return state_->outcome.value_or(Outcome::timedOut);
}

}  // namespace orvo::detail
