// Fetches from an nginx over HTTP/1.1, with TLS and over HTTP/2, 50 in flight: from the cache,
// redirected, refused once, missing, cancelled:
//
//     reports FETCHES [SEED]
//
// Each is reported once, with what came of it; the phases of a report add up to its total, which is
// the time that the caller has measured.

#include <OrvoAPI/Context/ContextService.h>
#include <OrvoAPI/Context/RequestReport.h>
#include <soak/Requests.h>
#include <support/Nginx.h>

#include <memory>
#include <optional>

namespace orvo::soak {
namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

constexpr std::size_t kLargeBody = 60'000;

constexpr const char* kLocations = R"(
  default_type application/json; root .;
  location = /v3/session { return 200 '{"token": "secret-token"}'; }
  location = /v3/configuration/ios/v1 { try_files /configuration.json =500; }
  location = /v3/products/page { return 200 '{"id": "page", "title": "T"}'; }
  location = /v3/products/large { try_files /large.json =500; }
  location = /v3/products/moved { return 302 /v3/products/page; }
  location = /v3/products/flaky {
    if ($request_id ~ "^[0-7]") { return 401; }
    return 200 '{"id": "page", "title": "T"}';
  })";

struct Fetch {
  Clock::time_point called, answered = {};
  std::optional<RequestReport> report = std::nullopt;
  unsigned reports = 0;
};

bool isCancelled(const RequestReport& report) {
  const auto* const error = report.error ? report.error->as<URLError>() : nullptr;
  return error != nullptr && error->code == URLError::cancelled;
}

/// Makes the fetches and holds each against its report.
class Client {
 public:
  Client(std::uint64_t fetches, std::uint64_t seed) : random_(seed), fetches_(fetches) {}

  void start(const std::string& base, const std::string& authority) {
    const auto api = *URL::parse(base + "/v3");
    const ContextOptions options{.onReport = [this](const auto& report) { see(report); }};
    contexts_.push_back(ContextService::context(api, api, orvo::Client::iPad,
                                                {.session = {.certificateAuthorityFile = authority},
                                                 .context = options})
                            .wait(30s)
                            .force());
  }
  /// Whether all were reported, and rightly.
  bool make();

 private:
  void begin(std::size_t number);
  void see(const RequestReport& report);
  bool verify(const Fetch& fetch);

  std::mt19937_64 random_;
  std::vector<std::shared_ptr<Context>> contexts_;
  Future<Shared<Page>> earlier_;  // to be cancelled when another has begun
  std::mutex lock_;
  std::condition_variable changed_;
  // Guarded by the lock:
  std::vector<Fetch> fetches_;
  std::size_t inFlight_ = 0;
  std::map<std::string, std::uint64_t> tally_;
  std::vector<std::int64_t> differences_;  // in microseconds, of the caller's time and the report's
};

void Client::begin(std::size_t number) {
  constexpr const char* kKinds[] = {"page", "page", "large", "moved", "flaky", "missing"};
  const auto id =
      std::string(kKinds[random_() % std::size(kKinds)]) + "?n=" + std::to_string(number);
  const auto& context = *contexts_[random_() % contexts_.size()];
  const bool loses = random_() % 20 == 0;
  auto& fetch = fetches_[number];  // stays where it is
  fetch.called = Clock::now();
  const auto future = context.fetchPage(id);
  const auto answer = [this, &fetch](const auto&) {
    const auto now = Clock::now();
    const std::lock_guard guard(lock_);
    fetch.answered = now;
    changed_.notify_one();
  };
  future.onComplete(answer);
  if (loses) (random_() % 2 == 0 ? future : std::exchange(earlier_, future)).cancel();
}

void Client::see(const RequestReport& report) {
  const std::lock_guard guard(lock_);
  ++tally_[std::string(report.operation)];
  const auto number = report.identifier.find("?n=");
  if (number == std::string::npos) return;
  auto& fetch = fetches_.at(std::stoul(report.identifier.substr(number + 3)));
  if (++fetch.reports == 1) fetch.report = report;
  --inFlight_;
  changed_.notify_one();
}

bool fault(const char* what, const Fetch& fetch) {
  std::fprintf(stderr, "%s, %u reports", what, fetch.reports);
  if (fetch.report) {
    std::fprintf(stderr, ": %s %d", fetch.report->identifier.c_str(), fetch.report->status);
    for (const auto phase : fetch.report->phases) {
      std::fprintf(stderr, " %lld", static_cast<long long>(phase.count()));
    }
  }
  std::fputs("\n", stderr);
  return false;
}

