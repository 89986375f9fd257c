// Fetches through the library beside others: how many per second, what they cost in processor time
// and how often a thread is put to sleep for them, and how long one by itself takes. The server is
// an nginx; each side asks for all at once and has ten connections.

#include <benchmarks/support/Beast.h>
#include <benchmarks/support/Library.h>
#include <benchmarks/support/Measure.h>
#include <benchmarks/support/RawLibcurl.h>
#include <sys/resource.h>

#include <chrono>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace orvo::benchmarks {
namespace {

const char* const kLibcurl = "raw libcurl multi";

/// The goals beside raw libcurl.
struct Goals {
  double throughput;
  double processor;
};
constexpr Goals kSmallGoals{0.9, 1.15}, kLargeGoals{0.95, 1.1};
constexpr Goals kNone{kNothing, kNothing};

/// How often a thread of this process has waited so far.
double waits() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_nvcsw);
}

struct Rounds {
  std::vector<double> processor, waits;
};

/// Prints what both cost.
template <class Peer>
void beside(const std::string& peer, const std::string& what, const Work& work, std::size_t count,
            const Goals& goals) {
  Library ours(work);
  Peer theirs(work);
  ours.fetch(count), theirs.fetch(count);  // connections are made
  Rounds ourRounds, theirRounds;
  const auto side = [fetches = static_cast<double>(count), count](auto& fetcher, Rounds& rounds) {
    const double waited = waits(), processor = processSeconds(), wall = wallSeconds();
    fetcher.fetch(count);
    const double taken = wallSeconds() - wall;
    rounds.processor.push_back((processSeconds() - processor) * 1e6 / fetches);
    rounds.waits.push_back((waits() - waited) / fetches);
    return fetches / taken;
  };
  const auto throughput =
      inTurns([&] { return side(ours, ourRounds); }, [&] { return side(theirs, theirRounds); });
  print(what, "fetches/s", peer, throughput, goals.throughput, Goal::atLeast);
  print(what, "CPU us", peer, comparison(ourRounds.processor, theirRounds.processor),
        goals.processor);
  print(what, "waits", peer, comparison(ourRounds.waits, theirRounds.waits), kNothing);
}

/// A fetch when nothing else is going on, until its value is with the thread that asked for it.
template <class Fetch>
double aloneMicroseconds(Fetch&& fetch) {
  std::vector<double> times;
  for (int i = 0; i < 30; ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));  // all threads have come to rest
    const double begin = wallSeconds();
    fetch();
    times.push_back((wallSeconds() - begin) * 1e6);
  }
  return median(times);
}

void oneAtATime(const std::string& what, const Work& work) {
  Library ours(work);
  RawHandle theirs(work);
  print("one " + what + " at a time", "us", "raw libcurl, blocking",
        inTurns([&] { return aloneMicroseconds([&] { ours.fetch(1); }); },
                [&] { return aloneMicroseconds([&] { theirs.fetch(); }); }),
        1.5);
}

}  // namespace
}  // namespace orvo::benchmarks

int main() {
  using namespace orvo::benchmarks;
  const FileServer server;
  struct Kind {
    std::string name;
    Work small, large;
    std::size_t count;
  };
  const std::vector<Kind> kinds{
      {"HTTP/1.1", server.http(kSmallBody), server.http(kLargeBody), 2000},
      {"TLS", server.tls(kSmallBody), server.tls(kLargeBody), 1000},
      {"HTTP/2", server.http2(kSmallBody), server.http2(kLargeBody), 1000}};
  for (const auto& [name, small, large, count] : kinds) {
    const auto few = "fetch 3 KB, " + name, many = "fetch 60 KB, " + name;
    beside<RawMulti>(kLibcurl, few, small, count, kSmallGoals);
    beside<RawMulti>(kLibcurl, many, large, count / 2, kLargeGoals);
    if (name == "HTTP/2") continue;  // the others do without it
#if ORVO_HAS_BEAST
    beside<Beast>("Boost.Beast", few, small, count, kNone);
    beside<Beast>("Boost.Beast", many, large, count / 2, kNone);
#endif
    beside<RawThreads>("libcurl on ten threads", few, small, count, {1, kNothing});
  }
  oneAtATime("fetch 3 KB, HTTP/1.1", server.http(kSmallBody));
  oneAtATime("fetch 3 KB, HTTP/2", server.http2(kSmallBody));
#if !ORVO_HAS_BEAST
  std::puts("left out: fetches beside Boost.Beast (libboost1.81-dev)");
#endif
}
