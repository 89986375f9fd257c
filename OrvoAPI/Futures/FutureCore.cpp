#include <OrvoAPI/Futures/FutureCore.h>
#include <OrvoAPI/Platform/QueueLabels.h>
#include <OrvoAPI/Platform/UUID.h>

#include <vector>

namespace orvo::detail {
namespace {

/// Futures whose last reference went while another was being destroyed on this thread: a chain of
/// any length is taken down in a loop, not in a recursion.
struct DisposalList {
  FutureCore* first = nullptr;
  bool active = false;
};
thread_local constinit DisposalList disposals;

}  // namespace

void Continuation::releaseSource() noexcept {
  if (auto* const source = std::exchange(source_, nullptr)) source->release();
}

FutureCore::~FutureCore() { delete label_.load(std::memory_order_acquire); }

CoreRef<FutureCore> FutureCore::lock() noexcept {
  auto count = strong_.load(std::memory_order_relaxed);
  while (count != 0) {
    if (strong_.compare_exchange_weak(count, count + 1, std::memory_order_acq_rel)) {
      return CoreRef<FutureCore>::adopt(this);
    }
  }
  return {};
}

void FutureCore::dispose() noexcept {
  if (disposals.active) {
    nextDisposed_ = std::exchange(disposals.first, this);
    return;
  }
  disposals.active = true;
  destroyAll();
  while (auto* const core = disposals.first) {
    disposals.first = core->nextDisposed_;
    core->destroyAll();
  }
  disposals.active = false;
}

void FutureCore::destroyAll() noexcept {
  destroyContents();
  lock_.lock();
  const auto callbacks = std::move(callbacks_);
  const auto cancelCallbacks = std::move(cancelCallbacks_);
  auto* const source = std::exchange(cancelSource_, nullptr);
  lock_.unlock();
  if (source != nullptr) source->releaseWeakly();
  releaseWeakly();
}

std::string FutureCore::queueLabel() {
  const auto* label = label_.load(std::memory_order_acquire);
  if (label == nullptr) {
    auto made = std::make_unique<const std::string>(std::string(FutureQueueLabelPrefix) +
                                                    "internal_callback_queue_" + makeUUID());
    if (label_.compare_exchange_strong(label, made.get(), std::memory_order_acq_rel)) {
      label = made.release();
    }
  }
  return *label;
}

void FutureCore::post(Continuation* callback, FutureCore& source, const void* result) {
  source.retain();
  callback->source_ = &source;
  callback->result_ = result;
  // A copy: once posted, the callback may be gone, and its hold on the queue with it.
  const auto queue = callback->queue();
  queue->post(Job(callback));
}

void FutureCore::publish(const void* result) noexcept {
  lock_.lock();
  result_.store(result, std::memory_order_release);
  if (posting_ || callbacks_.empty()) return lock_.unlock();
  posting_ = true;
  while (!callbacks_.empty()) {
    auto batch = std::move(callbacks_);
    const auto* const current = result_.load(std::memory_order_relaxed);
    lock_.unlock();
    while (!batch.empty()) post(static_cast<Continuation*>(batch.pop()), *this, current);
    lock_.lock();
  }
  posting_ = false;
  lock_.unlock();
}

void FutureCore::add(Continuation* callback) {
  lock_.lock();
  const auto* const result = result_.load(std::memory_order_relaxed);
  if (result == nullptr || posting_) {
    callbacks_.append(callback);
    return lock_.unlock();
  }
  lock_.unlock();
  post(callback, *this, result);
}

void FutureCore::add(CancelCallback* callback, DispatchQueue& queue) {
  lock_.lock();
  if (isCancelled()) {
    lock_.unlock();
    return queue.post(callback->intoJob(CoreRef<FutureCore>::retain(this)));
  }
  cancelCallbacks_.append(callback);
  lock_.unlock();
}

/// One future of a chain that is being cancelled. Callbacks that an exception keeps from being
/// called are dropped with it.
struct FutureCore::Cancellation {
  CoreRef<FutureCore> future;
  NodeList<CancelCallback> callbacks;
  bool completed;
};

void FutureCore::cancel() {
  // Up the chain in a loop, then down again with the callbacks: the source's come before its
  // derived future's, as if each were the first callback of the next.
  std::vector<Cancellation> chain;
  auto future = CoreRef<FutureCore>::retain(this);
  while (future) {
    auto& core = *future.get();
    core.cancelled_.store(true, std::memory_order_release);
    const bool completed = core.isCompleted();
    core.lock_.lock();
    auto callbacks = std::move(core.cancelCallbacks_);
    auto* const source = std::exchange(core.cancelSource_, nullptr);
    core.lock_.unlock();
    chain.push_back({std::move(future), std::move(callbacks), completed});
    if (source == nullptr) break;
    future = source->lock();
    source->releaseWeakly();
  }
  for (auto cancelled = chain.rbegin(); cancelled != chain.rend(); ++cancelled) {
    while (!cancelled->callbacks.empty()) cancelled->callbacks.pop()->call(cancelled->completed);
  }
}

}  // namespace orvo::detail
