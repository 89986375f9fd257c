#include <OrvoAPI/Base/FatalInternal.h>
#include <OrvoAPI/Queues/SerialQueue.h>
#include <OrvoAPI/Queues/WorkerPoolInternal.h>

namespace orvo {
namespace {

/// After so many jobs a queue stands in line again, so that a busy one does not keep a worker.
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

/// Stops the process when a job throws: the caller could not tell what became of his own, and a
/// worker that ran it would have stopped the process as well.
void SerialQueue::runSynchronously(detail::JobNode& job, const std::atomic<bool>& done) noexcept {
  if (drainer_.load(std::memory_order_relaxed) == currentThread()) {
    detail::fatal("SerialQueue::sync called from one of the queue's own jobs");
  }
  lock_.lock();
  jobs_.append(&job);
  if (state_ == State::draining) {
    ++waiters_;
    lock_.unlock();
    waitUntil(done);
    lock_.lock();
    --waiters_;
  } else {
    drain(&done);
  }
  lock_.unlock();
}

void SerialQueue::waitUntil(const std::atomic<bool>& done) {
  for (;;) {
    const auto turn = turn_.load(std::memory_order_acquire);
    if (done.load(std::memory_order_acquire)) return;
    turn_.wait(turn, std::memory_order_acquire);
  }
}

/// Whether the draining thread may leave what is left to a worker: never while somebody waits, for
/// he may be the worker that it would be left to.
bool SerialQueue::mayLeave(unsigned ran, const std::atomic<bool>* done) const {
  if (waiters_ > 0) return false;
  return done != nullptr ? done->load(std::memory_order_relaxed) : ran >= kJobsInARow;
}

/// Runs jobs: for a synchronous caller until his own is `done`, else as a worker.
void SerialQueue::drain(const std::atomic<bool>* done) {
  state_ = State::draining;
  drainer_.store(currentThread(), std::memory_order_relaxed);
  unsigned ran = 0;
  while (!jobs_.empty() && !mayLeave(ran, done)) {
    auto* const job = jobs_.pop();
    lock_.unlock();
    if (done == nullptr) detail::WorkerPool::goOnWith(job);
    job->run();
    ++ran;
    lock_.lock();
    if (waiters_ > 0) {
      turn_.fetch_add(1);  // in the one order of all, so that it is seen before a look for sleepers
      turn_.notify_all();
    }
  }
  drainer_.store(nullptr, std::memory_order_relaxed);
  state_ = jobs_.empty() ? State::idle : State::scheduled;
  if (state_ == State::idle || scheduledSelf_ != nullptr) return;
  scheduledSelf_ = shared_from_this();
  lock_.unlock();
  detail::WorkerPool::shared().post(Job(static_cast<detail::JobNode*>(this)));
  lock_.lock();
}

}  // namespace orvo
