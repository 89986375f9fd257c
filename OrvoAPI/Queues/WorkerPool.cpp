#include <OrvoAPI/Base/FatalInternal.h>
#include <OrvoAPI/Base/FutexInternal.h>
#include <OrvoAPI/Queues/ThreadInternal.h>
#include <OrvoAPI/Queues/TimerInternal.h>
#include <OrvoAPI/Queues/WorkerPoolInternal.h>
#include <OrvoAPI/Queues/detail/TailPosition.h>

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <new>
#include <thread>

namespace orvo::detail {
namespace {

constexpr unsigned kTailJobsInARow = 64;
/// To start the one worker without which no job would ever run.
constexpr int kAttempts = 100;
constexpr std::chrono::milliseconds kBetweenAttempts{10};

/// What a worker knows about itself; all zero on every other thread.
struct WorkerState {
  const JobNode* running = nullptr;  // a job that runs inside it does not count
  bool inTailPosition = false;
  JobNode* tailJob = nullptr;
  unsigned tailJobsInARow = 0;
  bool holdsWakes = false;
  unsigned heldWakes = 0;
};
[[gnu::tls_model("initial-exec")]] thread_local constinit WorkerState workerState;

/// Every future asks for the pool: one load is all that it should cost.
constinit std::atomic<WorkerPool*> sharedPool = nullptr;

unsigned processors() {
  const auto count = sysconf(_SC_NPROCESSORS_ONLN);
  return count > 2 ? static_cast<unsigned>(count) : 2;
}

}  // namespace

TailPosition::TailPosition(const JobNode* job) {
  auto& state = workerState;
  state.inTailPosition =
      state.running == job && state.tailJob == nullptr && state.tailJobsInARow < kTailJobsInARow;
}
TailPosition::~TailPosition() { workerState.inTailPosition = false; }

WorkerPool& WorkerPool::shared() {
  auto* const pool = sharedPool.load(std::memory_order_acquire);
  return pool != nullptr ? *pool : makeShared();
}

WorkerPool& WorkerPool::makeShared() {
  static auto* const pool = new WorkerPool;  // its threads may outlive static destruction
  sharedPool.store(pool, std::memory_order_release);
  return *pool;
}

WorkerPool::WorkerPool()
    : maximumWorkers_(processors()),
      slots_(std::make_unique<Worker[]>(maximumWorkers_ + kMostSpareWorkers)) {
  for (unsigned i = 0; i < maximumWorkers_ + kMostSpareWorkers; ++i) {
    slots_[i].next = std::exchange(unused_, &slots_[i]);
  }
  atProcessExit(ExitStage::workers, [] { shared().shutDown(); });
}

std::string WorkerPool::label() const { return "user-initiated"; }

void WorkerPool::postAfter(std::chrono::milliseconds delay, Job job) {
  Timer::shared().post(delay, DispatchQueue::global(), std::move(job));
}

inline WorkerPool::Help WorkerPool::findHelp(Worker*& sleeper) {
  if (idle_ != nullptr) {
    sleeper = std::exchange(idle_, idle_->next);
    return Help::wakeWorker;
  }
  if (workers_ < maximumWorkers_ && !ending_) {
    ++workers_;
    running_.add();
    return Help::startWorker;
  }
  if (looks_ || ending_) return Help::none;
  beginLook();
  return Help::look;
}

void WorkerPool::post(Job job) {
  if (isForkedChild()) return runInForkedChild(std::move(job));
  auto& state = workerState;
  if (state.inTailPosition) {
    state.inTailPosition = false;
    state.tailJob = job.release();
    return;
  }
  if (state.holdsWakes) return postHeld(std::move(job));
  Worker* sleeper = nullptr;
  Help help = Help::none;
  {
    const LockGuard guard(lock_);
    jobs_.append(job.release());
    help = findHelp(sleeper);
  }
  if (help != Help::none) summon(help, sleeper);
}

void WorkerPool::postFirst(Job job) {
  Worker* sleeper = nullptr;
  Help help = Help::none;
  {
    const LockGuard guard(lock_);
    jobs_.prepend(job.release());
    help = findHelp(sleeper);
  }
  summon(help, sleeper);
}

void WorkerPool::postHeld(Job job) {
  ++workerState.heldWakes;
  const LockGuard guard(lock_);
  jobs_.append(job.release());
}

void WorkerPool::holdWakes() { workerState.holdsWakes = true; }

bool WorkerPool::holdsAWake() { return workerState.heldWakes > 0; }

void WorkerPool::wakeHeld() {
  auto& pool = shared();
  for (auto held = std::exchange(workerState.heldWakes, 0); held > 0; --held) {
    Worker* sleeper = nullptr;
    Help help = Help::none;
    {
      const LockGuard guard(pool.lock_);
      if (!pool.jobs_.empty()) help = pool.findHelp(sleeper);
    }
    if (help == Help::none) return;
    pool.summon(help, sleeper);
  }
}

void WorkerPool::summon(Help help, Worker* sleeper) {
  if (help == Help::wakeWorker) return wake(*sleeper);
  if (help == Help::startWorker) return startWorker();
  if (help == Help::look) lookLater();
}

void WorkerPool::wake(Worker& sleeper) {
  sleeper.woken.store(1, std::memory_order_release);
  futexWakeOne(sleeper.woken);
}

void WorkerPool::goOnWith(const JobNode* job) {
  auto& state = workerState;
  state.running = job;
  if (auto* const kept = std::exchange(state.tailJob, nullptr)) shared().post(Job(kept));
}

bool WorkerPool::start() {
  return startThread("orvo-worker", [] { shared().work(); });
}

void WorkerPool::startWorker() {
  for (int attempt = 1; !start(); ++attempt) {
    {
      const LockGuard guard(lock_);
      // With one worker at least the jobs still run, one after another.
      if (workers_ > 1) {
        --workers_;
        return running_.remove();
      }
    }
    if (attempt == kAttempts) fatal("no thread could be started");
    std::this_thread::sleep_for(kBetweenAttempts);
  }
}

void WorkerPool::demandWorker() {
  if (isForkedChild()) return;
  // Under the lock, so that nobody counts on a worker that there may never be; it waits for it,
  // too.
  const LockGuard guard(lock_);
  if (workers_ > 0 || ending_) return;
  running_.add();
  if (!start()) {
    running_.remove();
    throw std::bad_alloc();
  }
  ++workers_;
}

JobNode* WorkerPool::take(Worker& worker) {
  for (;;) {
    {
      const LockGuard guard(lock_);
      if (ending_) return nullptr;
      if (!jobs_.empty()) {
        ++taken_;
        return jobs_.pop();
      }
      if (worker.leaves) return nullptr;
      worker.woken.store(0, std::memory_order_relaxed);
      worker.idleSince = dismissals_;
      worker.next = std::exchange(idle_, &worker);
    }
    while (worker.woken.load(std::memory_order_acquire) == 0) futexWait(worker.woken, 0);
  }
}

void WorkerPool::work() {
  lock_.lock();
  auto& self = *std::exchange(unused_, unused_->next);
  self.leaves = false;
  lock_.unlock();
  auto& state = workerState;
  while (auto* node = take(self)) {
    state.tailJobsInARow = 0;
    do {
      state.running = node;
      node->run();
      node = std::exchange(state.tailJob, nullptr);
      ++state.tailJobsInARow;
    } while (node != nullptr);
    state.running = nullptr;
  }
  lock_.lock();
  if (self.leaves) {
    --workers_;
    --leaving_;
  }
  self.next = std::exchange(unused_, &self);
  lock_.unlock();
  running_.remove();
}

void WorkerPool::shutDown() {
  Worker* sleepers = nullptr;
  {
    const LockGuard guard(lock_);
    ending_ = true;
    sleepers = std::exchange(idle_, nullptr);
  }
  while (sleepers != nullptr) {
    auto* const next = sleepers->next;
    wake(*sleepers);
    sleepers = next;
  }
  const unsigned own = workerState.running != nullptr ? 1 : 0;  // exit() called from a job
  waitAtExit([&](auto patience) { running_.waitUntilAtMost(own, patience); });
}

}  // namespace orvo::detail

namespace orvo {

std::shared_ptr<DispatchQueue> DispatchQueue::global() {
  // Without a count: a reference to what lives as long as the process costs nothing to copy.
  return {std::shared_ptr<void>(), &detail::WorkerPool::shared()};
}

}  // namespace orvo
