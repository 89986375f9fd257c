// Futures beside Boost's on an executor of as many threads as our workers: a chain of
// maps from its making to the end of its last callback, many such chains in flight, the fan-in of a
// list.

#if __has_include(<boost/thread/future.hpp>)
#define BOOST_THREAD_VERSION 5
#include <OrvoAPI/Futures/Promise.h>
#include <benchmarks/support/Instructions.h>
#include <benchmarks/support/Measure.h>

#include <algorithm>
#include <atomic>
#include <boost/thread/executors/basic_thread_pool.hpp>
#include <boost/thread/future.hpp>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <latch>
#include <thread>
#include <vector>

namespace {

using namespace orvo::benchmarks;

constexpr int kMaps = 10;
constexpr int kInputs = 100;

boost::executors::basic_thread_pool& pool() {
  static boost::executors::basic_thread_pool threads(
      std::max(2U, std::thread::hardware_concurrency()));
  return threads;
}

struct Ours {
  using Promise = orvo::Promise<int>;

  /// A chain of maps on the promise's future; `done` is called at its end.
  template <class Done>
  static void chain(Promise& promise, Done&& done) {
    auto future = promise.future();
    for (int i = 0; i < kMaps; ++i) future = future.map([](int value) { return value + 1; });
    future.onSuccess([done = std::forward<Done>(done)](int value) {
      keep(value);
      done();
    });
  }
  static void complete(Promise& promise) { promise.success(1); }
  static void start(std::function<void()> job) { orvo::DispatchQueue::global()->post(job); }

  /// The values of all, once they are there.
  static std::vector<int> fanIn(std::vector<Promise>& promises) {
    std::vector<orvo::Future<int>> futures;
    futures.reserve(promises.size());
    for (auto& promise : promises) futures.push_back(promise.future());
    const auto all = orvo::Future<int>::concat(std::move(futures));
    for (auto& promise : promises) promise.success(1);
    return all.wait(std::chrono::seconds(30)).force();
  }
};

struct Theirs {
  using Promise = boost::promise<int>;

  template <class Done>
  static void chain(Promise& promise, Done&& done) {
    auto future = promise.get_future();
    for (int i = 0; i < kMaps; ++i) {
      future = future.then(pool(), [](boost::future<int> value) { return value.get() + 1; });
    }
    future.then(pool(), [done = std::forward<Done>(done)](boost::future<int> value) {
      keep(value.get());
      done();
    });
  }
  static void complete(Promise& promise) { promise.set_value(1); }
  static void start(std::function<void()> job) { pool().submit(job); }

  static std::vector<int> fanIn(std::vector<Promise>& promises) {
    std::vector<boost::future<int>> futures;
    futures.reserve(promises.size());
    for (auto& promise : promises) futures.push_back(promise.get_future());
    auto all = boost::when_all(futures.begin(), futures.end());
    for (auto& promise : promises) promise.set_value(1);
    std::vector<int> values;
    values.reserve(promises.size());
    for (auto& future : all.get()) values.push_back(future.get());
    return values;
  }
};

/// One chain after another, each begun by the end of the one before.
template <class Side>
void runChains(int times, std::latch& finished) {
  if (times == 0) return finished.count_down();
  typename Side::Promise promise;
  Side::chain(promise, [times, &finished] { runChains<Side>(times - 1, finished); });
  Side::complete(promise);
}

template <class Side>
double instructionsOfAChain() {
  constexpr int kFew = 100, kMany = 1100;
  const auto run = [](int times) {
    std::latch finished(1);
    Side::start([&] { runChains<Side>(times, finished); });
    finished.wait();
  };
  run(kFew);
  const double few = instructionsOf([&] { run(kFew); });
  return (instructionsOf([&] { run(kMany); }) - few) / (kMany - kFew);
}

double milliseconds(clockid_t clock) {
  timespec time{};
  clock_gettime(clock, &time);
  return 1e3 * static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_nsec);
}

/// Time from the making of many chains, all before the first completes, to their end.
template <class Side, clockid_t clock>
double millisecondsInFlight() {
  constexpr int kChains = 10000;
  std::latch finished(kChains);
  const double begin = milliseconds(clock);
  std::vector<typename Side::Promise> promises(kChains);
  for (auto& promise : promises) Side::chain(promise, [&finished] { finished.count_down(); });
  for (auto& promise : promises) Side::complete(promise);
  finished.wait();
  return milliseconds(clock) - begin;
}

/// By the wall clock, and the processor time of all threads, which other programs do not lengthen.
template <clockid_t clock>
void compareInFlight(const char* unit) {
  print("10,000 chains of 10 maps in flight", unit, "Boost futures",
        inTurns(millisecondsInFlight<Ours, clock>, millisecondsInFlight<Theirs, clock>, 11), 1);
}

/// The inputs are made before counting starts.
template <class Side>
Counts countsOfAFanIn() {
  constexpr int kTimes = 50;
  Counts sum{};
  for (int i = 0; i < kTimes; ++i) {
    std::vector<typename Side::Promise> promises(kInputs);
    const auto counts = countsOf([&] { keep(Side::fanIn(promises)); });
    if (i == 0) continue;  // the first starts threads
    sum.instructions += counts.instructions / (kTimes - 1);
    sum.allocations += counts.allocations / (kTimes - 1);
  }
  return sum;
}

}  // namespace

int main(int, char** argv) {
  if (!underCallgrind()) {
    compareInFlight<CLOCK_MONOTONIC>("ms");
    compareInFlight<CLOCK_PROCESS_CPUTIME_ID>("ms of CPU");
  }
  runUnderCallgrind(argv);
  const double ours = instructionsOfAChain<Ours>(), theirs = instructionsOfAChain<Theirs>();
  printCounts("chain of 10 maps", "instructions", ours, "Boost futures", theirs, 0.20);
  const auto concat = countsOfAFanIn<Ours>(), whenAll = countsOfAFanIn<Theirs>();
  printCounts("fan-in of 100 futures", "instructions", concat.instructions, "Boost when_all",
              whenAll.instructions, 0.35);
  print(Row{"fan-in of 100 futures", "allocations", concat.allocations, "Boost when_all",
            whenAll.allocations, kNothing, Goal::atMost, 20});
}
#else
#include <cstdio>

int main() { std::puts("left out: futures beside Boost's (libboost-thread1.81-dev)"); }
#endif
