#include <OrvoAPI/Base/ImmortalInternal.h>
#include <OrvoAPI/HTTP/WatchdogInternal.h>
#include <OrvoAPI/Queues/ThreadInternal.h>

#include <algorithm>
#include <utility>

namespace orvo::detail {
namespace {

constexpr std::chrono::milliseconds kPeriod{100};
/// In processor time of the network thread: waiting for a busy device is not the host's fault.
constexpr std::chrono::milliseconds kLongestCall{100};
/// What a flood brings at the very least; less does not keep libcurl busy for that long.
constexpr std::uint64_t kLeastGrowth = 16U << 10;
constexpr std::chrono::seconds kEndPatience{1};

std::chrono::nanoseconds timeOf(clockid_t clock) {
  timespec time{};
  clock_gettime(clock, &time);
  return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

}  // namespace

Watchdog& Watchdog::shared() {
  static auto* const watchdog = new (immortalPlace<Watchdog>()) Watchdog;
  return *watchdog;
}

void Watchdog::start() {
  if (pthread_getcpuclockid(pthread_self(), &networkClock_) != 0) return;
  thread_ = startJoinableThread("orvo-watchdog", [] { shared().work(); });
}

void Watchdog::stop() {
  if (!thread_) return;
  {
    const MutexGuard guard(mutex_);
    isEnding_ = true;
  }
  changed_.notify_one();
  joinWithin(*thread_, kEndPatience);
  thread_.reset();
}

void Watchdog::add(Connections& connections) {
  const MutexGuard guard(mutex_);
  watched_.push_back(&connections);
}

void Watchdog::remove(Connections& connections) {
  const MutexGuard guard(mutex_);
  std::erase(watched_, &connections);
}

void Watchdog::wake() {
  { const MutexGuard guard(mutex_); }
  changed_.notify_one();
}

void Watchdog::work() {
  MutexGuard guard(mutex_);
  for (std::size_t seen = 0; !isEnding_;) {
    const auto calls = calls_.load();
    if (calls != seen) {
      seen = calls;
      began_.reset();
    } else if (calls % 2 == 1) {
      look();
    } else {
      isAsleep_ = true;
      while (!isEnding_ && calls_.load() == seen) guard.wait(changed_);
      isAsleep_ = false;
    }
    const auto next = std::chrono::steady_clock::now() + kPeriod;
    while (!isEnding_ && guard.waitUntil(changed_, next)) {
    }
  }
}

/// The network thread is in the same call as before. What has come since the first look at it is
/// weighed, however little of the processor the thread had meanwhile.
void Watchdog::look() {
  const auto used = timeOf(networkClock_);
  const auto delivered = delivered_.load(std::memory_order_relaxed);
  if (!began_) {
    began_ = used;
    deliveredBefore_ = delivered;
    for (auto* const connections : watched_) connections->beginGrowth();
    return;
  }
  Connections* busiest = nullptr;
  auto greatest = kLeastGrowth;
  for (auto* const connections : watched_) {
    const auto growth = connections->greatestGrowth();
    if (growth < greatest) continue;
    greatest = growth;
    busiest = connections;
  }
  const std::uint64_t deliveredSince = delivered - deliveredBefore_;
  if (deliveredSince * Connections::kMostBytesForOne >= greatest) {
    began_.reset();  // a large answer, on a slow device, is no flood
  } else if (busiest != nullptr && used - *began_ >= kLongestCall) {
    busiest->shutDownBusiest();
    began_.reset();
  }
}

}  // namespace orvo::detail
