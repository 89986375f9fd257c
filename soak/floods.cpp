// A hostile server floods one fetch, while another session fetches from a healthy host:
//
//     floods [KIND]
//
// Whatever the server pushes without end, the healthy fetches take no more than 1.5 s longer, and
// the flooded one ends within its limits: with a URL error, or as an answer where libcurl takes the
// end of a connection for that of a body without a length. With a number, that kind of flood only;
// with "some", those that libcurl, left alone, does not return from.

#include <OrvoAPI/Network/URLSession.h>
#include <signal.h>
#include <soak/FloodServer.h>
#include <support/Nginx.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace orvo::soak {
namespace {

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

constexpr auto kSilence = 3s;
constexpr auto kWhole = 5s;
constexpr Seconds kMostDelay = 1.5s;
constexpr auto kPatience = 20s;

class Trials {
 public:
  explicit Trials(const test::Nginx& nginx)
      : server_(*new FloodServer(nginx.certificateFile(), nginx.folder() + "/key.pem")),
        trusting_({.certificateAuthorityFile = nginx.certificateFile()}),
        url_(*URL::parse("https://127.0.0.1:" + std::to_string(nginx.http2Port) + "/")) {
    if (!fetchHealthy()) std::puts("the healthy host is not");
  }

  [[nodiscard]] bool isGood(const Flood& flood) {
    server_.setFlood(flood);
    const auto before = server_.pushed();
    URLSession healthy(trusting_), flooded(trusting_);
    const auto start = Clock::now();
    const auto victim = flooded.fetch(
        {.url = *URL::parse("https://127.0.0.1:" + std::to_string(server_.port()) + "/"),
         .timeoutInterval = kSilence,
         .totalTimeoutInterval = kWhole});
    Seconds slowest{0};
    bool allFetched = true;
    while (!victim.didComplete() && Clock::now() - start < kPatience && allFetched) {
      const auto began = Clock::now();
      allFetched = fetchHealthy();
      slowest = std::max<Seconds>(slowest, Clock::now() - began);
    }
    const auto result = victim.wait(1ms);
    const Seconds took = Clock::now() - start;
    const bool hasFailed = victim.didComplete() && result.failed();
    const auto* const error = hasFailed ? result.error()->as<URLError>() : nullptr;
    std::printf("%-16s others took %4.1f s at most, the flooded one %4.1f s; %5.0f MiB; %s\n",
                flood.name, slowest.count(), took.count(),
                static_cast<double>(server_.pushed() - before) / (1U << 20),
                error != nullptr       ? error->description().c_str()
                : victim.didComplete() ? "an answer"
                                       : "no end");
    std::fflush(stdout);
    const bool isEnded = victim.didComplete() && (error != nullptr || !result.failed());
    return allFetched && slowest <= kMostDelay && isEnded && took <= kWhole + kMostDelay;
  }

 private:
  [[nodiscard]] bool fetchHealthy() {
    return !session_.fetch({.url = url_, .timeoutInterval = kSilence}).wait(kPatience).failed();
  }

  FloodServer& server_;
  const URLSessionConfiguration trusting_;
  const URL url_;
  URLSession session_{trusting_};
};

int flood(std::string_view which) {
  const test::Nginx nginx("location / { return 200 healthy; }");
  const auto kinds = floods();
  Trials trials(nginx);
  unsigned bad = 0;
  for (std::size_t kind = 0; kind < kinds.size(); ++kind) {
    const bool isHard = kinds[kind].name == std::string_view("empty DATA") ||
                        kinds[kind].name == std::string_view("PRIORITY") ||
                        kinds[kind].name == std::string_view("TLS tickets");
    if (which.empty() || which == std::to_string(kind) || (which == "some" && isHard)) {
      if (!trials.isGood(kinds[kind])) ++bad;
    }
  }
  std::printf("%u kinds of flood are too much\n", bad);
  return bad == 0 ? 0 : 1;
}

}  // namespace
}  // namespace orvo::soak

int main(int argc, char** argv) {
  signal(SIGPIPE, SIG_IGN);
  const int status = orvo::soak::flood(argc > 1 ? argv[1] : "");
  std::fflush(stdout);
  _exit(status);  // the server's threads are at work: OpenSSL must not be taken down under them
}
