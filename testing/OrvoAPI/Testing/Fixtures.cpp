#include <OrvoAPI/Parsing/DateFormatter.h>
#include <OrvoAPI/Parsing/JSONDataParser.h>
#include <OrvoAPI/Testing/Fixtures.h>

#include <chrono>

namespace orvo::fixtures {
namespace {

constexpr std::chrono::hours kProgramLength{1};

JSONObject object(std::string_view document) {
  return JSONDataParser::object(Data(document)).force();
}

Date endOf(Date start, int programs) { return start + kProgramLength * programs; }

}  // namespace

const std::string_view kSession = R"({"token": "token"})";

const std::string_view kConfiguration = R"({
  "nav": {
    "discover": {"label": "Home", "id": "home"},
    "channels": {"label": "Channels", "id": "channels"}
  },
  "colors": {},
  "links": {
    "imprint": "https://orvo.example/imprint",
    "about": "https://orvo.example/about",
    "privacy": "https://orvo.example/privacy",
    "terms": "https://orvo.example/terms",
    "contact": "https://orvo.example/contact",
    "feedback": "https://orvo.example/feedback"
  },
  "tv": {"label": "TV", "description": "On air", "icon": "tv"},
  "upcoming_events": {"label": "Soon", "id": "events"},
  "hls_base_url": "https://streams.example/",
  "linear_stream_id": "channel",
  "recently_watched": true,
  "share_string_template": "Watch %@",
  "search_top_results_limit": 6,
  "up_next_hint_time": 10000,
  "player_controls_timeout": 5000,
  "discovery_reset_timeout": 60000,
  "relaunch_resume_timeout": 60000,
  "countdown_visibility_timeout": 60000,
  "started_minimum_percent": 5,
  "started_minimum_time": 60000,
  "watched_minimum_percent": 95,
  "watched_minimum_time_left": 60000,
  "playback_interruption_delay": 1000
})";

const std::string_view kPage = R"({
  "type": "page",
  "content_type": "generic",
  "id": "home",
  "title": "Home",
  "subheading": "What is new",
  "short_description": "Films and more.",
  "collections": [{"id": "films", "label": "Films"}],
  "resources": ["orvo_logo_landscape"],
  "status": {"code": "post", "label": "On demand", "ttl": 300000},
  "links": [{"type": "button", "id": "film", "label": "Watch", "action": "play"}]
})";

const std::string_view kVideo = R"({
  "type": "video",
  "content_type": "film",
  "id": "film",
  "title": "The Film",
  "subheading": "A film",
  "short_description": "Somebody makes a film.",
  "playable": true,
  "duration": 5400000,
  "collections": [{"id": "films", "label": "Films"}],
  "deeplink_playlist": "films",
  "share_url": "https://orvo.example/watch/film",
  "resources": ["orvo_logo_landscape"],
  "status": {"code": "post", "label": "On demand", "ttl": 300000},
  "links": [{"type": "button", "id": "film", "label": "Play", "action": "play"}]
})";

std::string guideDocument(Date start, int programs) {
  const auto format = iso8601Formatter();
  const auto count = std::to_string(programs);
  std::string items;
  for (int i = 1; i <= programs; ++i) {
    const auto number = std::to_string(i);
    items += (i > 1 ? R"(, {"id": "programme-)" : R"({"id": "programme-)") + number +
             R"(", "title": "Programme )" + number + R"(", "playable": true, "start_time": ")" +
             format.string(endOf(start, i - 1)) + R"(", "end_time": ")" +
             format.string(endOf(start, i)) + R"("})";
  }
  return R"({"meta": {"total": )" + count + R"(, "limit": )" + count +
         R"(, "offset": 0}, "items": [)" + items + "]}";
}

Configuration configuration(Environment environment) {
  return ConfigurationParser::parse(object(kConfiguration), environment).force();
}

Page page() { return PageParser::parse(object(kPage)).force(); }

Video video() { return VideoParser::parse(object(kVideo)).force(); }

LinearProgramGuide guide(Date start, int programs) {
  return LinearProgramGuideParser::parse(object(guideDocument(start, programs)), start,
                                         endOf(start, programs))
      .force();
}

}  // namespace orvo::fixtures
