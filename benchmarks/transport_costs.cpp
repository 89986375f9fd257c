// What a fetch costs in instructions, beside raw libcurl, and with many in flight.

#include <benchmarks/support/Instructions.h>
#include <benchmarks/support/Measure.h>
#include <benchmarks/support/Transport.h>

namespace orvo::benchmarks {
namespace {

/// The instructions of one fetch among `count`.
template <class Side>
double perFetch(Side& side, std::size_t count) {
  return instructionsOf([&] { side.fetch(count); }) / static_cast<double>(count);
}

void besideRawMulti(const std::string& what, const Work& work) {
  constexpr std::size_t kCount = 500;
  Library library(work);
  RawMulti raw(work);
  library.fetch(kCount);  // all connections are made
  raw.fetch(kCount);
  const double ours = perFetch(library, kCount), theirs = perFetch(raw, kCount);
  print(what, "instructions", "raw libcurl multi", {ours, theirs, ours / theirs}, 1.08);
}

void growth(const Work& work) {
  Library library(work);
  library.fetch(100);
  double one = 0;
  constexpr int kTimes = 50;
  for (int i = 0; i < kTimes; ++i) one += perFetch(library, 1) / kTimes;
  const double many = perFetch(library, 10'000);
  print("fetches in flight: 10,000 beside 1", "instructions", "the same, one by one",
        {many, one, many / one}, 1.3);
}

}  // namespace
}  // namespace orvo::benchmarks

int main(int, char** argv) {
  using namespace orvo::benchmarks;
  runUnderCallgrind(argv);
  const FileServer server;
  besideRawMulti("fetch 3 KB, HTTP/1.1", server.http(kSmallBody));
  besideRawMulti("fetch 60 KB, HTTP/1.1", server.http(kLargeBody));
  besideRawMulti("fetch 3 KB, TLS", server.tls(kSmallBody));
  besideRawMulti("fetch 60 KB, TLS", server.tls(kLargeBody));
  besideRawMulti("fetch 3 KB, HTTP/2", server.http2(kSmallBody));
  besideRawMulti("fetch 60 KB, HTTP/2", server.http2(kLargeBody));
  growth(server.http(kSmallBody));
}
