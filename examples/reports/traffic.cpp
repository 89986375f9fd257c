// Fetches a film and says how much that took from the network.
// Usage: traffic API_URL RESOURCES_URL, as `orvo serve-demo` prints them.
#include <OrvoAPI/OrvoAPI.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <exception>
#include <memory>
#include <utility>

namespace {

struct Traffic {
  std::atomic<int> requests = 0;
  std::atomic<std::size_t> bytes = 0;
};

class Meter final : public orvo::NetworkDataProvider {
 public:
  Meter(std::shared_ptr<orvo::NetworkDataProvider> network, std::shared_ptr<Traffic> traffic)
      : network_(std::move(network)), traffic_(std::move(traffic)) {}

  orvo::Future<orvo::HTTPResult> fetch(const orvo::URLRequest& request) override {
    ++traffic_->requests;
    return network_->fetch(request).onSuccess(
        [traffic = traffic_](const auto& answer) { traffic->bytes += answer.body.size(); });
  }

 private:
  const std::shared_ptr<orvo::NetworkDataProvider> network_;
  const std::shared_ptr<Traffic> traffic_;
};

}  // namespace

int main(int count, char** arguments) {
  if (count != 3) return 2;
  const auto traffic = std::make_shared<Traffic>();
  const orvo::BootstrapOptions options{
      .wrapNetwork = [traffic](std::shared_ptr<orvo::NetworkDataProvider> network) {
        return std::make_shared<Meter>(std::move(network), traffic);
      }};
  const auto film =
      orvo::ContextService::context(*orvo::URL::parse(arguments[1]),
                                    *orvo::URL::parse(arguments[2]), orvo::Client::appleTV, options)
          .flatMap([](const auto& context) { return context->fetchVideo("film-long-thaw"); });
  try {
    (void)film.wait(std::chrono::minutes(1)).force();
    std::printf("%d requests, %zu bytes\n", traffic->requests.load(), traffic->bytes.load());
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}
