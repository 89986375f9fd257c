// What a screen costs that is left with fetches of a second each under way: how long the next one
// waits for its first answer, and how much of the abandoned bodies still arrives; with their
// futures cancelled, and with their FetchScope. An nginx serves them.

#include <OrvoAPI/OrvoAPI.h>
#include <OrvoAPI/Testing/StubSessionProvider.h>
#include <benchmarks/support/Documents.h>
#include <benchmarks/support/FileServer.h>
#include <benchmarks/support/Line.h>
#include <benchmarks/support/Measure.h>

#include <chrono>
#include <fstream>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace std::chrono_literals;
using namespace orvo::benchmarks;
using Clock = std::chrono::steady_clock;

constexpr std::size_t kSlowBody = 100'000;

/// Serves the page "next" at once and all others within a second, a little every few milliseconds.
class Service {
 public:
  Service()
      : nginx_(
            "root files; sendfile_max_chunk 2k; http2_chunk_size 2k;"
            "location /products/ { limit_rate 100k; rewrite ^ /slow break; }"
            "location = /products/next { rewrite ^ /quick break; }",
            kProtocols + kSessions) {
    const std::string page = R"({"id": "p", "title": "T")";
    std::filesystem::create_directory(nginx_.folder() + "/files");
    std::ofstream(nginx_.folder() + "/files/quick") << page << '}';
    std::ofstream(nginx_.folder() + "/files/slow") << page << std::string(kSlowBody, ' ') << '}';
  }

  /// A context of its own, with connections of its own.
  [[nodiscard]] std::shared_ptr<orvo::Context> open(bool isHTTP2) const {
    const auto address = (isHTTP2 ? "https://127.0.0.1:" : "http://127.0.0.1:") +
                         std::to_string(line(isHTTP2).port()) + "/";
    const auto session = std::make_shared<orvo::StubSessionProvider>("token");
    const auto network = std::make_shared<orvo::URLSession>(
        orvo::URLSessionConfiguration{.certificateAuthorityFile = nginx_.certificateFile()});
    return orvo::Context::make(configuration(), *orvo::URL::parse(address),
                               *orvo::URL::parse(address), session, network);
  }
  /// The way to it, which counts what it passes on.
  [[nodiscard]] const Line& line(bool isHTTP2) const { return isHTTP2 ? *http2_ : *http_; }

 private:
  static orvo::Configuration configuration() {
    const orvo::Data document(configurationDocument());
    return orvo::ConfigurationParser::parse(orvo::JSONDataParser::object(document).force(),
                                            orvo::Environment::production)
        .force();
  }
  orvo::test::Nginx nginx_;
  // As long as the process, as their threads.
  const Line* const http_ = new Line(nginx_.port, {});
  const Line* const http2_ = new Line(nginx_.http2Port, {});
};

struct Cost {
  double milliseconds;  // from leaving to the next screen's first answer
  double kilobytes;     // that arrived since, with that answer
};

Cost leave(const Service& service, bool isHTTP2, int fetches, bool usesScope) {
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
  const auto before = service.line(isHTTP2).delivered();
  scope.reset();
  for (const auto& page : abandoned) page.cancel();
  (void)context->fetchPage("next", {.noCache = true}).wait(60s).force();
  const std::chrono::duration<double, std::milli> waited = Clock::now() - begun;
  std::this_thread::sleep_for(usesScope ? 300ms : 1500ms);  // what comes late counts, too
  return {waited.count(), static_cast<double>(service.line(isHTTP2).delivered() - before) / 1e3};
}

void measure(const Service& service, bool isHTTP2, int fetches) {
  std::vector<double> waits, amounts;
  for (int round = 0; round < 7; ++round) {
    const auto cost = leave(service, isHTTP2, fetches, true);
    waits.push_back(cost.milliseconds);
    amounts.push_back(cost.kilobytes);
  }
  const auto futures = leave(service, isHTTP2, fetches, false);
  const auto report = [&](const char* what, const char* unit, double ours, double theirs) {
    print({.name = what + (" after leaving " + std::to_string(fetches)) + " fetches, " +
                   (isHTTP2 ? "HTTP/2" : "HTTP/1.1"),
           .unit = unit,
           .ours = ours,
           .peer = "futures cancelled",
           .theirs = theirs,
           .ratio = theirs > 0 ? ours / theirs : kNothing});
  };
  report("first answer", "ms", median(waits), futures.milliseconds);
  if (fetches > 0) report("received", "KB", median(amounts), futures.kilobytes);
}

}  // namespace

int main() {
  const Service service;
  for (const bool isHTTP2 : {false, true}) {
    for (const int fetches : {0, 10, 100}) measure(service, isHTTP2, fetches);
  }
}
