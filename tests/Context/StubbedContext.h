#pragma once

#include <OrvoAPI/OrvoAPI.h>
#include <OrvoAPI/Testing/ManualClock.h>
#include <OrvoAPI/Testing/ManualQueue.h>
#include <OrvoAPI/Testing/StubNetworkDataProvider.h>
#include <OrvoAPI/Testing/StubSessionProvider.h>
#include <tests/support/Document.h>
#include <tests/support/Outcome.h>
#include <tests/support/Test.h>

namespace orvo {

inline constexpr std::string_view kVideoBody =
    R"({"type": "video", "id": "v", "title": "T", "short_description": "S",
        "status": {"code": "live", "label": "L", "ttl": 60000}})";
inline constexpr std::string_view kPageBody = R"({"id": "p", "title": "Server"})";

inline URL url(std::string_view text) { return *URL::parse(text); }

inline std::string configurationBody(const std::string& streams = "https://hls.example/live?q=1") {
  return R"({
    "nav": {"channels": {"label": "Channels", "id": "c"}, "discover": {"label": "Discover", "id": "d"}},
    "colors": {}, "links": {"imprint": "l:1", "about": "l:2", "privacy": "l:3", "terms": "l:4",
                            "contact": "l:5", "feedback": "l:6"},
    "tv": {"label": "TV", "description": "On air", "icon": "i"},
    "upcoming_events": {"label": "Soon", "id": "playlists::soon"},
    "linear_stream_id": "stream", "recently_watched": true,
    "up_next_hint_time": 1, "player_controls_timeout": 1, "discovery_reset_timeout": 1,
    "relaunch_resume_timeout": 1, "countdown_visibility_timeout": 1, "started_minimum_percent": 1,
    "started_minimum_time": 1, "watched_minimum_percent": 1, "watched_minimum_time_left": 1,
    "share_string_template": "Watch %@", "search_top_results_limit": 6,
    "playback_interruption_delay": 1, "hls_base_url": ")" +
         streams + "\"}";
}

/// A context of the staging deployment.
inline std::shared_ptr<Context> makeContext(const URL& api, const std::string& configuration,
                                            std::shared_ptr<SessionProvider> session,
                                            std::shared_ptr<NetworkDataProvider> network,
                                            ContextOptions options = {}) {
  if (options.logger == nullptr) options.logger = std::make_shared<PrintingLogger>();
  return Context::make(
      ConfigurationParser::parse(object(configuration), Environment::staging).force(), api,
      url("https://img.example/"), std::move(session), std::move(network), std::move(options));
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
  std::shared_ptr<Context> context = makeContext(
      url("https://api.example/v3/"), configurationBody(), session, network, {.clock = clock});
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
