#include <OrvoAPI/Queues/TimerInternal.h>

#include <poll.h>
#include <sys/timerfd.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <limits>
#include <new>
#include <utility>

namespace orvo::detail {
namespace {

/// While there is no memory for it.
constexpr int kMillisecondsToNextTelling = 100;
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
  try {
    if (timer_ < 0 || wallClock_ < 0) throw std::bad_alloc();
    // One that is made while the process exits starts no thread that would outlive it.
    ending_ = !atProcessExit(ExitStage::timer, [] { shared().shutDown(); });
  } catch (const std::bad_alloc&) {
    close(timer_);
    close(wallClock_);
    throw;
  }
}

void Timer::post(std::chrono::milliseconds delay, std::shared_ptr<DispatchQueue> queue, Job job) {
  if (delay.count() <= 0) return queue->post(std::move(job));
  if (isForkedChild()) return;  // the descriptor is the parent's
  const auto due = sinceBoot() + std::min<std::chrono::milliseconds>(delay, kLongestDelay);
  Entry entry{due, 0, std::move(queue), std::move(job)};  // destroyed outside the lock if refused
  const LockGuard guard(lock_);
  if (!ending_) startOnce();
  entry.order = order_++;
  heap_.push_back(std::move(entry));
  std::push_heap(heap_.begin(), heap_.end(), [](auto& a, auto& b) { return a.isAfter(b); });
  arm();
}

std::shared_ptr<const void> Timer::watchWallClock(std::function<void()> task) {
  auto watch = std::make_shared<const Watch>(Watch{std::move(task)});
  if (isForkedChild()) return watch;
  const LockGuard guard(lock_);
  if (!ending_) startOnce();
  std::erase_if(watches_, [](const auto& other) { return other.watch.expired(); });
  watches_.push_back({++latestWatch_, watch});
  return watch;
}

void Timer::startOnce() {
  if (started_) return;
  running_.add();
  started_ = startThread("orvo-timer", [] { shared().work(); });
  if (started_) return;
  running_.remove();
  throw std::bad_alloc();
}

/// Sets the descriptor to the earliest entry; at once when the thread is to end.
void Timer::arm() {
  itimerspec time{};
  if (ending_) {
    time.it_value.tv_nsec = 1;
  } else if (!heap_.empty()) {
    const auto seconds = std::chrono::floor<std::chrono::seconds>(heap_.front().due);
    time.it_value.tv_sec = seconds.count();
    time.it_value.tv_nsec = static_cast<long>((heap_.front().due - seconds).count());
  }
  timerfd_settime(timer_, TFD_TIMER_ABSTIME, &time, nullptr);
}

std::optional<Timer::Entry> Timer::takeDue() {
  const LockGuard guard(lock_);
  if (ending_ || heap_.empty() || heap_.front().due > sinceBoot()) return std::nullopt;
  std::pop_heap(heap_.begin(), heap_.end(), [](auto& a, auto& b) { return a.isAfter(b); });
  std::optional<Entry> due = std::move(heap_.back());
  heap_.pop_back();
  return due;
}

std::shared_ptr<const Timer::Watch> Timer::nextToTell() {
  const LockGuard guard(lock_);
  for (const auto& [number, weak] : watches_) {
    if (number <= told_) continue;
    told_ = number;
    if (auto watch = weak.lock()) return watch;
  }
  return nullptr;
}

/// Tells those that have not been told yet that the wall clock was set. False when the last of them
/// was refused the memory that it takes to pass it on.
bool Timer::tellWatches() {
  while (const auto watch = nextToTell()) {
    try {
      watch->task();
    } catch (const std::bad_alloc&) {
      const LockGuard guard(lock_);
      --told_;
      return false;
    }
  }
  return true;
}

void Timer::work() {
  bool isTelling = false;
  for (;;) {
    std::array<pollfd, 2> descriptors{{{timer_, POLLIN, 0}, {wallClock_, POLLIN, 0}}};
    poll(descriptors.data(), descriptors.size(), isTelling ? kMillisecondsToNextTelling : -1);
    takeNote(timer_);
    if (takeNote(wallClock_)) {
      const LockGuard guard(lock_);
      isTelling = true;
      told_ = 0;
    }
    while (auto entry = takeDue()) entry->queue->post(std::move(entry->job));
    if (isTelling) isTelling = !tellWatches();
    const LockGuard guard(lock_);
    if (ending_) break;
    arm();
  }
  running_.remove();
}

void Timer::shutDown() {
  {
    const LockGuard guard(lock_);
    ending_ = true;
    arm();
  }
  waitAtExit([this](auto patience) { running_.waitUntilAtMost(0, patience); });
}

}  // namespace orvo::detail

namespace orvo {

void DispatchQueue::postAfter(std::chrono::milliseconds delay, Job job) {
  detail::Timer::shared().post(delay, shared_from_this(), std::move(job));
}

}  // namespace orvo