bool Client::verify(const Fetch& fetch) {
  if (fetch.reports != 1) return fault("not reported once", fetch);
  const auto& report = *fetch.report;
  ++tally_[std::string("from ").append(caseName(report.source)) +
           (report.protocol.empty() ? "" : ", HTTP/") + std::string(report.protocol)];
  tally_["reused"] += report.isConnectionReused;
  tally_["redirects"] += report.redirects.size();
  tally_["retries"] += report.retries;
  tally_["cancelled"] += isCancelled(report);
  tally_["waited for a connection"] += report.time(RequestPhase::queue) > 100us;
  auto sum = 0ns;
  for (const auto phase : report.phases) {
    if (phase < 0us) return fault("a phase runs backwards", fetch);
    sum += phase;
  }
  if (std::chrono::abs(sum - report.total) > 1ms) return fault("the phases do not add up", fetch);
  if (report.begun < fetch.called) return fault("begun before it was called", fetch);
  if (isCancelled(report)) return true;
  if (fetch.answered < report.begun + report.total) return fault("ended after its answer", fetch);
  const std::string_view id = report.identifier;
  if (report.source == RequestReport::Source::network &&
      (report.redirects.size() != id.starts_with("moved") ||
       (report.status == 404) != id.starts_with("missing") ||
       (report.retries > 0 && !id.starts_with("flaky")) ||
       (id.starts_with("large") && report.bytesDecoded < kLargeBody))) {
    return fault("tells another story", fetch);
  }
  const auto outside = (fetch.answered - fetch.called) - report.total;
  differences_.push_back(std::chrono::duration_cast<std::chrono::microseconds>(outside).count());
  return true;
}

bool Client::make() {
  std::unique_lock guard(lock_);
  for (std::size_t number = 0; number < fetches_.size(); ++number) {
    if (!changed_.wait_for(guard, 60s, [&] { return inFlight_ < kInFlight; })) return false;
    ++inFlight_;
    guard.unlock();
    begin(number);
    guard.lock();
  }
  const auto isOver = [&] {
    return std::all_of(fetches_.begin(), fetches_.end(), [](const Fetch& fetch) {
      return fetch.report && (isCancelled(*fetch.report) || fetch.answered != Clock::time_point());
    });
  };
  if (!changed_.wait_for(guard, 60s, isOver)) std::fputs("some do not end\n", stderr);
  bool good = true;
  for (const auto& fetch : fetches_) good = verify(fetch) && good;
  for (const auto& [what, count] : tally_) {
    std::printf("%-24s %10llu\n", what.c_str(), static_cast<unsigned long long>(count));
  }
  std::sort(differences_.begin(), differences_.end());
  std::printf("%-24s %10lld us in the middle, %lld in 99 of 100\n", "until the callback",
              static_cast<long long>(differences_.at(differences_.size() / 2)),
              static_cast<long long>(differences_.at(differences_.size() * 99 / 100)));
  return good;
}

std::string fileText(const std::string& path) {
  std::ifstream stream(path);
  return {std::istreambuf_iterator<char>(stream), {}};
}

int run(std::uint64_t fetches, std::uint64_t seed) {
  test::Nginx nginx(kLocations);
  std::ofstream(nginx.folder() + "/configuration.json")
      << fileText(ORVO_FIXTURES "/context-configuration.json");
  std::ofstream(nginx.folder() + "/large.json")
      << R"({"id": "p", "title": ")" << std::string(kLargeBody, 'x') << R"("})";
  static Client client(fetches, seed);  // reports may come as long as the process lives
  const auto at = [](const char* scheme, int port) {
    return std::string(scheme) + "://127.0.0.1:" + std::to_string(port);
  };
  client.start(at("http", nginx.port), nginx.certificateFile());
  client.start(at("https", nginx.tlsPort), nginx.certificateFile());
  client.start(at("https", nginx.http2Port), nginx.certificateFile());
  return client.make() ? 0 : 1;
}

}  // namespace
}  // namespace orvo::soak

int main(int argc, char** argv) {
  using orvo::soak::argument;
  return orvo::soak::run(argument(argc, argv, 1, 10'000), argument(argc, argv, 2, 1));
}
