#include <OrvoAPI/Base/detail/UUID.h>
#include <OrvoAPI/Futures/FutureExtrasInternal.h>
#include <OrvoAPI/Futures/detail/FutureCore.h>
#include <OrvoAPI/Queues/QueueLabels.h>

#include <utility>

namespace orvo::detail {
namespace {

/// Futures whose last reference went while another was being destroyed on this thread: a chain of
/// any length is taken down in a loop, not in a recursion. Null while none is being destroyed; the
/// list ends in a mark, which is no future.
[[gnu::tls_model("initial-exec")]] thread_local constinit FutureCore* disposed = nullptr;
FutureCore* lastDisposed() {
  return reinterpret_cast<FutureCore*>(std::uintptr_t{1});  // NOLINT(performance-no-int-to-ptr)
}

/// The nodes that were pushed, the oldest first.
template <class Node>
NodeList<Node> reversed(Node* newest) {
  NodeList<Node> list;
  while (newest != nullptr) {
    auto* const node = newest;
    newest = node->next;
    list.prepend(node);
  }
  return list;
}

CancelCallback* asCancelCallback(std::uintptr_t cancelCallback) {
  return reinterpret_cast<CancelCallback*>(cancelCallback);  // NOLINT(performance-no-int-to-ptr)
}

}  // namespace

void FutureCore::dropRest() noexcept {
  // Its waiter is one of the callbacks: it goes after them.
  const std::unique_ptr<FutureExtras> extras(extras_.load(std::memory_order_relaxed));
  const auto unposted = reversed(asNode(callbacks_.load(std::memory_order_relaxed)));
  const auto cancelCallbacks = cancelCallbacks_.load(std::memory_order_relaxed);
  const auto uncalled = reversed(asCancelCallback(cancelCallbacks & ~kCancelled));
}

void FutureCore::releaseWeakly(FutureCore* core) noexcept {
  // The last one needs no exchange: nothing is left to take or release another.
  auto& weak = counts(core).weak;
  if (weak.load(std::memory_order_acquire) == 1 ||
      weak.fetch_sub(1, std::memory_order_acq_rel) == 1) {
    operator delete(core);
  }
}

bool FutureCore::releaseUnlessLast() noexcept {
  auto& strong = counts(this).strong;
  auto count = strong.load(std::memory_order_relaxed);
  while (count > 1) {
    if (strong.compare_exchange_weak(count, count - 1, std::memory_order_acq_rel)) return true;
  }
  return false;
}

CoreRef<FutureCore> FutureCore::lock(FutureCore* core) noexcept {
  auto& strong = counts(core).strong;
  auto count = strong.load(std::memory_order_relaxed);
  while (count != 0) {
    if (strong.compare_exchange_weak(count, count + 1, std::memory_order_acq_rel)) {
      return CoreRef<FutureCore>::adopt(core);
    }
  }
  return {};
}

void FutureCore::dispose() noexcept {
  if (disposed != nullptr) {
    counts(this).next = std::exchange(disposed, this);
    return;
  }
  disposed = lastDisposed();
  destroy(this);
  if (disposed != lastDisposed()) destroyDisposed();
  disposed = nullptr;
}

void FutureCore::destroyDisposed() noexcept {
  while (disposed != lastDisposed()) {
    auto* const core = std::exchange(disposed, counts(disposed).next);
    destroy(core);
  }
}

void FutureCore::destroy(FutureCore* core) noexcept {
  core->~FutureCore();
  releaseWeakly(core);
}

std::string FutureCore::queueLabel() {
  auto& label = extras().label;
  const auto* present = label.load(std::memory_order_acquire);
  if (present == nullptr) {
    auto made = std::make_unique<const std::string>(std::string(FutureQueueLabelPrefix) +
                                                    "internal_callback_queue_" + makeUUID());
    if (label.compare_exchange_strong(present, made.get(), std::memory_order_acq_rel)) {
      present = made.release();
    }
  }
  return *present;
}

inline void FutureCore::post(Continuation* callback, FutureCore& source, const void* result) {
  source.retain();
  callback->source_ = &source;
  callback->result_ = result;
  // A copy: once posted, the callback may be gone, and its hold on the queue with it.
  const auto queue = callback->queue();
  queue->post(Job(callback));
}

JobNode* FutureCore::asNode(std::uintptr_t callbacks) {
  const auto newest = callbacks & ~(kPosting | kPosted);
  return reinterpret_cast<JobNode*>(newest);  // NOLINT(performance-no-int-to-ptr)
}

void FutureCore::publish(const void* result) noexcept {
  // The caller that finds no result is first; the others replace its result, but not before the
  // callbacks that are to get it have been taken.
  const void* first = nullptr;
  if (result_.compare_exchange_strong(first, result, std::memory_order_acq_rel)) first = result;
  auto callbacks = callbacks_.load(std::memory_order_acquire);
  bool isTaken = (callbacks & (kPosting | kPosted)) != 0;
  while (!isTaken &&
         !callbacks_.compare_exchange_weak(callbacks, callbacks == 0 ? kPosted : kPosting,
                                           std::memory_order_acq_rel, std::memory_order_acquire)) {
    isTaken = (callbacks & (kPosting | kPosted)) != 0;
  }
  if (first != result) result_.store(result, std::memory_order_release);
  if (!isTaken && callbacks != 0) postAll(asNode(callbacks), first);
}

inline void FutureCore::postAll(JobNode* newest, const void* first) {
  if (newest->next == nullptr) {
    post(static_cast<Continuation*>(newest), *this, first);
  } else {
    postInOrder(newest, first);
  }
  for (;;) {
    auto callbacks = kPosting;
    if (callbacks_.compare_exchange_strong(callbacks, kPosted, std::memory_order_acq_rel)) return;
    postInOrder(asNode(callbacks_.exchange(kPosting, std::memory_order_acq_rel)), nullptr);
  }
}

void FutureCore::postInOrder(JobNode* newest, const void* result) {
  for (auto batch = reversed(newest); !batch.empty();) {
    auto* const callback = static_cast<Continuation*>(batch.pop());
    post(callback, *this, result != nullptr ? result : callback->result_);
  }
}

void FutureCore::add(Continuation* callback) {
  JobNode* const node = callback;
  auto callbacks = callbacks_.load(std::memory_order_acquire);
  std::uintptr_t joined = 0;
  do {
    if (callbacks == kPosted) return post(callback, *this, currentResult());
    if ((callbacks & kPosting) != 0) callback->result_ = currentResult();
    const auto newest = callbacks & ~kPosting;
    node->next = reinterpret_cast<JobNode*>(newest);  // NOLINT(performance-no-int-to-ptr)
    joined = reinterpret_cast<std::uintptr_t>(node) | (callbacks & kPosting);
  } while (!callbacks_.compare_exchange_weak(callbacks, joined, std::memory_order_acq_rel,
                                             std::memory_order_acquire));
}

void FutureCore::add(CancelCallback* callback, DispatchQueue& queue) {
  auto newest = cancelCallbacks_.load(std::memory_order_acquire);
  do {
    if (newest == kCancelled) {
      return queue.post(callback->intoJob(CoreRef<FutureCore>::retain(this)));
    }
    callback->next = asCancelCallback(newest);
  } while (!cancelCallbacks_.compare_exchange_weak(
      newest, reinterpret_cast<std::uintptr_t>(callback), std::memory_order_acq_rel,
      std::memory_order_acquire));
}

/// The futures of a chain that is being cancelled, with their callbacks: the source's come before
/// its derived future's, as if each were the first callback of the next. Needs no memory. Callbacks
/// that an exception keeps from being called are dropped with it.
class FutureCore::Cancellation {
 public:
  Cancellation() = default;
  Cancellation(const Cancellation&) = delete;
  Cancellation& operator=(const Cancellation&) = delete;
  ~Cancellation() {
    while (callbacks_ != nullptr) pop()->drop();
    while (futures_ != nullptr) {
      auto* const future = std::exchange(futures_, counts(futures_).next);
      future->release();
    }
  }

