#include <OrvoAPI/Base/FatalInternal.h>
#include <OrvoAPI/Base/MutexInternal.h>
#include <OrvoAPI/Queues/MainQueueInternal.h>
#include <OrvoAPI/Queues/QueueWarningsInternal.h>
#include <OrvoAPI/Queues/ThreadInternal.h>
#include <OrvoAPI/Queues/TimerInternal.h>
#include <OrvoAPI/Queues/WorkerPoolInternal.h>
#include <OrvoAPI/Queues/detail/InlineQueue.h>

#include <sys/eventfd.h>
#include <unistd.h>

#include <condition_variable>
#include <cstdint>
#include <new>
#include <thread>

namespace orvo {

/// Who may run jobs: the thread that holds the claim, while there is one, else the fallback thread.
/// `running` is the thread inside a job, whoever may run the next: a new claim waits until there is
/// none, and so does the fallback when a claim is given up from inside a job.
///
/// Whether the claimant runs anything at all is looked at by the timer, while jobs wait only: once
/// after each five seconds in which some had to wait.
struct MainQueue::State {
  struct StandIn final : detail::JobNode {
    void run() override { shared()->runAsStandIn(); }
    void drop() noexcept override {}
  };
  struct Look final : detail::JobNode {
    void run() override { shared()->look(); }
    void drop() noexcept override {}
  };
  detail::Mutex mutex;
  std::condition_variable forFallback;  // jobs wait unclaimed, or the end has come
  std::condition_variable forClaimant;  // jobs wait, or `stop` was called
  std::condition_variable forClaim;     // no job is running
  detail::ThreadCount fallback;
  detail::JobList jobs ORVO_GUARDED_BY(mutex);
  std::size_t count ORVO_GUARDED_BY(mutex) = 0;
  std::uint64_t claim ORVO_GUARDED_BY(mutex) = 0;  // the one that is held; 0: none
  std::uint64_t latestClaim ORVO_GUARDED_BY(mutex) = 0;
  bool stopped ORVO_GUARDED_BY(mutex) = false;  // the claimant's `run` is to return
  bool fallbackStarted ORVO_GUARDED_BY(mutex) = false;
  StandIn standIn;
  bool standInWaits ORVO_GUARDED_BY(mutex) = false;
  bool ending ORVO_GUARDED_BY(mutex) = false;
  std::thread::id claimant ORVO_GUARDED_BY(mutex);
  std::thread::id running ORVO_GUARDED_BY(mutex);
  int event ORVO_GUARDED_BY(mutex) = -1;
  Look looking;
  bool isLooking ORVO_GUARDED_BY(mutex) = false;   // the timer has it
  bool isReported ORVO_GUARDED_BY(mutex) = false;  // the present claim's neglect
  std::uint64_t ran ORVO_GUARDED_BY(mutex) = 0;    // jobs so far
  /// When the timer was given it, and what had been run by then.
  std::chrono::steady_clock::time_point lookBegun ORVO_GUARDED_BY(mutex);
  std::uint64_t ranBefore ORVO_GUARDED_BY(mutex) = 0;

  /// Runs the first job with the lock released; `guard` holds the mutex and jobs are not empty.
  void runOne(detail::MutexGuard& guard) ORVO_REQUIRES(mutex) ORVO_UNCHECKED {
    /// Takes the lock again and hands the queue on, also when the job throws.
    struct Turn {
      State& state;
      detail::MutexGuard& guard;
      const std::thread::id outer;  // a job may run the queue, and so others inside itself
      ~Turn() ORVO_UNCHECKED {
        guard.lock();
        state.running = outer;
        if (outer == std::thread::id()) state.handOn();
      }
    };
    auto* const job = jobs.pop();
    --count;
    ++ran;
    const Turn turn{*this, guard, std::exchange(running, std::this_thread::get_id())};
    guard.unlock();
    job->run();
  }
  /// No job is running any more: gives the queue to a claim that waits for that or, when the claim
  /// was given up meanwhile, to the fallback.
  void handOn() ORVO_REQUIRES(mutex) {
    if (claim != 0) {
      forClaim.notify_one();
    } else if (count > 0) {
      wakeRunner();
    }
  }
  /// Wakes the thread that is to run what waits; starts the fallback thread when it is first
  /// needed.
  void wakeRunner() ORVO_REQUIRES(mutex) {
    if (claim != 0) {
      forClaimant.notify_one();
      if (event >= 0) eventfd_write(event, 1);
      return;
    }
    if (!fallbackStarted && !ending) startFallback();
    forFallback.notify_one();
  }

