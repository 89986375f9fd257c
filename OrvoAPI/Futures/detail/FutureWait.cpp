#include <OrvoAPI/Futures/detail/FutureWait.h>

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <optional>

namespace orvo::detail {
namespace {

/// Longer limits wait this long: no sum overflows.
constexpr std::chrono::hours kLongestWait{24 * 365 * 100};

}  // namespace

struct Waiter::State {
  std::mutex mutex;
  std::condition_variable woken;
  std::optional<Outcome> outcome;
};

Waiter::Waiter() : state_(std::make_unique<State>()) {}
Waiter::~Waiter() = default;

void Waiter::wake(Outcome outcome) {
  const std::lock_guard guard(state_->mutex);
  if (!state_->outcome) state_->outcome = outcome;
  state_->woken.notify_all();
}

Waiter::Outcome Waiter::wait(std::chrono::milliseconds limit) {
  std::unique_lock guard(state_->mutex);
  state_->woken.wait_for(guard, std::min<std::chrono::milliseconds>(limit, kLongestWait),
                         [this] { return state_->outcome.has_value(); });
  return state_->outcome.value_or(Outcome::timedOut);
}

}  // namespace orvo::detail
