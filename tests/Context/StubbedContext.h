#pragma once

#include <OrvoAPI/OrvoAPI.h>
#include <OrvoAPI/Testing/ManualClock.h>
#include <OrvoAPI/Testing/ManualQueue.h>
#include <OrvoAPI/Testing/StubNetworkDataProvider.h>
#include <OrvoAPI/Testing/StubSessionProvider.h>
#include <tests/support/Document.h>
#include <tests/support/Outcome.h>
#include <tests/support/Test.h>

#include <fstream>
#include <iterator>

namespace orvo {

inline constexpr std::string_view kVideoBody =
    R"({"type": "video", "id": "v", "title": "T", "short_description": "S",
        "status": {"code": "live", "label": "L", "ttl": 60000}})";
inline constexpr std::string_view kPageBody = R"({"id": "p", "title": "Server"})";

inline URL url(std::string_view text) { return *URL::parse(text); }

inline std::string configurationBody() {
  std::ifstream stream(ORVO_FIXTURES "/context-configuration.json");
  return {std::istreambuf_iterator<char>(stream), {}};
}

/// A context of the staging deployment.
inline std::shared_ptr<Context> makeContext(std::shared_ptr<SessionProvider> session,
                                            std::shared_ptr<NetworkDataProvider> network,
                                            ContextOptions options = {}) {
  if (options.logger == nullptr) options.logger = std::make_shared<PrintingLogger>();
  return Context::make(
      ConfigurationParser::parse(object(configurationBody()), Environment::staging).force(),
      url("https://api.example/v3/"), url("https://img.example/"), std::move(session),
      std::move(network), std::move(options));
}

/// A context whose network, session, clock and queue the test controls.
struct StubbedContext {
  std::shared_ptr<ManualQueue> queue = std::make_shared<ManualQueue>();
  /// Where the stubs' futures run their callbacks.
  std::shared_ptr<DispatchQueue> callbackQueue = queue;
  std::shared_ptr<ManualClock> clock = std::make_shared<ManualClock>();
  std::shared_ptr<StubNetworkDataProvider> network =
      std::make_shared<StubNetworkDataProvider>(callbackQueue);
  std::shared_ptr<StubSessionProvider> session =
      std::make_shared<StubSessionProvider>(kToken, callbackQueue);
  std::shared_ptr<Context> context = makeContext(session, network, {.clock = clock});
  std::size_t answered = 0;

  /// Answers the next request that has not been answered yet.
  void answer(int status, std::string_view body = {}) {
    queue->run();
    network->answer(answered++, status, body);
    queue->run();
  }
  [[nodiscard]] std::size_t requests() {
    queue->run();
    return network->fetches.count();
  }
  /// What the newest request asks its host for, without the API's "/v3/".
  [[nodiscard]] std::string requested() {
    const auto text = network->request(requests() - 1).url.text();
    return text.substr(text.find(".example/") + (text.find("/v3/") == std::string::npos ? 9 : 12));
  }
};

}  // namespace orvo
