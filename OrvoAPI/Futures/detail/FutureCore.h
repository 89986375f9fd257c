#pragma once

#include <OrvoAPI/Futures/detail/CoreRef.h>
#include <OrvoAPI/Queues/DispatchQueue.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <string>
#include <utility>

namespace orvo::detail {

class FutureCore;
struct FutureExtras;

/// A callback that waits for a future's result and is then itself the job that is posted.
class Continuation : public JobNode {
 public:
  /// The queue it is posted to.
  [[nodiscard]] virtual const std::shared_ptr<DispatchQueue>& queue() const = 0;

 protected:
  ~Continuation() = default;
  /// The completed future, which it keeps alive, and the result that this callback is to get.
  [[nodiscard]] FutureCore* source() const { return source_; }
  [[nodiscard]] const void* sourceResult() const { return result_; }
  /// Lets go of the completed future.
  inline void releaseSource() noexcept;

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
  /// The form for a future that is already cancelled: a job that checks again when it runs.
  virtual Job intoJob(CoreRef<FutureCore> future) = 0;

  CancelCallback* next = nullptr;
  bool hasResult = false;  // what `call` is to be told, once it is taken from its future

 protected:
  ~CancelCallback() = default;
};

/// The state of a future, without the type of its value. It lies in one block with its reference
/// counts: destroyed with its last strong reference, while the block stays until the last weak one.
///
/// It has two independent flags, completed (a result is there) and cancelled, and two lists of
/// callbacks, which only ever grow by one or are emptied:
///
///     pending --publish--> completed --publish--> completed, with the newer result
///     not cancelled --cancel--> cancelled
///
///   - A result is immutable once published. The first lies in the block; each further one is a
///     node of its own, so that the older ones stay readable. All live as long as the future.
///   - `publish` stores the result, takes the callbacks and posts them with the first result, even
///     when a second one has come in between. While it does, the future is `posting`: a callback
///     registered then joins the list, with the result of that moment, and the posting thread
///     empties the list before it leaves. So callbacks are posted in the order in which they were
///     registered, and none is lost or posted twice.
///   - A callback in a list is owned by it. Posted, it owns itself and a reference to the future,
///     until it has run.
///   - A derived future is at once the callback on its source: the source's list owns it. It holds
///     its source weakly, for cancelling.
///   - `cancel` takes the cancel callbacks by the very exchange that raises the flag. So a new
///     callback either finds the flag or joins a list that will be called.
///
/// A list is one atomic word, the newest callback first, and every change a single exchange: no
/// thread ever waits, and no queue, callback or destructor of the app's runs inside.
class FutureCore {
 public:
  FutureCore(const FutureCore&) = delete;
  FutureCore& operator=(const FutureCore&) = delete;

  static void* operator new(std::size_t size) {
    return (new (::operator new(sizeof(Counts) + size)) Counts) + 1;
  }
  static void operator delete(void* core) noexcept {
    ::operator delete(static_cast<Counts*>(core) - 1);
  }

  void retain() noexcept { counts(this).strong.fetch_add(1, std::memory_order_relaxed); }
  void release() noexcept {
    if (counts(this).strong.fetch_sub(1, std::memory_order_acq_rel) == 1) dispose();
  }
  /// As `release`, unless it is the last reference: then it stays, and false is returned.
  [[nodiscard]] bool releaseUnlessLast() noexcept;
  void retainWeakly() noexcept { counts(this).weak.fetch_add(1, std::memory_order_relaxed); }
  static void releaseWeakly(FutureCore* core) noexcept;
  /// A strong reference from a weak one; empty when the future has gone.
  [[nodiscard]] static CoreRef<FutureCore> lock(FutureCore* core) noexcept;

  [[nodiscard]] const std::shared_ptr<DispatchQueue>& callbackQueue() const { return queue_; }
  [[nodiscard]] bool isCompleted() const { return result_.load(std::memory_order_acquire); }
  [[nodiscard]] bool isCancelled() const {
    return cancelCallbacks_.load(std::memory_order_acquire) == kCancelled;
  }
  /// The label of the serial queue that this core stands for; made when first asked for.
  [[nodiscard]] std::string queueLabel();