  /// Cancels the future and returns the one that it was derived from, if that is there.
  [[nodiscard]] CoreRef<FutureCore> cancel(CoreRef<FutureCore> future) {
    auto& core = *future.get();
    const auto taken = core.cancelCallbacks_.exchange(kCancelled, std::memory_order_acq_rel);
    take(asCancelCallback(taken & ~kCancelled), core.isCompleted());
    // The link belongs to the first cancel; nobody disposes of what is held.
    if (taken != kCancelled) counts(&core).next = std::exchange(futures_, future.detach());
    auto* const source = core.source_.exchange(nullptr, std::memory_order_acq_rel);
    if (source == nullptr) return {};
    auto held = lock(source);
    releaseWeakly(source);
    return held;
  }
  void callAll() {
    while (callbacks_ != nullptr) {
      auto* const callback = pop();
      callback->call(callback->hasResult);
    }
  }

 private:
  void take(CancelCallback* newest, bool hasResult) {
    while (newest != nullptr) {
      auto* const callback = std::exchange(newest, newest->next);
      callback->hasResult = hasResult;
      callback->next = std::exchange(callbacks_, callback);
    }
  }
  CancelCallback* pop() { return std::exchange(callbacks_, callbacks_->next); }

  FutureCore* futures_ = nullptr;
  CancelCallback* callbacks_ = nullptr;
};

void FutureCore::cancel() {
  Cancellation cancellation;
  auto future = CoreRef<FutureCore>::retain(this);
  while (future) future = cancellation.cancel(std::move(future));
  cancellation.callAll();
}

}  // namespace orvo::detail
