// What futures cost, in counts: a promise with its future, a callback, a hop of a chain of maps,
// and whether a hop of a long chain costs more than one of a short chain.

#include <OrvoAPI/Futures/Promise.h>
#include <benchmarks/support/Instructions.h>
#include <benchmarks/support/Measure.h>

#include <atomic>
#include <string>

namespace {

using namespace orvo::benchmarks;
using orvo::Promise;

std::atomic<bool> done = false;

void finish() {
  done.store(true);
  done.notify_one();
}

/// Promises and their futures, created and dropped.
void makePromises(int times) {
  for (; times > 0; --times) {
    const Promise<int> promise;
    const auto future = promise.future();
  }
  finish();
}

/// A promise with a callback, completed; the callback goes on with the next.
void runCallbacks(int times) {
  if (times == 0) return finish();
  const Promise<int> promise;
  promise.future().onComplete([times](const auto&) { runCallbacks(times - 1); });
  promise.success(1);
}

/// A chain of maps, completed; a callback at its end goes on with the next.
template <int hops>
void runMaps(int times) {
  if (times == 0) return finish();
  const Promise<int> promise;
  auto future = promise.future();
  for (int hop = 0; hop < hops; ++hop) {
    future = future.map([](int value) { return value + 1; });
  }
  future.onComplete([times](const auto&) { runMaps<hops>(times - 1); });
  promise.success(1);
}

/// Has a worker do the work and waits until it is finished.
void run(void (*work)(int), int times) {
  done.store(false);
  orvo::DispatchQueue::global()->post([=] { work(times); });
  done.wait(false);
}

/// What `work(times)` costs for each of its times and each of the units of one time: the
/// difference between two runs, of which the shorter has all that is done but once.
Counts costOf(void (*work)(int), int units = 1) {
  constexpr int kFew = 100, kMany = 1100;
  run(work, kFew);  // the worker is started, the allocator's lists are filled
  const auto few = countsOf([&] { run(work, kFew); });
  const auto many = countsOf([&] { run(work, kMany); });
  const double all = static_cast<double>(kMany - kFew) * units;
  return {(many.instructions - few.instructions) / all, (many.allocations - few.allocations) / all};
}

void report(const char* what, Counts cost, double instructions, double allocations) {
  print({.name = what, .unit = "instructions", .ours = cost.instructions, .bound = instructions});
  print({.name = what, .unit = "allocations", .ours = cost.allocations, .bound = allocations});
}

}  // namespace

int main(int, char** argv) {
  runUnderCallgrind(argv);
  report("create a promise and its future", costOf(makePromises), 250, 1);
  report("callback, completed", costOf(runCallbacks), 700, 2);
  const auto hop = costOf(runMaps<10>, 10);
  report("map hop", hop, 600, 1.2);
  // With the promise before the first hop and the callback after the last.
  const double small = costOf(runMaps<1>).instructions;
  const double big = costOf(runMaps<1000>, 1000).instructions;
  const std::string name = "each hop of a chain of 1,000";
  printCounts(name, "instructions", big, "of 1", small, 1.3);
  printCounts(name, "instructions", big, "of 10", hop.instructions, 1.3);
}
