#include <soak/FleetTime.h>

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>

namespace orvo::soak {
namespace {

using std::chrono::milliseconds;

/// How long the library may work in real time before time passes; it is there so that a fault ends
/// a run.
constexpr std::chrono::seconds kPatience{60};

/// How often a thread has gone to sleep, or nothing while it does not sleep.
std::optional<std::uint64_t> sleepsOf(int tasks, const char* thread) {
  char text[4096];
  const int file = openat(tasks, (std::string(thread) + "/status").c_str(), O_RDONLY | O_CLOEXEC);
  const auto size = file < 0 ? 0 : read(file, text, sizeof text - 1);
  if (file >= 0) close(file);
  if (size <= 0) return 0;  // it has ended
  text[size] = 0;
  const char* const state = std::strstr(text, "State:\tS");
  const char* const sleeps = std::strstr(text, "\nvoluntary_ctxt_switches:");
  if (state == nullptr || sleeps == nullptr) return std::nullopt;
  return std::strtoull(std::strchr(sleeps, ':') + 1, nullptr, 10);
}

using Sleeps = std::map<std::string, std::uint64_t>;

/// Of all other threads; nothing while one of them does not sleep.
std::optional<Sleeps> sleepsOfOthers() {
  static auto* const tasks = opendir("/proc/self/task");
  if (tasks == nullptr) return std::nullopt;
  const auto own = std::to_string(gettid());
  Sleeps all;
  rewinddir(tasks);
  for (auto* entry = readdir(tasks); entry != nullptr; entry = readdir(tasks)) {
    if (entry->d_name[0] == '.' || own == entry->d_name) continue;
    const auto sleeps = sleepsOf(dirfd(tasks), entry->d_name);
    if (!sleeps) return std::nullopt;
    all.emplace(entry->d_name, *sleeps);
  }
  return all;
}

/// A thread that slept at both looks, and has not woken between them, slept at the moment between
/// the looks; so did they all.
bool doOthersSleep() {
  const auto before = sleepsOfOthers();
  return before && before == sleepsOfOthers();
}

}  // namespace

void FleetQueue::post(Job job) {
  const std::lock_guard guard(lock_);
  if (!isClosed_) ready_.push_back(std::move(job));
}

void FleetQueue::postAfter(milliseconds delay, Job job) {
  if (delay <= milliseconds(0)) return post(std::move(job));
  const auto due = clock_->elapsed() + delay;
  const std::lock_guard guard(lock_);
  if (isClosed_) return;
  delayed_[(due + kTick - milliseconds(1)) / kTick * kTick].push_back(std::move(job));
}

void FleetQueue::close() {
  std::unique_lock guard(lock_);
  isClosed_ = true;
  auto ready = std::move(ready_);
  auto delayed = std::move(delayed_);
  guard.unlock();
}

std::size_t FleetQueue::run() {
  std::size_t count = 0;
  std::unique_lock guard(lock_);
  for (; !delayed_.empty() && delayed_.begin()->first <= clock_->elapsed();
       delayed_.erase(delayed_.begin())) {
    for (auto& job : delayed_.begin()->second) ready_.push_back(std::move(job));
  }
  for (; !ready_.empty(); ++count) {
    Job job = std::move(ready_.front());
    ready_.pop_front();
    guard.unlock();
    job();
    job = Job();
    guard.lock();
  }
  return count;
}

std::optional<milliseconds> FleetQueue::nextDue() const {
  const std::lock_guard guard(lock_);
  return delayed_.empty() ? std::nullopt : std::optional(delayed_.begin()->first);
}

FleetTime::FleetTime(Date begin)
    : begin_(begin),
      clock_(std::make_shared<ManualClock>(begin)),
      queue_(std::make_shared<FleetQueue>(clock_)),
      claim_(MainQueue::shared()->claim()) {}

std::size_t FleetTime::runJobs() { return claim_->drain() + queue_->run(); }

void FleetTime::settle() {
  const auto end = std::chrono::steady_clock::now() + kPatience;
  for (bool isSettled = false; !isSettled;) {
    if (runJobs() > 0) continue;
    // What a thread did before it fell asleep is seen by the jobs that are looked for after that.
    isSettled = doOthersSleep() && runJobs() == 0;
    if (!isSettled) std::this_thread::yield();
    if (std::chrono::steady_clock::now() > end) {
      std::fputs("fleet: the library does not come to rest\n", stderr);
      std::exit(1);
    }
  }
}

void FleetTime::runUntil(Date end) {
  const auto last = end - begin_;
  for (settle();; settle()) {
    const auto due = queue_->nextDue();
    if (!due || *due > last) break;
    clock_->advance(*due - clock_->elapsed());
  }
  clock_->advance(last - clock_->elapsed());
}

}  // namespace orvo::soak
