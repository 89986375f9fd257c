#include <OrvoAPI/Futures/FutureExtrasInternal.h>
#include <OrvoAPI/Futures/GeneralError.h>
#include <OrvoAPI/Futures/detail/FutureWait.h>
#include <OrvoAPI/HTTP/URLError.h>
#include <OrvoAPI/Queues/MainQueueInternal.h>
#include <OrvoAPI/Queues/detail/InlineQueue.h>

#include <algorithm>
#include <string>

namespace orvo::detail {
namespace {

/// Longer limits wait this long: no sum overflows.
constexpr std::chrono::hours kLongestWait{24 * 365 * 100};

/// Where a cancelled future posts what has been done already.
class NoJob final : public JobNode {
 public:
  void run() override {}
  void drop() noexcept override {}
};

}  // namespace

Waiter::Waiter() : queue_(inlineQueue()) {}

void Waiter::waitFor(FutureCore& future) {
  future.add(static_cast<Continuation*>(this));
  future.add(static_cast<CancelCallback*>(this), *queue_);
}

void Waiter::sleep(std::chrono::milliseconds limit) {
  const auto end =
      std::chrono::steady_clock::now() + std::min<std::chrono::milliseconds>(limit, kLongestWait);
  MutexGuard guard(mutex_);
  while (!isOver_ && guard.waitUntil(woken_, end)) {
  }
}

void Waiter::wake() {
  const MutexGuard guard(mutex_);
  isOver_ = true;
  woken_.notify_all();
}

void Waiter::run() {
  wake();
  releaseSource();  // last: the future may go, and this with it
}

void Waiter::call(bool) { wake(); }

Job Waiter::intoJob(CoreRef<FutureCore>) {
  wake();
  static NoJob nothing;
  return Job(static_cast<JobNode*>(&nothing));
}

FutureExtras& FutureCore::extras() {
  auto* present = extras_.load(std::memory_order_acquire);
  if (present == nullptr) {
    auto made = std::make_unique<FutureExtras>();
    if (extras_.compare_exchange_strong(present, made.get(), std::memory_order_acq_rel)) {
      present = made.release();
    }
  }
  return *present;
}

void FutureCore::wait(std::chrono::milliseconds limit) {
  auto& own = extras();
  if (!own.isWaitedFor.exchange(true)) own.waiter.waitFor(*this);
  own.waiter.sleep(limit);
}

AnyError refusedWait() {
  const AnyError error = GeneralError::unableToPerformAction{};
  return error.withContext(
      {.operation = "wait",
       .note = MainQueue::shared()->isCurrent()
                   ? "this thread runs the main queue, through which the result may have to come; "
                     "use onComplete, or wait on another thread"
                   : "this is a thread of the library, which others need; use onComplete, map or "
                     "flatMap"});
}

AnyError vainWait(bool isCancelled) {
  if (isCancelled) return URLError{URLError::cancelled, "cancelled"};
  std::string message = "no result within the time limit";
  if (MainQueueView::isNeglected()) {
    message +=
        "; jobs wait in the main queue, which is claimed: have its claim run or drain it, or end "
        "the claim";
  }
  return URLError{URLError::timedOut, std::move(message)};
}

}  // namespace orvo::detail