  /// When the system has no thread to give, a worker of the global queue runs what waits.
  void startFallback() ORVO_REQUIRES(mutex) {
    fallback.add();
    fallbackStarted = detail::startThread("orvo-main", [] { shared()->runAsFallback(); });
    if (fallbackStarted) return;
    fallback.remove();
    if (!std::exchange(standInWaits, true)) {
      detail::WorkerPool::shared().post(Job(static_cast<detail::JobNode*>(&standIn)));
    }
  }

  /// True when the timer is to be given a look.
  [[nodiscard]] bool beginsLooking() ORVO_REQUIRES(mutex) {
    if (claim == 0 || count == 0 || isLooking || isReported || ending) return false;
    isLooking = true;
    lookBegun = std::chrono::steady_clock::now();
    ranBefore = ran;
    return true;
  }
  void lookLater() {
    try {
      detail::Timer::shared().post(detail::queuePatience().ofNeglect, detail::inlineQueue(),
                                   Job(static_cast<detail::JobNode*>(&looking)));
    } catch (const std::bad_alloc&) {
      const detail::MutexGuard guard(mutex);
      isLooking = false;
    }
  }
  /// The timer also counts the time that the device slept: then nobody could have run a job.
  [[nodiscard]] bool hasWaitedInVain() const ORVO_REQUIRES(mutex) {
    return ran == ranBefore && running == std::thread::id() &&
           std::chrono::steady_clock::now() - lookBegun >= detail::queuePatience().ofNeglect;
  }

