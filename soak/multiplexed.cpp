// The requests of chaos over HTTP/2: an nginx with TLS stands before the faulty server, and is
// reloaded, stopped and killed all the while in the second half:
//
//     multiplexed REQUESTS [SEED]
//
// All complete, with the error that the fault, or the restart, demands; descriptors and memory are
// back to where they were.

#include <OrvoAPI/HTTP/URLError.h>
#include <soak/Requests.h>
#include <support/Nginx.h>

#include <atomic>

namespace orvo::soak {
namespace {

std::atomic<bool> restarts = false;

bool isExpected(const Fault& fault, int outcome) {
  using E = URLError;
  if (fault.proxied.empty() || isAmong(fault.proxied, outcome)) {
    return outcome != 0;
  }
  // Cut off while under way, during the handshake, or nobody there.
  return restarts && (outcome == E::networkConnectionLost || outcome == E::cannotConnectToHost ||
                      outcome == E::secureConnectionFailed);
}

/// Ends nginx again and again, in all the ways there are; how often.
unsigned restartUntil(const std::atomic<bool>& done, test::Nginx& nginx) {
  unsigned count = 0;
  for (; !done; ++count) {
    std::this_thread::sleep_for(200ms);
    if (count % 3 == 0) {
      nginx.reload();
    } else {
      nginx.stop(count % 3 == 1 ? SIGTERM : SIGKILL);
      nginx.start();
    }
  }
  return count;
}

int cause(std::uint64_t requests, std::uint64_t seed) {
  // They live as long as the process: the server's threads never end.
  static const FaultyServer server(2 * kInFlight);
  test::Nginx nginx("location / { proxy_pass http://127.0.0.1:" + std::to_string(server.port()) +
                    "; proxy_http_version 1.1; proxy_set_header Connection \"\";"
                    " proxy_buffering off; gzip off; }");
  static Requests client(
      "https://127.0.0.1:" + std::to_string(nginx.http2Port),
      {.maximumBodySize = kMaximumBodySize, .certificateAuthorityFile = nginx.certificateFile()},
      isExpected, seed);
  return judge(client, requests / 2, [&] {
    restarts = true;
    std::atomic<bool> done = false;
    bool good = false;
    std::thread requester([&] {
      good = client.make(requests - requests / 2);
      done = true;
    });
    std::printf("%-16s %10u\n", "restarts", restartUntil(done, nginx));
    requester.join();
    return good;
  });
}

}  // namespace
}  // namespace orvo::soak

int main(int argc, char** argv) {
  using orvo::soak::argument;
  return orvo::soak::cause(argument(argc, argv, 1, 10'000), argument(argc, argv, 2, 1));
}
