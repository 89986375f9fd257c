// The library's diagnostics and a line for each request, in the app's own log.
// Usage: own-logger API_URL RESOURCES_URL, as `orvo serve-demo` prints them.
#include <OrvoAPI/OrvoAPI.h>

#include <chrono>
#include <cstdio>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

namespace {

/// Is called from any thread, also from several at once.
class StandardError final : public orvo::Logger {
 public:
  void log(std::string_view message, orvo::LogLevel level, std::string_view subsystem,
           std::string_view category) override {
    std::string line(orvo::caseName(level));
    line.append(" ").append(subsystem).append("/").append(category).append(": ");
    line.append(message).append("\n");
    const std::lock_guard guard(mutex_);
    std::fputs(line.c_str(), stderr);
  }

 private:
  std::mutex mutex_;
};

}  // namespace

int main(int count, char** arguments) {
  const auto api = orvo::URL::parse(count == 3 ? arguments[1] : "");
  const auto resources = orvo::URL::parse(count == 3 ? arguments[2] : "");
  if (!api || !resources) return std::fputs("usage: own-logger API_URL RESOURCES_URL\n", stderr), 2;
  const orvo::BootstrapOptions options{
      .context = {.logger = std::make_shared<StandardError>(),
                  .onReport =
                      [](const orvo::RequestReport& report) {
                        const auto time =
                            std::chrono::duration_cast<std::chrono::milliseconds>(report.total);
                        std::printf("%s took %lld ms\n", std::string(report.operation).c_str(),
                                    static_cast<long long>(time.count()));
                      },
                  .logsRequests = true}};
  const auto film =
      orvo::ContextService::context(*api, *resources, orvo::Client::appleTV, options)
          .flatMap([](const auto& context) { return context->fetchVideo("film-long-thaw"); })
          .wait(std::chrono::minutes(1));
  if (film.failed()) return std::fprintf(stderr, "%s\n", film.error()->description().c_str()), 1;
  std::puts((*film.value())->title.c_str());
}
