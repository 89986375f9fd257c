#include <OrvoAPI/Base/FatalInternal.h>
#include <OrvoAPI/Queues/TimerInternal.h>

#include <poll.h>
#include <sys/timerfd.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <limits>
#include <utility>

namespace orvo::detail {
namespace {

/// Longer delays wait this long: it is beyond a device's life, and no sum overflows.
constexpr std::chrono::hours kLongestDelay{24 * 365 * 100};

std::chrono::nanoseconds sinceBoot() {
  timespec time{};
  clock_gettime(CLOCK_BOOTTIME, &time);
  return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

/// A timer whose wait ends only when the wall clock is set.
int makeWallClockWatch() {
  const int descriptor = timerfd_create(CLOCK_REALTIME, TFD_CLOEXEC | TFD_NONBLOCK);
  itimerspec never{};
  never.it_value.tv_sec = std::numeric_limits<time_t>::max();
  timerfd_settime(descriptor, TFD_TIMER_ABSTIME | TFD_TIMER_CANCEL_ON_SET, &never, nullptr);
  return descriptor;
}

/// Reads the timer's expirations; true when the clock that it goes by was set.
bool takeNote(int timer) {
  std::uint64_t expirations = 0;
  return read(timer, &expirations, sizeof expirations) < 0 && errno == ECANCELED;
}

}  // namespace

Timer& Timer::shared() {
  static auto* const timer = new Timer;  // its thread may outlive static destruction
  return *timer;
}

Timer::Timer()
    : timer_(timerfd_create(CLOCK_BOOTTIME, TFD_CLOEXEC | TFD_NONBLOCK)),
      wallClock_(makeWallClockWatch()) {
  if (timer_ < 0 || wallClock_ < 0) fatal("no timer descriptor");
  atProcessExit(ExitStage::timer, [] { shared().shutDown(); });
}

void Timer::post(std::chrono::milliseconds delay, std::shared_ptr<DispatchQueue> queue, Job job) {
  if (delay.count() <= 0) return queue->post(std::move(job));
  if (isForkedChild()) return;  // the descriptor is the parent's
  const auto due = sinceBoot() + std::min<std::chrono::milliseconds>(delay, kLongestDelay);
  const LockGuard guard(lock_);
  heap_.push_back({due, order_++, std::move(queue), std::move(job)});
  std::push_heap(heap_.begin(), heap_.end(), [](auto& a, auto& b) { return a.isAfter(b); });
  startOnce();
  arm();
}

std::shared_ptr<const void> Timer::watchWallClock(std::function<void()> task) {
  auto watch = std::make_shared<Watch>(std::move(task));
  if (isForkedChild()) return watch;
  const LockGuard guard(lock_);
  std::erase_if(watches_, [](const auto& other) { return other.expired(); });
  watches_.push_back(watch);
  startOnce();
  return watch;
}

void Timer::startOnce() {
  if (std::exchange(started_, true)) return;
  running_.add();
  if (!startThread("orvo-timer", [] { shared().work(); })) fatal("no thread could be started");
}

/// Sets the descriptor to the earliest entry; at once when the thread is to end.
void Timer::arm() {
  itimerspec time{};
  if (ending_) {
    time.it_value.tv_nsec = 1;
  } else if (!heap_.empty()) {
    const auto seconds = std::chrono::floor<std::chrono::seconds>(heap_.front().due);
    time.it_value.tv_sec = seconds.count();
    time.it_value.tv_nsec = (heap_.front().due - seconds).count();
  }
  timerfd_settime(timer_, TFD_TIMER_ABSTIME, &time, nullptr);
}

std::vector<Timer::Entry> Timer::takeDue() {
  std::vector<Entry> due;
  const auto now = sinceBoot();
  while (!heap_.empty() && heap_.front().due <= now) {
    std::pop_heap(heap_.begin(), heap_.end(), [](auto& a, auto& b) { return a.isAfter(b); });
    due.push_back(std::move(heap_.back()));
    heap_.pop_back();
  }
  return due;
}

std::vector<std::shared_ptr<Timer::Watch>> Timer::watches() {
  std::vector<std::shared_ptr<Watch>> watches;
  for (const auto& weak : watches_) {
    if (auto watch = weak.lock()) watches.push_back(std::move(watch));
  }
  return watches;
}

void Timer::work() {
  for (;;) {
    std::array<pollfd, 2> descriptors{{{timer_, POLLIN, 0}, {wallClock_, POLLIN, 0}}};
    poll(descriptors.data(), descriptors.size(), -1);
    takeNote(timer_);
    const bool wallClockWasSet = takeNote(wallClock_);
    std::vector<Entry> due;
    std::vector<std::shared_ptr<Watch>> told;
    {
      const LockGuard guard(lock_);
      if (ending_) break;
      due = takeDue();
      if (wallClockWasSet) told = watches();
      arm();
    }
    for (auto& entry : due) entry.queue->post(std::move(entry.job));
    for (const auto& watch : told) (*watch)();
  }
  running_.remove();
}

void Timer::shutDown() {
  {
    const LockGuard guard(lock_);
    ending_ = true;
    arm();
  }
  running_.waitUntilAtMost(0, kExitPatience);
}

}  // namespace orvo::detail

namespace orvo {

void DispatchQueue::postAfter(std::chrono::milliseconds delay, Job job) {
  detail::Timer::shared().post(delay, shared_from_this(), std::move(job));
}

}  // namespace orvo
