// How long an app waits for its context when every answer takes 50 ms: no longer than the slowest
// answer, for the requests are under way at the same time.

#include <OrvoAPI/Context/Context.h>
#include <OrvoAPI/Context/ContextService.h>
#include <benchmarks/support/Measure.h>
#include <demo/DemoService.h>
#include <support/Loopback.h>
#include <unistd.h>

#include <array>
#include <thread>

namespace orvo::benchmarks {
namespace {

using namespace std::chrono_literals;

constexpr auto kDelay = 50ms;

/// Passes connections on to another port, each answer later by the delay. Its threads end with the
/// process.
class SlowLine {
 public:
  explicit SlowLine(int target) : target_(target) {
    const auto [listener, port] = test::listenOnLoopback();
    port_ = port;
    std::thread([this, listener = listener] {
      while (true) {
        const int client = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
        const int server = test::connectToLoopback(target_);
        std::thread([=] { pass(client, server, false); }).detach();
        std::thread([=] { pass(server, client, true); }).detach();
      }
    }).detach();
  }
  [[nodiscard]] int port() const { return port_; }

 private:
  /// An answer that comes in several pieces is delayed once.
  static void pass(int from, int to, bool delayed) {
    std::array<char, 65536> buffer;
    auto sent = std::chrono::steady_clock::time_point{};
    while (true) {
      const auto count = recv(from, buffer.data(), buffer.size(), 0);
      if (count <= 0) break;
      if (delayed && std::chrono::steady_clock::now() - sent > kDelay / 10) {
        std::this_thread::sleep_for(kDelay);
      }
      send(to, buffer.data(), static_cast<std::size_t>(count), MSG_NOSIGNAL);
      sent = std::chrono::steady_clock::now();
    }
    shutdown(to, SHUT_RDWR);
  }

  const int target_;
  int port_ = 0;
};

/// Milliseconds until a context is there.
double open(int port) {
  const auto origin = "http://127.0.0.1:" + std::to_string(port);
  const auto begin = std::chrono::steady_clock::now();
  (void)ContextService::context(*URL::parse(origin + "/v3/"), *URL::parse(origin + "/"),
                                Client::appleTV)
      .wait(30s)
      .force();
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin)
      .count();
}

}  // namespace
}  // namespace orvo::benchmarks

int main() {
  using namespace orvo::benchmarks;
  orvo::demo::DemoService service;
  if (!service.start()) return 2;
  static const SlowLine line(service.port());
  (void)open(line.port());  // the threads are there
  std::vector<double> times;
  for (int round = 0; round < 9; ++round) times.push_back(open(line.port()));
  const double taken = median(times);
  constexpr double kOneAnswer = std::chrono::duration<double, std::milli>(kDelay).count();
  print("a context, each answer delayed by 50 ms", "ms", "one answer",
        {taken, kOneAnswer, taken / kOneAnswer}, 1.1);
}
