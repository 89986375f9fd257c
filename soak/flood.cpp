// Many fetches at the same moment, from a server on loopback that is asked through few connections:
//
//     flood [FETCHES]
//
// All are answered; no more connections are open than were allowed, and the memory that the waiting
// take stays bounded. Prints both.

#include <OrvoAPI/Network/DefaultNetworkProvider.h>
#include <soak/Requests.h>

#include <atomic>
#include <optional>

namespace orvo::soak {
namespace {

constexpr unsigned kConnections = 10;
constexpr std::size_t kBody = 3000;
/// A fetch that waits: its request, task, future and transforms.
constexpr std::size_t kMostKilobytesPerFetch = 2;

std::size_t mostKilobytesSoFar() {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("VmHWM:")) return std::stoul(line.substr(6));
  }
  return 0;
}

/// What a flood leaves behind.
struct Flood {
  std::atomic<std::size_t> left;
  std::atomic<std::size_t> wrong = 0;
  std::atomic<std::size_t> mostDescriptors = 0;

  /// Starts the fetches and waits for their ends.
  void run(URLSession& session, const URL& url) {
    for (auto count = left.load(); count > 0; --count) {
      session.fetch({.url = url, .timeoutInterval = 120s})
          .map([](const HTTPResult& result) { return result.body.size(); })
          .onComplete([this](const Result<std::size_t>& size) {
            if (size.value() == nullptr || *size.value() != kBody) ++wrong;
            const auto remaining = --left;
            if (remaining % 100 == 0) {
              mostDescriptors = std::max(mostDescriptors.load(), Holdings::now().descriptors);
            }
            if (remaining == 0) left.notify_all();
          });
    }
    for (auto remaining = left.load(); remaining > 0; remaining = left.load()) left.wait(remaining);
  }
};

int flood(std::size_t fetches) {
  static const FaultyServer server(2 * kConnections);
  URLSession session({.maximumConnectionsPerHost = kConnections});
  const auto url = *URL::parse("http://127.0.0.1:" + std::to_string(server.port()) + "/0/" +
                               std::to_string(kBody));
  Flood first{.left = 100};
  first.run(session, url);
  const auto before = Holdings::now();
  std::ofstream("/proc/self/clear_refs") << 5;  // starts the peak anew
  Flood all{.left = fetches};
  all.run(session, url);
  const auto kilobytes = mostKilobytesSoFar() - std::min(mostKilobytesSoFar(), before.kilobytes);
  std::printf("fetches          %10zu, %zu ended wrongly\n", fetches, all.wrong.load());
  std::printf("memory in KB     %10zu more at most, %.2f for each\n", kilobytes,
              static_cast<double>(kilobytes) / static_cast<double>(fetches));
  std::printf("descriptors      %10zu before, %zu at most\n", before.descriptors,
              all.mostDescriptors.load());
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  const bool isBounded = true;  // a sanitizer's own bookkeeping says nothing of the library
#else
  const bool isBounded = kilobytes <= kMostKilobytesPerFetch * fetches;
#endif
  // Both ends of each connection are this process's.
  const bool fewConnections = all.mostDescriptors <= before.descriptors + 2 * kConnections;
  return all.wrong == 0 && isBounded && fewConnections ? 0 : 1;
}

}  // namespace
}  // namespace orvo::soak

int main(int argc, char** argv) {
  return orvo::soak::flood(orvo::soak::argument(argc, argv, 1, 10'000));
}
