#include <OrvoAPI/Base/FatalInternal.h>
#include <OrvoAPI/Queues/SerialQueue.h>
#include <OrvoAPI/Queues/ThreadInternal.h>
#include <OrvoAPI/Queues/WorkerPoolInternal.h>

namespace orvo {
namespace {

/// After this many jobs a queue goes back in line, so that a busy one does not keep a worker.
constexpr unsigned kJobsInARow = 64;

const void* currentThread() {
  thread_local const char token = 0;
  return &token;
}

}  // namespace

std::shared_ptr<SerialQueue> SerialQueue::make(std::string label) {
  return std::shared_ptr<SerialQueue>(new SerialQueue(std::move(label)));
}

void SerialQueue::post(Job job) {
  // Whatever a thread of the parent was doing with the queue.
  if (detail::isForkedChild()) return detail::runInForkedChild(std::move(job));
  {
    const detail::LockGuard guard(lock_);
    jobs_.append(job.release());
    if (state_ != State::idle) return;
    state_ = State::scheduled;
    if (scheduledSelf_ != nullptr) return;  // it still stands in the list from an earlier time
    scheduledSelf_ = shared_from_this();
  }
  detail::WorkerPool::shared().post(Job(static_cast<detail::JobNode*>(this)));
}

void SerialQueue::run() {
  lock_.lock();
  const auto self = std::move(scheduledSelf_);
  scheduledSelf_ = nullptr;
  if (state_ == State::scheduled) drain(nullptr);
  lock_.unlock();
}

void SerialQueue::drop() noexcept {
  lock_.lock();
  auto self = std::move(scheduledSelf_);
  auto jobs = std::move(jobs_);
  lock_.unlock();
}

/// Terminates the process when a job of others throws, as a worker that ran it would have done.
void SerialQueue::runSynchronously(detail::JobNode& job) noexcept {
  if (detail::isForkedChild()) return job.run();
  if (drainer_.load(std::memory_order_relaxed) == currentThread()) {
    detail::fatal("SerialQueue::sync called from one of the queue's own jobs");
  }
  lock_.lock();
  jobs_.append(&job);
  if (state_ != State::draining || waitToDrain(job)) drain(&job);
  lock_.unlock();
}

/// Waits until the job has run (false) or the queue is handed to the caller (true).
bool SerialQueue::waitToDrain(const detail::JobNode& job) {
  Waiter waiter{&job};
  waiters_.append(&waiter);
  lock_.unlock();
  waiter.turn.wait(Waiter::waits, std::memory_order_acquire);
  lock_.lock();  // the one that wakes holds it: it has finished with the waiter
  return waiter.turn.load(std::memory_order_relaxed) == Waiter::drains;
}

void SerialQueue::wake(Waiter& waiter, Waiter::Turn turn) {
  // An exchange, not a store: it is seen before the check whether a thread sleeps.
  waiter.turn.exchange(turn);
  waiter.turn.notify_one();
}

/// Runs jobs: for a synchronous caller up to its `own`, otherwise as a worker.
void SerialQueue::drain(const detail::JobNode* own) {
  state_ = State::draining;
  drainer_.store(currentThread(), std::memory_order_relaxed);
  bool isLast = false;
  for (unsigned ran = 0; !jobs_.empty() && !isLast; ++ran) {
    isLast = own != nullptr ? jobs_.first() == own : ran + 1 == kJobsInARow;
    runFirst(own == nullptr);
  }
  drainer_.store(nullptr, std::memory_order_relaxed);
  handOn();
}

void SerialQueue::runFirst(bool asWorker) {
  auto* const job = jobs_.pop();
  const bool isAwaited = !waiters_.empty() && waiters_.first()->job == job;
  auto* const waiter = isAwaited ? waiters_.pop() : nullptr;
  lock_.unlock();
  if (asWorker) detail::WorkerPool::goOnWith(job);
  job->run();
  lock_.lock();
  if (waiter != nullptr) wake(*waiter, Waiter::hasRun);
}

/// Never to the workers while a caller waits: that may be the very worker that would have to run
/// it.
void SerialQueue::handOn() {
  if (!waiters_.empty()) return wake(*waiters_.pop(), Waiter::drains);
  state_ = jobs_.empty() ? State::idle : State::scheduled;
  if (state_ == State::idle || scheduledSelf_ != nullptr) return;
  scheduledSelf_ = shared_from_this();
  lock_.unlock();
  detail::WorkerPool::shared().post(Job(static_cast<detail::JobNode*>(this)));
  lock_.lock();
}

}  // namespace orvo