  /// Takes the callback over.
  void add(Continuation* callback);
  /// Takes the callback over; `queue` is used only when the future is already cancelled.
  void add(CancelCallback* callback, DispatchQueue& queue);
  void cancel();
  /// Blocks until it is completed or cancelled, or the limit has passed. All calls share a
  /// callback.
  void wait(std::chrono::milliseconds limit);

 protected:
  explicit FutureCore(std::shared_ptr<DispatchQueue> callbackQueue)
      : queue_(std::move(callbackQueue)) {}
  /// A future whose cancellation goes on to `source`, which it holds weakly.
  FutureCore(std::shared_ptr<DispatchQueue> callbackQueue, FutureCore& source)
      : queue_(std::move(callbackQueue)), source_(&source) {
    source.retainWeakly();
  }
  virtual ~FutureCore() = 0;

  [[nodiscard]] const void* currentResult() const {
    return result_.load(std::memory_order_acquire);
  }
  /// Cancelling this future goes no further from now on.
  void leaveSource() noexcept {
    auto* const source = source_.exchange(nullptr, std::memory_order_acq_rel);
    if (source != nullptr) releaseWeakly(source);
  }
  /// Makes `result` the current one and posts the callbacks.
  void publish(const void* result) noexcept;
  /// True for the first caller only, who may build the result in the block.
  [[nodiscard]] bool claimFirstResult() {
    return !firstClaimed_.exchange(true, std::memory_order_acq_rel);
  }
  /// Whether a result was built in the block; to be asked only once the last reference has gone.
  [[nodiscard]] bool hasFirstResult() const {
    return firstClaimed_.load(std::memory_order_relaxed);
  }

 private:
  /// Stands before the state in its block.
  struct alignas(std::max_align_t) Counts {
    std::atomic<std::uint32_t> strong{1};
    std::atomic<std::uint32_t> weak{1};  // all strong references together hold one
    FutureCore* next;  // in the list of the one thread that cancels or disposes of it
  };
  class Cancellation;

  [[nodiscard]] static Counts& counts(FutureCore* core) {
    return *(reinterpret_cast<Counts*>(core) - 1);
  }
  void dispose() noexcept;
  static void destroyDisposed() noexcept;
  static void destroy(FutureCore* core) noexcept;
  void dropRest() noexcept;
  static void post(Continuation* callback, FutureCore& source, const void* result);
  /// Posts the callbacks that were taken, with the first result, then those that join meanwhile.
  void postAll(JobNode* newest, const void* first);
  /// In the order in which they were registered; without a result, each with the one that it found.
  [[gnu::noinline]] void postInOrder(JobNode* newest, const void* result);
  [[nodiscard]] FutureExtras& extras();

  /// The newest callback that waits, if any, with the mark of a thread that is posting others; or
  /// that all were posted and the next may be posted at once.
  static constexpr std::uintptr_t kPosting = 1;
  static constexpr std::uintptr_t kPosted = 2;
  [[nodiscard]] static JobNode* asNode(std::uintptr_t callbacks);
  /// The newest cancel callback that waits, if any; or that the future is cancelled.
  static constexpr std::uintptr_t kCancelled = 1;

  const std::shared_ptr<DispatchQueue> queue_;
  std::atomic<const void*> result_{nullptr};
  std::atomic<std::uintptr_t> callbacks_{0};
  std::atomic<std::uintptr_t> cancelCallbacks_{0};
  std::atomic<FutureCore*> source_{nullptr};    // held weakly, until a cancel has gone on to it
  std::atomic<FutureExtras*> extras_{nullptr};  // made when first asked for
  std::atomic<bool> firstClaimed_{false};
};

inline FutureCore::~FutureCore() {
  const auto waiting = callbacks_.load(std::memory_order_relaxed) & ~(kPosting | kPosted);
  const auto uncalled = cancelCallbacks_.load(std::memory_order_relaxed) & ~kCancelled;
  if (waiting != 0 || uncalled != 0 || extras_.load(std::memory_order_relaxed)) dropRest();
  if (auto* const source = source_.load(std::memory_order_relaxed)) releaseWeakly(source);
}

void Continuation::releaseSource() noexcept {
  if (auto* const source = std::exchange(source_, nullptr)) source->release();
}

}  // namespace orvo::detail
