#include <benchmarks/support/Documents.h>
#include <demo/Json.h>
#include <demo/Times.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <utility>

namespace orvo::benchmarks {

namespace {

using demo::Instant;
using demo::Json;
using std::chrono::minutes;

constexpr std::array<std::string_view, 32> kWords{
    "the",     "ridge", "a night",   "of",     "winter",    "first",  "descent",    "with",
    "riders",  "into",  "Patagonia", "story",  "behind",    "island", "glacier",    "and",
    "against", "storm", "champion",  "across", "Zürich",    "live",   "highlights", "from",
    "Łódź",    "wave",  "\"North\"", "crew",   "returning", "home",   "über",       "東京"};

/// Words of no meaning: the same for the same number.
std::string words(std::size_t number, std::size_t count) {
  std::uint64_t state = number * 2654435761U + count;
  std::string text;
  for (; count > 0; --count) {
    state = state * 6364136223846793005U + 1442695040888963407U;
    if (!text.empty()) text += ' ';
    text += kWords[state >> 59];
  }
  return text;
}

std::string identifier(std::string_view prefix, std::size_t number) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::uint64_t state = number + 1;
  std::string text(prefix);
  text += '-';
  for (int digit = 0; digit < 16; ++digit) {
    state = state * 6364136223846793005U + 1442695040888963407U;
    text += kDigits[state >> 60];
  }
  return text;
}

Instant hour(std::size_t number) {
  return Instant(std::chrono::seconds(1'493'596'800)) + minutes(60 * number);
}

Json resources(bool video) {
  Json names = Json::array({"orvo_display_art_banner", "orvo_display_art_landscape",
                            "orvo_display_art_portrait", "orvo_display_art_square",
                            "orvo_cover_art_landscape", "orvo_background_landscape",
                            "orvo_title_treatment_landscape", "orvo_hologram_cube"});
  if (!video) return names;
  names.push("short_preview_mp4_low");
  names.push("short_preview_mp4_medium");
  names.push("short_preview_mp4_high");
  return names;
}

Json named(std::string_view prefix, std::size_t number) {
  return Json::object({{"id", identifier(prefix, number)}, {"label", words(number, 3)}});
}

Json link(std::string_view type, std::string_view action, std::size_t number) {
  Json json = Json::object({{"type", type},
                            {"id", identifier("AP", number)},
                            {"label", words(number, 2)},
                            {"action", action}});
  if (number % 2 == 0) json.set("icon", action);
  return json;
}

Json status(std::size_t number) {
  constexpr std::array<std::string_view, 4> kCodes{"post", "live", "pre", "canceled"};
  Json json = Json::object({{"code", kCodes[number % 4]},
                            {"label", words(number, 2)},
                            {"ttl", 300'000},
                            {"start_time", demo::withMilliseconds(hour(number))},
                            {"end_time", demo::withNumericZone(hour(number + 2))}});
  if (number % 4 == 3) json.set("message", words(number, 9));
  return json;
}

Json lineupOf(std::size_t number) {
  return Json::object({{"url", "https://lineups.orvo.example/" + identifier("l", number) + ".json"},
                       {"display_type", number % 2 == 0 ? "grid" : "lineup"}});
}

void setCommon(Json& json, std::size_t number) {
  json.set("id", identifier("AP", number));
  json.set("title", words(number, 4));
  json.set("subheading", words(number + 1, 3));
  json.set("short_description", words(number + 2, 30));
  json.set("share_url", "https://www.orvo.example/watch/" + identifier("AP", number) + "?s=app");
  Json collections = Json::array();
  for (std::size_t other = 0; other <= number % 3; ++other) {
    collections.push(named("playlists::", number + other));
  }
  json.set("collections", std::move(collections));
  json.set("status", status(number));
}

Json video(std::size_t number) {
  constexpr std::array<std::string_view, 4> kKinds{"episode", "clip", "film", "live_program"};
  Json json = Json::object({{"type", "video"}, {"content_type", kKinds[number % 4]}});
  setCommon(json, number);
  json.set("duration", 1'000 * (600 + number % 3000));
  json.set("playable", number % 4 != 3);
  json.set("resources", resources(true));
  json.set("deeplink_playlist", identifier("playlists::", number));
  json.set("next_playlist", identifier("playlists::", number + 1));
  Json links = Json::array({link("button", "play", number)});
  if (number % 2 == 1) links.push(link("button", "view", number + 1));
  json.set("links", std::move(links));
  if (number % 8 == 2) json.set("lineup", lineupOf(number));
  return json;
}

Json page(std::size_t number) {
  constexpr std::array<std::string_view, 4> kKinds{"show", "event", "channel", "year"};
  Json json = Json::object({{"type", "page"}, {"content_type", kKinds[number % 4]}});
  setCommon(json, number);
  json.set("long_description", words(number + 3, 60));
  json.set("icon", identifier("icon", number));
  json.set("resources", resources(false));
  json.set("links", Json::array({link("button", "tv", number), link("sibling", "view", number),
                                 link("sibling", "view", number + 1)}));
  json.set("lineup", lineupOf(number));
  return json;
}

Json paging(std::size_t count) {
  return Json::object({{"total", 10 * count}, {"limit", count}, {"offset", 0}});
}

Json program(std::size_t number) {
  return Json::object({{"id", identifier("program", number)},
                       {"title", words(number, 4)},
                       {"subheading", words(number + 1, 3)},
                       {"short_description", words(number + 2, 30)},
                       {"playable", number % 3 == 0},
                       {"resources", resources(false)},
                       {"start_time", demo::withNumericZone(hour(number))},
                       {"end_time", demo::withNumericZone(hour(number + 1))},
                       {"duration", 3600}});
}

Json slot(std::size_t number) {
  const auto artwork = [&](std::string_view key) {
    return Json::object({{"template", "https://resources.orvo.example/lineup/{c_transform}/" +
                                          identifier("AP", number) + "/" + std::string(key)}});
  };
  const std::size_t channel = number % 7;
  const Instant start = hour(0) + minutes(15 * (number / 7));
  return Json::object(
      {{"start", demo::withMilliseconds(start)},
       {"end", demo::withMilliseconds(start + minutes(15))},
       {"title", words(number, 4)},
       {"channel", Json::object({{"id", identifier("channel", channel)},
                                 {"name", words(channel, 2)},
                                 {"order", channel}})},
       {"images", Json::object({{"orvo_display_art_landscape", artwork("landscape")},
                                {"icon", artwork("icon")}})}});
}

Json list(std::size_t count, Json (*element)(std::size_t)) {
  Json items = Json::array();
  for (std::size_t number = 0; number < count; ++number) items.push(element(number));
  return items;
}

}  // namespace

std::string videoDocument(std::size_t number) { return video(number).text(); }
std::string pageDocument(std::size_t number) { return page(number).text(); }

std::string collectionDocument(std::size_t items) {
  const auto item = [](std::size_t number) {
    return number % 3 == 2 ? page(number) : video(number);
  };
  return Json::object({{"id", identifier("collection", 0)},
                       {"type", "featured"},
                       {"item_type", "mixed"},
                       {"label", words(0, 3)},
                       {"short_label", words(0, 1)},
                       {"meta", paging(items)},
                       {"items", list(items, item)}})
      .text();
}

std::string guideDocument(std::size_t programs) {
  return Json::object({{"meta", paging(programs)}, {"items", list(programs, program)}}).text();
}

std::string lineupDocument(std::size_t slots) { return list(slots, slot).text(); }

std::string configurationDocument() {
  const auto color = [](std::string_view hex) {
    return Json::object({{"hex", hex}, {"transform", "rd_57,gr_-50,bl_-63"}});
  };
  const auto address = [](std::string_view name) {
    return "https://www.orvo.example/" + std::string(name);
  };
  const auto asked = [](std::string_view key) {
    return Json::object({{std::string(key), "1.4.0"}, {"message", words(4, 8)}});
  };
  return Json::object({{"nav", Json::object({{"discover", named("view", 1)},
                                             {"calendar", named("view", 2)},
                                             {"channels", named("view", 3)},
                                             {"labs", named("view", 4)}})},
                       {"app_update", asked("min_build")},
                       {"device_update", asked("min_os_version")},
                       {"end_of_life", Json::object({{"kill", false}, {"message", words(5, 6)}})},
                       {"colors", Json::object({{"pure_white", color("#FFFFFF")},
                                                {"pure_black", color("#000000")},
                                                {"ov_white", color("#EDEAE4")},
                                                {"ov_black", color("#10151C")},
                                                {"ov_red", color("#C8402F")},
                                                {"ov_yellow", color("#F2C230")},
                                                {"ov_orange", color("#E88424")},
                                                {"ov_grey_100", color("#22272E")},
                                                {"ov_grey_150", color("#343A42")},
                                                {"ov_grey_200", color("#666D76")},
                                                {"ov_grey_300", color("#949AA3")},
                                                {"ov_grey_350", color("#B3B3B3")}})},
                       {"links", Json::object({{"imprint", address("imprint")},
                                               {"about", address("about")},
                                               {"privacy", address("privacy")},
                                               {"terms", address("terms")},
                                               {"contact", address("contact?from=app")},
                                               {"feedback", address("feedback?from=app")}})},
                       {"user_rating_prompt", Json::object({{"session_interval", 5},
                                                            {"long_session", 1800},
                                                            {"enable", true},
                                                            {"repeat_delay", 30}})},
                       {"display_ads", Json::object({{"url", address("ads")},
                                                     {"nw", "network-1234"},
                                                     {"prof", "profile:tv"}})},
                       {"hls_base_url", "https://streams.orvo.example/v3/"},
                       {"linear_stream_id", identifier("linear", 0)},
                       {"tv", Json::object({{"label", words(6, 2)},
                                            {"description", words(7, 9)},
                                            {"icon", identifier("icon", 1)}})},
                       {"upcoming_events", named("playlists::", 1)},
                       {"up_next_hint_time", 8000},
                       {"player_controls_timeout", 4500},
                       {"discovery_reset_timeout", 900'000},
                       {"relaunch_resume_timeout", 1'800'000},
                       {"countdown_visibility_timeout", 3'600'000},
                       {"recently_watched", true},
                       {"started_minimum_percent", 0.02},
                       {"started_minimum_time", 30'000},
                       {"watched_minimum_percent", 0.95},
                       {"watched_minimum_time_left", 60'000},
                       {"share_string_template", "Watch “{title}” on Orvo: {url}"},
                       {"search_top_results_limit", 5},
                       {"playback_interruption_delay", 2500}})
      .text();
}

std::vector<NamedDocument> typicalDocuments() {
  using Kind = DocumentKind;
  std::vector<NamedDocument> documents{{"video", Kind::video, videoDocument(2)},
                                       {"page", Kind::page, pageDocument(2)}};
  for (const std::size_t count : {10U, 50U, 200U}) {
    documents.push_back(
        {"collection of " + std::to_string(count), Kind::collection, collectionDocument(count)});
  }
  for (const std::size_t count : {10U, 500U}) {
    documents.push_back({"guide of " + std::to_string(count), Kind::guide, guideDocument(count)});
  }
  for (const std::size_t count : {50U, 5000U}) {
    documents.push_back(
        {"lineup of " + std::to_string(count), Kind::lineup, lineupDocument(count)});
  }
  documents.push_back({"configuration", Kind::configuration, configurationDocument()});
  return documents;
}

}  // namespace orvo::benchmarks
