#include <OrvoAPI/Base/detail/Lock.h>
#include <OrvoAPI/Queues/ThreadInternal.h>

#include <pthread.h>
#include <signal.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <new>

namespace orvo::detail {
namespace {

thread_local bool libraryThread = false;

struct Start {
  const char* name;
  void (*body)();
};

void* enter(void* argument) {
  const Start start = *static_cast<Start*>(argument);
  delete static_cast<Start*>(argument);
  pthread_setname_np(pthread_self(), start.name);
  libraryThread = true;
  start.body();
  return nullptr;
}

/// In a forked child, the jobs that run after the present one.
thread_local constinit JobList* waitingInForkedChild = nullptr;

/// Before the first thread is started: an earlier fork leaves its child nothing broken.
void watchForks() {
  static const int watched = pthread_atfork(nullptr, nullptr, [] { wasForked = true; });
  static_cast<void>(watched);  // it fails without memory only, and then there is nothing to do
}

struct ExitList {
  Lock lock;
  bool registered ORVO_GUARDED_BY(lock) = false;
  bool hasEnded ORVO_GUARDED_BY(lock) = false;
  std::array<void (*)(), 4> ends ORVO_GUARDED_BY(lock) = {};
};

ExitList& exitList() {
  static constinit ExitList list;
  return list;
}

void endAll() {
  if (isForkedChild()) return;
  std::array<void (*)(), 4> ends{};
  {
    auto& list = exitList();
    const LockGuard guard(list.lock);
    list.hasEnded = true;
    ends = list.ends;
  }
  for (const auto end : ends) {
    if (end != nullptr) end();
  }
}

}  // namespace

constinit std::atomic<bool> wasForked{false};
constinit std::atomic<std::chrono::steady_clock::duration> spentAtExit{};

void runInForkedChild(Job job) noexcept {
  if (waitingInForkedChild != nullptr) return waitingInForkedChild->append(job.release());
  JobList waiting;
  waiting.append(job.release());
  waitingInForkedChild = &waiting;
  while (!waiting.empty()) waiting.pop()->run();
  waitingInForkedChild = nullptr;
}

bool startThread(const char* name, void (*body)()) {
  const auto thread = startJoinableThread(name, body);
  if (thread) pthread_detach(*thread);
  return thread.has_value();
}

std::optional<pthread_t> startJoinableThread(const char* name, void (*body)()) {
  watchForks();
  sigset_t blocked;
  sigset_t before;
  sigfillset(&blocked);
  for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGSYS}) {
    sigdelset(&blocked, fault);
  }
  pthread_sigmask(SIG_SETMASK, &blocked, &before);
  auto* const start = new (std::nothrow) Start{name, body};
  pthread_t thread{};
  const bool started = start != nullptr && pthread_create(&thread, nullptr, enter, start) == 0;
  if (!started) delete start;
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  return started ? std::optional(thread) : std::nullopt;
}

void joinWithin(pthread_t thread, std::chrono::milliseconds patience) {
#if defined(__SANITIZE_THREAD__)
  const auto join = pthread_timedjoin_np;  // the sanitizer does not know the other one
  constexpr auto kClock = CLOCK_REALTIME;
#else
  const auto join = [](pthread_t joined, void** result, const timespec* end) {
    return pthread_clockjoin_np(joined, result, CLOCK_MONOTONIC, end);
  };
  constexpr auto kClock = CLOCK_MONOTONIC;
#endif
  timespec until{};
  clock_gettime(kClock, &until);
  const auto nanoseconds = std::chrono::nanoseconds(patience).count() + until.tv_nsec;
  until.tv_sec += nanoseconds / 1'000'000'000;
  until.tv_nsec = static_cast<long>(nanoseconds % 1'000'000'000);
  join(thread, nullptr, &until);
}

bool isLibraryThread() { return libraryThread; }

void ThreadCount::add() {
  const MutexGuard guard(mutex_);
  ++count_;
}

void ThreadCount::remove() {
  // Within the lock: once the count is down, this object may be gone.
  const MutexGuard guard(mutex_);
  --count_;
  changed_.notify_all();
}

void ThreadCount::waitUntilAtMost(unsigned count, std::chrono::milliseconds patience) {
  const auto end = std::chrono::steady_clock::now() + patience;
  MutexGuard guard(mutex_);
  while (count_ > count && guard.waitUntil(changed_, end)) {
  }
}

Registration registerExitHandler(void (*handler)()) {
  errno = 0;
  if (std::atexit(handler) == 0) return Registration::done;
  return errno == ENOMEM ? Registration::noMemory : Registration::tooLate;
}

bool atProcessExit(ExitStage stage, void (*end)()) {
  auto& list = exitList();
  const LockGuard guard(list.lock);
  if (!list.registered && registerExitHandler(endAll) == Registration::noMemory) {
    throw std::bad_alloc();
  }
  list.registered = true;
  list.ends[static_cast<std::size_t>(stage)] = end;
  return !list.hasEnded;
}

}  // namespace orvo::detail
