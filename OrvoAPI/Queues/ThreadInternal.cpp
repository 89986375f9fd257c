#include <OrvoAPI/Base/detail/Lock.h>
#include <OrvoAPI/Queues/ThreadInternal.h>

#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cstdlib>
#include <ctime>

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

/// The process whose threads are ended when it exits; a forked child has none.
std::atomic<pid_t> owner{0};

struct ExitList {
  Lock lock;
  bool registered ORVO_GUARDED_BY(lock) = false;
  std::array<void (*)(), 4> ends ORVO_GUARDED_BY(lock) = {};
};

ExitList& exitList() {
  static auto* const list = new ExitList;  // outlives every static destructor
  return *list;
}

void endAll() {
  if (isForkedChild()) return;
  std::array<void (*)(), 4> ends{};
  {
    const LockGuard guard(exitList().lock);
    ends = exitList().ends;
  }
  for (const auto end : ends) {
    if (end != nullptr) end();
  }
}

}  // namespace

bool startThread(const char* name, void (*body)()) {
  const auto thread = startJoinableThread(name, body);
  if (thread) pthread_detach(*thread);
  return thread.has_value();
}

std::optional<pthread_t> startJoinableThread(const char* name, void (*body)()) {
  sigset_t blocked;
  sigset_t before;
  sigfillset(&blocked);
  for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGSYS}) {
    sigdelset(&blocked, fault);
  }
  pthread_sigmask(SIG_SETMASK, &blocked, &before);
  auto* const start = new Start{name, body};
  pthread_t thread{};
  const bool started = pthread_create(&thread, nullptr, enter, start) == 0;
  if (!started) delete start;
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  return started ? std::optional(thread) : std::nullopt;
}

void joinWithin(pthread_t thread, std::chrono::milliseconds patience) {
  timespec until{};
  clock_gettime(CLOCK_REALTIME, &until);
  const auto nanoseconds = std::chrono::nanoseconds(patience).count() + until.tv_nsec;
  until.tv_sec += nanoseconds / 1'000'000'000;
  until.tv_nsec = nanoseconds % 1'000'000'000;
  pthread_timedjoin_np(thread, nullptr, &until);
}

bool isForkedChild() { return owner != 0 && owner != getpid(); }

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

void atProcessExit(ExitStage stage, void (*end)()) {
  auto& list = exitList();
  const LockGuard guard(list.lock);
  list.ends[static_cast<std::size_t>(stage)] = end;
  if (list.registered) return;
  list.registered = true;
  owner = getpid();
  std::atexit(endAll);
}

}  // namespace orvo::detail
