// What a fetch costs in instructions, beside others, and with many in flight.

#include <benchmarks/support/Beast.h>
#include <benchmarks/support/Instructions.h>
#include <benchmarks/support/Library.h>
#include <benchmarks/support/Measure.h>
#include <benchmarks/support/RawLibcurl.h>

#include <string>
#include <vector>

namespace orvo::benchmarks {
namespace {

constexpr double kSmallGoal = 1.0, kLargeGoal = 1.05;

/// The instructions of one fetch among `count`.
template <class Side>
double perFetch(Side& side, std::size_t count) {
  return instructionsOf([&] { side.fetch(count); }) / static_cast<double>(count);
}

/// Most connections are made before it is counted; one that is made later makes one of the counts
/// greater.
template <class Peer>
double perFetchOf(const Work& work) {
  constexpr std::size_t kCount = 100;
  Peer peer(work);
  peer.fetch(kCount);
  std::vector<double> counts;
  for (int i = 0; i < 5; ++i) counts.push_back(perFetch(peer, kCount));
  return median(counts);
}

void beside(const std::string& what, const Work& work, double goal, bool isMultiplexed) {
  const double ours = perFetchOf<Library>(work);
  printCounts(what, "instructions", ours, "raw libcurl multi", perFetchOf<RawMulti>(work), goal);
#if ORVO_HAS_BEAST
  if (isMultiplexed) return;
  printCounts(what, "instructions", ours, "Boost.Beast", perFetchOf<Beast>(work));
#else
  (void)isMultiplexed;
#endif
}

void growth(const Work& work) {
  Library library(work);
  library.fetch(100);
  double one = 0;
  constexpr int kTimes = 50;
  for (int i = 0; i < kTimes; ++i) one += perFetch(library, 1) / kTimes;
  printCounts("fetches in flight: 5,000 beside 1", "instructions", perFetch(library, 5'000),
              "the same, one by one", one, 1.3);
}

}  // namespace
}  // namespace orvo::benchmarks

int main(int, char** argv) {
  using namespace orvo::benchmarks;
  runUnderCallgrind(argv);
  const FileServer server;
  beside("fetch 3 KB, HTTP/1.1", server.http(kSmallBody), kSmallGoal, false);
  beside("fetch 60 KB, HTTP/1.1", server.http(kLargeBody), kLargeGoal, false);
  beside("fetch 3 KB, TLS", server.tls(kSmallBody), kSmallGoal, false);
  beside("fetch 60 KB, TLS", server.tls(kLargeBody), kLargeGoal, false);
  beside("fetch 3 KB, HTTP/2", server.http2(kSmallBody), kSmallGoal, true);
  beside("fetch 60 KB, HTTP/2", server.http2(kLargeBody), kLargeGoal, true);
  growth(server.http(kSmallBody));
}
