// How long an app waits for its first contents when each round trip takes 100 ms and the connection
// is secured: for its context, then for a page, then for the page's image from the same host. The
// least is a round trip each to connect, to secure the connection, and for each of the three, of
// which the context's two requests are made at the same time.

#include <OrvoAPI/OrvoAPI.h>
#include <benchmarks/support/FileServer.h>
#include <benchmarks/support/Line.h>
#include <benchmarks/support/Measure.h>
#include <demo/DemoService.h>

#include <array>
#include <string>
#include <vector>

namespace orvo::benchmarks {
namespace {

using namespace std::chrono_literals;

constexpr auto kEachWay = 50ms;
constexpr double kRoundTrip = 100;
constexpr int kRounds = 9;

/// When the three were there, in milliseconds.
std::array<double, 3> open(const std::string& origin, const std::string& authority) {
  const double begin = wallSeconds();
  const auto passed = [begin] { return (wallSeconds() - begin) * 1e3; };
  BootstrapOptions options;
  options.session.certificateAuthorityFile = authority;
  const auto context =
      ContextService::context(*URL::parse(origin + "/v3/"), *URL::parse(origin + "/resources/"),
                              Client::appleTV, options)
          .wait(30s)
          .force();
  std::array<double, 3> times{passed()};
  const auto page = context->fetchPage(context->systemViews().front().id).wait(30s).force();
  times[1] = passed();
  const auto image = (*page->imageResources.begin()).second;
  const auto answer = context->networkDataProvider()
                          ->fetch({.url = image.url({320, 180}, {}, context->resourceHost())})
                          .wait(30s)
                          .force();
  times[2] = passed();
  if (answer.response.statusCode != 200) {
    std::fprintf(stderr, "the image: %d\n", answer.response.statusCode);
    std::exit(2);
  }
  return times;
}

void measure(const std::string& protocol, int port, const std::string& authority) {
  // To a port of its own each time, so that no connection is there yet.
  const auto openAnew = [&] {
    const auto* const line = new Line(port, kEachWay);  // as long as the process, as its thread
    return open("https://127.0.0.1:" + std::to_string(line->port()), authority);
  };
  (void)openAnew();  // the threads are there, and the authorities have been read
  std::array<std::vector<double>, 3> times;
  for (int round = 0; round < kRounds; ++round) {
    const auto once = openAnew();
    for (std::size_t i = 0; i < once.size(); ++i) times[i].push_back(once[i]);
  }
  const std::array<const char*, 3> names{"context", "context, page", "context, page, image"};
  for (std::size_t i = 0; i < times.size(); ++i) {
    const std::vector<double> least(kRounds, kRoundTrip * static_cast<double>(3 + i));
    print(names[i] + (" over TLS, " + protocol), "ms", "the round trips alone",
          comparison(times[i], least), 1.1);
  }
}

}  // namespace
}  // namespace orvo::benchmarks

int main() {
  using namespace orvo;
  demo::DemoService service;
  if (!service.start()) return 2;
  const test::Nginx nginx(
      "location / { proxy_pass http://127.0.0.1:" + std::to_string(service.port()) + "; }",
      benchmarks::kProtocols + benchmarks::kSessions);
  benchmarks::measure("HTTP/1.1", nginx.tlsPort, nginx.certificateFile());
  benchmarks::measure("HTTP/2", nginx.http2Port, nginx.certificateFile());
}