  void demandClaimant() const ORVO_REQUIRES(mutex) {
    if (claimant != std::this_thread::get_id()) {
      detail::fatal("the main queue is run on another thread than the one that claimed it");
    }
  }
};

std::shared_ptr<MainQueue> MainQueue::shared() {
  static auto* const queue = new MainQueue;  // its fallback thread may outlive static destruction
  return {std::shared_ptr<void>(), queue};
}

MainQueue::MainQueue() : state_(std::make_unique<State>()) {
  detail::atProcessExit(detail::ExitStage::mainQueue, [] { shared()->endFallback(); });
}

MainQueue::~MainQueue() = default;

std::string MainQueue::label() const { return "main"; }

void MainQueue::post(Job job) {
  if (detail::isForkedChild()) return detail::runInForkedChild(std::move(job));
  auto& state = *state_;
  detail::MutexGuard guard(state.mutex);
  state.jobs.append(job.release());
  if (state.count++ == 0) state.wakeRunner();
  const bool looks = state.beginsLooking();
  guard.unlock();
  if (looks) state.lookLater();
}

void MainQueue::postAfter(std::chrono::milliseconds delay, Job job) {
  detail::Timer::shared().post(delay, shared(), std::move(job));
}

bool MainQueue::isCurrent() const {
  if (detail::isForkedChild()) return false;
  const detail::MutexGuard guard(state_->mutex);
  const auto self = std::this_thread::get_id();
  return state_->running == self || (state_->claim != 0 && state_->claimant == self);
}

void MainQueue::runAsFallback() {
  auto& state = *state_;
  detail::MutexGuard guard(state.mutex);
  while (!state.ending) {
    if (state.claim != 0 || state.count == 0 || state.running != std::thread::id()) {
      guard.wait(state.forFallback);
    } else {
      state.runOne(guard);
    }
  }
  guard.unlock();
  state.fallback.remove();
}

void MainQueue::runAsStandIn() {
  auto& state = *state_;
  detail::MutexGuard guard(state.mutex);
  state.standInWaits = false;
  while (!state.ending && state.claim == 0 && state.count > 0 &&
         state.running == std::thread::id()) {
    state.runOne(guard);
  }
}

std::optional<MainQueue::Claim> MainQueue::claim() {
  auto& state = *state_;
  detail::MutexGuard guard(state.mutex);
  if (state.claim != 0 || state.running == std::this_thread::get_id()) return std::nullopt;
  const auto id = state.claim = ++state.latestClaim;
  state.claimant = std::this_thread::get_id();
  state.stopped = false;
  state.isReported = false;
  while (state.running != std::thread::id()) guard.wait(state.forClaim);
  const bool looks = state.beginsLooking();
  guard.unlock();
  if (looks) state.lookLater();
  return Claim(state, id);
}

/// On the timer's thread.
void MainQueue::look() {
  auto& state = *state_;
  detail::MutexGuard guard(state.mutex);
  state.isLooking = false;
  const bool isNeglected = state.claim != 0 && state.count > 0 && state.hasWaitedInVain();
  if (isNeglected) state.isReported = true;
  const bool looks = state.beginsLooking();
  guard.unlock();
  if (looks) return state.lookLater();
  if (!isNeglected) return;
  const bool isReported = detail::warnOfQueue(
      "main",
      "Jobs have waited in the main queue for 5 s: whoever has claimed it has to run or drain the "
      "claim, or end it");
  if (isReported) return;
  guard.lock();  // there is no logger yet
  state.isReported = false;
  const bool looksAgain = state.beginsLooking();
  guard.unlock();
  if (looksAgain) state.lookLater();
}

bool detail::MainQueueView::isNeglected() {
  if (isForkedChild()) return false;
  auto& state = *MainQueue::shared()->state_;
  const MutexGuard guard(state.mutex);
  return state.claim != 0 && state.count > 0 && state.running == std::thread::id();
}

void MainQueue::endFallback() {
  {
    const detail::MutexGuard guard(state_->mutex);
    state_->ending = true;
    state_->forFallback.notify_all();
  }
  const bool own = detail::isLibraryThread() && isCurrent();  // exit() called from a job
  detail::waitAtExit(
      [&](auto patience) { state_->fallback.waitUntilAtMost(own ? 1 : 0, patience); });
}

MainQueue::Claim::Claim(Claim&& other) noexcept
    : state_(std::exchange(other.state_, nullptr)), id_(other.id_) {}

MainQueue::Claim::~Claim() {
  if (state_ == nullptr) return;
  const detail::MutexGuard guard(state_->mutex);
  state_->claim = 0;
  state_->claimant = {};
  if (state_->event >= 0) close(std::exchange(state_->event, -1));
  state_->forClaimant.notify_all();
  if (state_->count > 0) state_->wakeRunner();
}

void MainQueue::Claim::run() {
  // Copies: a job may destroy this claim.
  auto& state = *state_;
  const auto id = id_;
  detail::MutexGuard guard(state.mutex);
  state.demandClaimant();
  while (state.claim == id && !state.stopped) {
    if (state.count == 0) {
      guard.wait(state.forClaimant);
    } else {
      state.runOne(guard);
    }
  }
  if (state.claim == id) state.stopped = false;
}

void MainQueue::Claim::stop() {
  const detail::MutexGuard guard(state_->mutex);
  state_->stopped = true;
  state_->forClaimant.notify_all();
}

std::size_t MainQueue::Claim::drain() {
  auto& state = *state_;
  const auto id = id_;
  detail::MutexGuard guard(state.mutex);
  state.demandClaimant();
  std::size_t ran = 0;
  for (const auto waiting = state.count; ran < waiting && state.count > 0 && state.claim == id;) {
    ++ran;
    state.runOne(guard);
  }
  if (state.claim == id && state.count == 0 && state.event >= 0) {
    eventfd_t ignored = 0;
    eventfd_read(state.event, &ignored);
  }
  return ran;
}

int MainQueue::Claim::eventDescriptor() const {
  const detail::MutexGuard guard(state_->mutex);
  if (state_->event < 0) {
    state_->event = eventfd(state_->count > 0 ? 1 : 0, EFD_CLOEXEC | EFD_NONBLOCK);
  }
  return state_->event;
}

bool DispatchQueue::isBlockingRefused() {
  return detail::isLibraryThread() || MainQueue::shared()->isCurrent();
}

}  // namespace orvo
