#pragma once

#include <OrvoAPI/Base/MutexInternal.h>
#include <OrvoAPI/Futures/detail/FutureCore.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <string>

namespace orvo::detail {

/// What threads that wait for a future sleep on. It is one of the future's callbacks and one of its
/// cancel callbacks, but belongs to the future itself. Thread-safe.
class Waiter final : public Continuation, public CancelCallback {
 public:
  Waiter();
  /// To be called once.
  void waitFor(FutureCore& future);
  void sleep(std::chrono::milliseconds limit);

  [[nodiscard]] const std::shared_ptr<DispatchQueue>& queue() const override { return queue_; }
  void run() override;
  void call(bool completed) override;
  Job intoJob(CoreRef<FutureCore> future) override;
  void drop() noexcept override {}  // as either kind of callback

 private:
  void wake();

  const std::shared_ptr<DispatchQueue> queue_;
  Mutex mutex_;
  std::condition_variable woken_;
  bool isOver_ ORVO_GUARDED_BY(mutex_) = false;  // completed or cancelled
};

/// What few futures ever need.
struct FutureExtras {
  FutureExtras() = default;
  FutureExtras(const FutureExtras&) = delete;
  FutureExtras& operator=(const FutureExtras&) = delete;
  ~FutureExtras() { delete label.load(std::memory_order_relaxed); }

  std::atomic<const std::string*> label{nullptr};
  std::atomic<bool> isWaitedFor{false};
  Waiter waiter;
};

}  // namespace orvo::detail
