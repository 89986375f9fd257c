// How long the next screen waits for its first answer when one is left that has fetches of a second
// each under way: with their futures cancelled, and with their FetchScope. An nginx serves them.

#include <OrvoAPI/OrvoAPI.h>
#include <OrvoAPI/Testing/StubSessionProvider.h>
#include <benchmarks/support/Documents.h>
#include <benchmarks/support/Measure.h>
#include <support/Nginx.h>

#include <chrono>
#include <fstream>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr std::size_t kSlowBody = 200'000;  // of which nginx sends the first second's share at once

/// Serves the page "next" at once and all others within a second.
class Service {
 public:
  Service()
      : nginx_(
            "root files; location /products/ { limit_rate 100k; rewrite ^ /slow break; }"
            "location = /products/next { rewrite ^ /quick break; }") {
    const std::string page = R"({"id": "p", "title": "T")";
    std::filesystem::create_directory(nginx_.folder() + "/files");
    std::ofstream(nginx_.folder() + "/files/quick") << page << '}';
    std::ofstream(nginx_.folder() + "/files/slow") << page << std::string(kSlowBody, ' ') << '}';
  }

  /// A context of its own, with connections of its own.
  [[nodiscard]] std::shared_ptr<orvo::Context> open(bool isHTTP2) const {
    const auto address = isHTTP2 ? "https://127.0.0.1:" + std::to_string(nginx_.http2Port) + "/"
                                 : "http://127.0.0.1:" + std::to_string(nginx_.port) + "/";
    const auto session = std::make_shared<orvo::StubSessionProvider>("token");
    const auto network = std::make_shared<orvo::URLSession>(
        orvo::URLSessionConfiguration{.certificateAuthorityFile = nginx_.certificateFile()});
    return orvo::Context::make(configuration(), *orvo::URL::parse(address),
                               *orvo::URL::parse(address), session, network);
  }

 private:
  static orvo::Configuration configuration() {
    const orvo::Data document(orvo::benchmarks::configurationDocument());
    return orvo::ConfigurationParser::parse(orvo::JSONDataParser::object(document).force(),
                                            orvo::Environment::production)
        .force();
  }
  orvo::test::Nginx nginx_;
};

/// Milliseconds from leaving to the next screen's first answer.
double leave(const Service& service, bool isHTTP2, int fetches, bool usesScope) {
  const auto context = service.open(isHTTP2);
  (void)context->fetchPage("next", {.noCache = true}).wait(30s).force();  // connected
  std::optional<orvo::FetchScope> scope(context);
  std::vector<orvo::Future<orvo::Shared<orvo::Page>>> abandoned;
  const auto& left = usesScope ? *scope->context() : *context;
  for (int i = 0; i < fetches; ++i) {
    abandoned.push_back(left.fetchPage("slow-" + std::to_string(i), {.noCache = true}));
  }
  std::this_thread::sleep_for(100ms);  // the first answers are arriving
  const auto begun = Clock::now();
  scope.reset();
  for (const auto& page : abandoned) page.cancel();
  (void)context->fetchPage("next", {.noCache = true}).wait(60s).force();
  return std::chrono::duration<double, std::milli>(Clock::now() - begun).count();
}

}  // namespace

int main() {
  const Service service;
  for (const bool isHTTP2 : {false, true}) {
    for (const int fetches : {0, 10, 40, 100}) {
      std::vector<double> withScope;
      for (int round = 0; round < 9; ++round) {
        withScope.push_back(leave(service, isHTTP2, fetches, true));
      }
      const double scope = orvo::benchmarks::median(withScope);
      const double futures = leave(service, isHTTP2, fetches, false);
      orvo::benchmarks::print({.name = std::string("first answer after leaving ") +
                                       std::to_string(fetches) + " fetches, " +
                                       (isHTTP2 ? "HTTP/2" : "HTTP/1.1"),
                               .unit = "ms",
                               .ours = scope,
                               .peer = "futures cancelled",
                               .theirs = futures,
                               .ratio = scope / futures});
    }
  }
}
