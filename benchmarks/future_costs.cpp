// Does the same piece of work with futures many times over, for callgrind to count its instructions
// (the difference between two numbers of times, as benchmarks/run does). Built with
// ORVO_COUNT_ALLOCATIONS it prints how many allocations one piece costs.
//
// usage: future_costs promise|callback|map TIMES

#include <OrvoAPI/Futures/Promise.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <string_view>

#ifdef ORVO_COUNT_ALLOCATIONS
namespace {
std::atomic<std::size_t> allocations = 0;
}  // namespace

void* operator new(std::size_t size) {
  allocations.fetch_add(1, std::memory_order_relaxed);
  if (void* const memory = std::malloc(size)) return memory;
  throw std::bad_alloc();
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
#endif

namespace {

using orvo::Promise;

constexpr unsigned long kMapsPerChain = 10;

std::atomic<bool> done = false;

void finish() {
  done.store(true);
  done.notify_one();
}

/// Promises and their futures, created and dropped.
void makePromises(unsigned long left) {
  for (; left > 0; --left) {
    const Promise<int> promise;
    const auto future = promise.future();
  }
  finish();
}

/// A promise with a callback, completed; the callback goes on with the next.
void runCallbacks(unsigned long left) {
  if (left == 0) return finish();
  const Promise<int> promise;
  promise.future().onComplete([left](const auto&) { runCallbacks(left - 1); });
  promise.success(1);
}

/// A chain of maps, completed; a callback at its end goes on with the next.
void runMaps(unsigned long left) {
  if (left == 0) return finish();
  const Promise<int> promise;
  auto future = promise.future();
  for (auto hop = kMapsPerChain; hop > 0; --hop) {
    future = future.map([](int value) { return value + 1; });
  }
  future.onComplete([left](const auto&) { runMaps(left - kMapsPerChain); });
  promise.success(1);
}

}  // namespace

int main(int argc, char** argv) {
  const std::string_view mode = argc == 3 ? argv[1] : "";
  void (*const work)(unsigned long) = mode == "promise"    ? makePromises
                                      : mode == "callback" ? runCallbacks
                                      : mode == "map"      ? runMaps
                                                           : nullptr;
  const auto times = work == nullptr ? 0 : std::strtoul(argv[2], nullptr, 10);
  if (times == 0 || times % kMapsPerChain != 0) {
    std::fprintf(stderr, "usage: future_costs promise|callback|map TIMES, in tens\n");
    return 2;
  }
#ifdef ORVO_COUNT_ALLOCATIONS
  const auto before = allocations.load();
#endif
  orvo::DispatchQueue::global()->post([&] { work(times); });
  done.wait(false);
#ifdef ORVO_COUNT_ALLOCATIONS
  const auto made = static_cast<double>(allocations.load() - before);
  std::printf("%.2f\n", made / static_cast<double>(times));
#endif
}
