// Fetches a film and says of each request where most of its time went.
// Usage: slowest-phase API_URL RESOURCES_URL, as `orvo serve-demo` prints them.
#include <OrvoAPI/OrvoAPI.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>

namespace {

void show(const orvo::RequestReport& report) {
  const auto slowest = std::max_element(report.phases.begin(), report.phases.end());
  const auto phase = static_cast<orvo::RequestPhase>(slowest - report.phases.begin());
  std::fprintf(
      stderr, "%s %s: %d (%s), %lld of %lld ns: %s\n", std::string(report.operation).c_str(),
      report.identifier.c_str(), report.status, std::string(orvo::caseName(report.source)).c_str(),
      static_cast<long long>(slowest->count()), static_cast<long long>(report.total.count()),
      std::string(orvo::caseName(phase)).c_str());
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 3) return 2;
  const auto film =
      orvo::ContextService::context(*orvo::URL::parse(arguments[1]),
                                    *orvo::URL::parse(arguments[2]), orvo::Client::appleTV,
                                    {.context = {.onReport = show, .logsRequests = true}})
          .flatMap([](const auto& context) { return context->fetchVideo("film-long-thaw"); });
  try {
    const auto video = film.wait(std::chrono::minutes(1)).force();
    std::printf("%s\n", video->title.c_str());
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}
