#pragma once

#include <OrvoAPI/Platform/DispatchQueue.h>
#include <OrvoAPI/Platform/Lock.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>

namespace orvo::detail {

class FutureCore;

/// Shares a core; an empty one is possible. The count lies in the core.
template <class Core>
class CoreRef {
 public:
  CoreRef() = default;
  /// Takes over a reference that the caller holds.
  [[nodiscard]] static CoreRef adopt(Core* core) { return CoreRef(core); }
  [[nodiscard]] static CoreRef retain(Core* core) {
    core->retain();
    return CoreRef(core);
  }
  CoreRef(const CoreRef& other) : core_(other.core_) {
    if (core_ != nullptr) core_->retain();
  }
  CoreRef(CoreRef&& other) noexcept : core_(other.detach()) {}
  CoreRef& operator=(CoreRef other) noexcept {
    std::swap(core_, other.core_);
    return *this;
  }
  ~CoreRef() {
    if (core_ != nullptr) core_->release();
  }

  [[nodiscard]] Core* get() const { return core_; }
  Core* operator->() const { return core_; }
  explicit operator bool() const { return core_ != nullptr; }
  /// Gives up the reference without releasing it.
  [[nodiscard]] Core* detach() { return std::exchange(core_, nullptr); }

 private:
  explicit CoreRef(Core* core) : core_(core) {}
  Core* core_ = nullptr;
};

/// A callback that waits for a future's result and is then itself the job that is posted.
class Continuation : public JobNode {
 public:
  /// The queue it is posted to.
  [[nodiscard]] virtual const std::shared_ptr<DispatchQueue>& queue() const = 0;

 protected:
  ~Continuation() = default;
  /// The completed future, which it keeps alive, and the result as it was when it was posted.
  [[nodiscard]] FutureCore* source() const { return source_; }
  [[nodiscard]] const void* sourceResult() const { return result_; }
  /// Lets go of the completed future.
  void releaseSource() noexcept;

 private:
  friend class FutureCore;
  FutureCore* source_ = nullptr;
  const void* result_ = nullptr;
};

/// A callback that waits for a future's cancellation. Exactly one of its operations is called,
/// once, and consumes it.
class CancelCallback {
 public:
  virtual void call(bool completed) = 0;
  virtual void drop() noexcept = 0;
  /// The form for a future that is already cancelled: a job that asks anew when it runs.
  virtual Job intoJob(CoreRef<FutureCore> future) = 0;

  CancelCallback* next = nullptr;

 protected:
  ~CancelCallback() = default;
};

/// The state of a future, without the type of its value: one reference-counted block.
///
/// It has two independent flags, completed (a result is there) and cancelled, and two lists of
/// callbacks, which only ever grow by one or are emptied:
///
///     pending --publish--> completed --publish--> completed, with the newer result
///     not cancelled --cancel--> cancelled
///
///   - A result is immutable once published. The first lies in the block; each further one is a
///     node of its own, so that who holds the older reads on. All live as long as the future.
///   - `publish` stores the result, takes the callbacks and posts them with the lock given up.
///     While it posts, the future is `posting`: who registers then joins the list, which the
///     posting thread empties before it leaves. So callbacks are posted in the order in which they
///     were registered, and none is lost or posted twice.
///   - A callback in a list is owned by it. Posted, it owns itself and a reference to the future,
///     until it has run.
///   - A derived future is at once the callback on its source: the source's list owns it. It holds
///     its source weakly, for cancelling.
///   - `cancel` raises the flag first and takes the cancel callbacks under the lock; who registers
///     looks at the flag again under the lock. So none is lost.
///
/// The lock plays the part of a serial queue that is only ever used synchronously; it is never held
/// while a callback, a queue or a destructor of others runs.
class FutureCore {
 public:
  FutureCore(const FutureCore&) = delete;
  FutureCore& operator=(const FutureCore&) = delete;

  void retain() noexcept { strong_.fetch_add(1, std::memory_order_relaxed); }
  void release() noexcept {
    if (strong_.fetch_sub(1, std::memory_order_acq_rel) == 1) dispose();
  }
  void retainWeakly() noexcept { weak_.fetch_add(1, std::memory_order_relaxed); }
  void releaseWeakly() noexcept {
    if (weak_.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
  }
  /// Turns a weak reference into a strong one; empty when the future has gone.
  [[nodiscard]] CoreRef<FutureCore> lock() noexcept;

  [[nodiscard]] const std::shared_ptr<DispatchQueue>& callbackQueue() const { return queue_; }
  [[nodiscard]] bool isCompleted() const { return result_.load(std::memory_order_acquire); }
  [[nodiscard]] bool isCancelled() const { return cancelled_.load(std::memory_order_acquire); }
  /// The label of the serial queue that this core stands for; made when first asked for.
  [[nodiscard]] std::string queueLabel();

  /// Takes the callback over.
  void add(Continuation* callback);
  /// Takes the callback over; `queue` is used only when the future is already cancelled.
  void add(CancelCallback* callback, DispatchQueue& queue);
  void cancel();

 protected:
  explicit FutureCore(std::shared_ptr<DispatchQueue> callbackQueue)
      : queue_(std::move(callbackQueue)) {}
  /// A future whose cancellation goes on to `source`, which it holds weakly.
  FutureCore(std::shared_ptr<DispatchQueue> callbackQueue, FutureCore& source)
      : queue_(std::move(callbackQueue)), cancelSource_(&source) {
    source.retainWeakly();
  }
  virtual ~FutureCore();

  /// Destroys the results, and what a derived future holds to make its own.
  virtual void destroyContents() noexcept = 0;

  [[nodiscard]] const void* currentResult() const {
    return result_.load(std::memory_order_acquire);
  }
  /// Makes `result` the current one and posts the callbacks.
  void publish(const void* result) noexcept;
  /// True for the first caller only: he may build the result in the block.
  [[nodiscard]] bool claimFirstResult() {
    return !firstClaimed_.exchange(true, std::memory_order_acq_rel);
  }

 private:
  struct Cancellation;

  void dispose() noexcept;
  void destroyAll() noexcept;
  static void post(Continuation* callback, FutureCore& source, const void* result);

  std::atomic<std::uint32_t> strong_{1};
  std::atomic<std::uint32_t> weak_{1};  // all strong references together hold one
  Lock lock_;
  std::atomic<bool> cancelled_{false};
  std::atomic<bool> firstClaimed_{false};
  bool posting_ ORVO_GUARDED_BY(lock_) = false;
  const std::shared_ptr<DispatchQueue> queue_;
  std::atomic<const void*> result_{nullptr};
  JobList callbacks_ ORVO_GUARDED_BY(lock_);
  NodeList<CancelCallback> cancelCallbacks_ ORVO_GUARDED_BY(lock_);
  FutureCore* cancelSource_ ORVO_GUARDED_BY(lock_) = nullptr;  // held weakly
  std::atomic<const std::string*> label_{nullptr};
  FutureCore* nextDisposed_ = nullptr;
};

}  // namespace orvo::detail
