// A server on loopback that does to each request what its path says, however wrong, and a session
// that has 50 requests in flight until it has made all of them:
//
//     chaos REQUESTS [SEED]
//
// All complete, with the error that the fault demands; descriptors and memory are back to where
// they were.

#include <soak/Requests.h>

namespace orvo::soak {
namespace {

int cause(std::uint64_t requests, std::uint64_t seed) {
  // They live as long as the process: the server's threads never end.
  static const FaultyServer server(2 * kInFlight);
  static Requests client(
      "http://127.0.0.1:" + std::to_string(server.port()),
      {.maximumConnectionsPerHost = kInFlight, .maximumBodySize = kMaximumBodySize},
      [](const Fault& fault, int outcome) { return isAmong(fault.outcomes, outcome); }, seed);
  const auto first = std::min<std::uint64_t>(requests / 5, 4000);
  return judge(client, first, [&] { return client.make(requests - first); });
}

}  // namespace
}  // namespace orvo::soak

int main(int argc, char** argv) {
  using orvo::soak::argument;
  return orvo::soak::cause(argument(argc, argv, 1, 10'000), argument(argc, argv, 2, 1));
}
