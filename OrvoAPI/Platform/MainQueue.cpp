#include <OrvoAPI/Platform/Fatal.h>
#include <OrvoAPI/Platform/MainQueue.h>
#include <OrvoAPI/Platform/ThreadInternal.h>
#include <OrvoAPI/Platform/TimerInternal.h>

#include <sys/eventfd.h>
#include <unistd.h>

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <thread>

namespace orvo {
namespace {

constexpr std::chrono::seconds kExitPatience{2};

}  // namespace

/// Who may run jobs: the claimant while there is one, else the fallback thread. `running` is the
/// thread inside a job; a claim waits until there is none, and then the fallback stays out.
struct MainQueue::State {
  std::mutex mutex;
  std::condition_variable forFallback;  // jobs wait unclaimed, or the end has come
  std::condition_variable forClaimant;  // jobs wait, or `stop` was called
  std::condition_variable forClaim;     // no job is running
  detail::JobList jobs;
  std::size_t count = 0;
  bool claimed = false;
  bool stopped = false;  // the claimant's `run` is to return
  bool fallbackStarted = false;
  bool ending = false;
  std::thread::id claimant;
  std::thread::id running;
  int event = -1;
  detail::ThreadCount fallback;

  /// Runs the first job with the lock given up; the caller holds `guard` and jobs are not empty.
  void runOne(std::unique_lock<std::mutex>& guard) {
    Job job(jobs.pop());
    --count;
    const auto outer = std::exchange(running, std::this_thread::get_id());
    guard.unlock();
    job();
    guard.lock();
    running = outer;
    if (claimed) forClaim.notify_one();
  }
  /// Wakes whoever is to run what waits; a fallback thread is started when it first has to.
  void wakeRunner() {
    if (claimed) {
      forClaimant.notify_one();
      if (event >= 0) eventfd_write(event, 1);
      return;
    }
    if (!fallbackStarted && !ending) {
      fallbackStarted = true;
      fallback.add();
      if (!detail::startThread("orvo-main", [] { shared()->runAsFallback(); })) {
        fatal("no thread could be started");
      }
    }
    forFallback.notify_one();
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
  auto& state = *state_;
  const std::lock_guard guard(state.mutex);
  state.jobs.append(job.release());
  if (state.count++ == 0) state.wakeRunner();
}

void MainQueue::postAfter(std::chrono::milliseconds delay, Job job) {
  detail::Timer::shared().post(delay, shared(), std::move(job));
}

bool MainQueue::isCurrent() const {
  const std::lock_guard guard(state_->mutex);
  const auto self = std::this_thread::get_id();
  return state_->running == self || (state_->claimed && state_->claimant == self);
}

void MainQueue::runAsFallback() {
  auto& state = *state_;
  std::unique_lock guard(state.mutex);
  while (!state.ending) {
    if (state.claimed || state.count == 0 || state.running != std::thread::id()) {
      state.forFallback.wait(guard);
    } else {
      state.runOne(guard);
    }
  }
  guard.unlock();
  state.fallback.remove();
}

std::optional<MainQueue::Claim> MainQueue::claim() {
  auto& state = *state_;
  std::unique_lock guard(state.mutex);
  if (state.claimed || state.running == std::this_thread::get_id()) return std::nullopt;
  state.claimed = true;
  state.claimant = std::this_thread::get_id();
  state.stopped = false;
  state.forClaim.wait(guard, [&] { return state.running == std::thread::id(); });
  return Claim(*this);
}

void MainQueue::release() {
  auto& state = *state_;
  const std::lock_guard guard(state.mutex);
  state.claimed = false;
  state.claimant = {};
  if (state.event >= 0) close(std::exchange(state.event, -1));
  if (state.count > 0) state.wakeRunner();
}

void MainQueue::endFallback() {
  {
    const std::lock_guard guard(state_->mutex);
    state_->ending = true;
    state_->forFallback.notify_all();
  }
  const bool own = detail::isLibraryThread() && isCurrent();  // exit() called from a job
  state_->fallback.waitUntilAtMost(own ? 1 : 0, kExitPatience);
}

MainQueue::Claim::Claim(Claim&& other) noexcept : queue_(std::exchange(other.queue_, nullptr)) {}

MainQueue::Claim::~Claim() {
  if (queue_ != nullptr) queue_->release();
}

void MainQueue::Claim::run() {
  auto& state = *queue_->state_;
  std::unique_lock guard(state.mutex);
  while (!state.stopped) {
    if (state.count == 0) {
      state.forClaimant.wait(guard);
    } else {
      state.runOne(guard);
    }
  }
  state.stopped = false;
}

void MainQueue::Claim::stop() {
  const std::lock_guard guard(queue_->state_->mutex);
  queue_->state_->stopped = true;
  queue_->state_->forClaimant.notify_all();
}

std::size_t MainQueue::Claim::drain() {
  auto& state = *queue_->state_;
  std::unique_lock guard(state.mutex);
  const auto waiting = state.count;
  for (auto left = waiting; left > 0 && state.count > 0; --left) state.runOne(guard);
  if (state.count == 0 && state.event >= 0) {
    eventfd_t ignored = 0;
    eventfd_read(state.event, &ignored);
  }
  return waiting;
}

int MainQueue::Claim::eventDescriptor() const {
  auto& state = *queue_->state_;
  const std::lock_guard guard(state.mutex);
  if (state.event < 0) {
    state.event = eventfd(state.count > 0 ? 1 : 0, EFD_CLOEXEC | EFD_NONBLOCK);
  }
  return state.event;
}

bool DispatchQueue::isBlockingRefused() {
  return detail::isLibraryThread() || MainQueue::shared()->isCurrent();
}

}  // namespace orvo
