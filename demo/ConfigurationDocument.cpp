#include <demo/Documents.h>

namespace orvo::demo {

namespace {

Json systemView(std::string_view id, std::string_view label) {
  return Json::object({{"id", id}, {"label", label}});
}

Json colors() {
  const auto color = [](std::string_view hex, std::string_view transform) {
    return Json::object({{"hex", hex}, {"transform", transform}});
  };
  return Json::object({{"pure_white", color("#FFFFFF", "br_100")},
                       {"pure_black", color("#000000", "rd_-100,gr_-100,bl_-100")},
                       {"ov_white", color("#EDEAE4", "br_82")},
                       {"ov_black", color("#10151C", "br_-85")},
                       {"ov_red", color("#C8402F", "rd_57,gr_-50,bl_-63")},
                       {"ov_yellow", color("#F2C230", "rd_90,gr_52,bl_-62")},
                       {"ov_orange", color("#E88424", "rd_82,gr_4,bl_-72")},
                       {"ov_grey_100", color("#22272E", "br_-70")},
                       {"ov_grey_150", color("#343A42", "br_-56")},
                       {"ov_grey_200", color("#666D76", "br_-16")},
                       {"ov_grey_300", color("#949AA3", "br_20")}});
  // "ov_grey_350" is left to the clients' own fallback.
}

Json infoLinks() {
  const auto page = [](const std::string& name) { return "https://orvo.example/" + name; };
  return Json::object({{"imprint", page("imprint")},
                       {"about", page("about")},
                       {"privacy", page("privacy")},
                       {"terms", page("terms")},
                       {"contact", page("contact")},
                       {"feedback", page("feedback")}});
}

void setConstants(Json& document) {
  document.set("up_next_hint_time", 8000);
  document.set("player_controls_timeout", 4500);
  document.set("discovery_reset_timeout", 900'000);
  document.set("relaunch_resume_timeout", 1'800'000);
  document.set("countdown_visibility_timeout", 3'600'000);
  document.set("recently_watched", true);
  document.set("started_minimum_percent", 0.02);
  document.set("started_minimum_time", 30'000);
  document.set("watched_minimum_percent", 0.95);
  document.set("watched_minimum_time_left", 60'000);
  document.set("share_string_template", "Watch “{title}” on Orvo: {url}");
  document.set("search_top_results_limit", 5);
  document.set("playback_interruption_delay", 2500);
}

}  // namespace

Json Documents::configuration() const {
  Json document = Json::object(
      {{"nav", Json::object({{"discover", systemView("view-discover", "Discover")},
                             {"calendar", systemView("view-calendar", "Calendar")},
                             {"channels", systemView("view-channels", "Channels")},
                             {"labs", systemView("view-labs", "Labs")}})},
       {"app_update", Json::object({{"min_build", "1.4.0"}, {"message", "Please update Orvo."}})},
       {"device_update",
        Json::object({{"min_os_version", "10.2"}, {"message", "Please update your device."}})},
       {"end_of_life", Json::object({{"kill", false}, {"message", ""}})},
       {"colors", colors()},
       {"links", infoLinks()},
       {"user_rating_prompt", Json::object({{"session_interval", 5},
                                            {"long_session", 1800},
                                            {"enable", true},
                                            {"repeat_delay", 30}})},
       {"display_ads",
        Json::object(
            {{"url", addresses_.root + "ads"}, {"nw", "demo-network"}, {"prof", "demo-profile"}})},
       {"hls_base_url", addresses_.streams()},
       {"linear_stream_id", "linear-one"},
       {"tv", Json::object({{"label", "Orvo One"},
                            {"description", "Always on: one programme after the other."},
                            {"icon", "channel-one"}})},
       {"upcoming_events",
        Json::object({{"label", "Upcoming Live Events"}, {"id", Catalogue::kUpcomingEvents}})}});
  setConstants(document);
  return document;
}

}  // namespace orvo::demo
