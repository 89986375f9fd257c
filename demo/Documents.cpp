#include <demo/Documents.h>

#include <algorithm>
#include <array>
#include <utility>

namespace orvo::demo {

namespace {

constexpr std::size_t kTopResults = 5;

/// The part of a list that was asked for.
template <class T>
std::vector<T> window(const std::vector<T>& list, const Paging& paging) {
  const auto size = static_cast<std::int64_t>(list.size());
  const std::int64_t first = std::min(paging.offset, size);
  const std::int64_t last = first + std::min(paging.limit, size - first);
  return {list.begin() + first, list.begin() + last};
}

Json resources(const Product& product) {
  Json names = Json::array({"orvo_display_art_landscape", "orvo_display_art_square",
                            "orvo_cover_art_landscape", "orvo_cover_art_portrait",
                            "orvo_background_landscape"});
  if (product.sort == Product::Sort::page) {
    names.push("orvo_title_treatment_landscape");
    names.push("orvo_logo_landscape");
  } else {
    names.push("short_preview_mp4_low");
    names.push("short_preview_mp4_high");
  }
  // Clients have to live with renditions that they do not know yet.
  names.push("orvo_hologram_cube");
  return names;
}

std::string_view label(std::string_view code) {
  static constexpr std::array<std::pair<std::string_view, std::string_view>, 8> kLabels{{
      {"post", "Watch again"},
      {"unconfirmed", "Not yet confirmed"},
      {"pre", "Coming up"},
      {"trim", "Being edited"},
      {"delayed", "Delayed"},
      {"canceled", "Canceled"},
      {"live", "Live now"},
      {"unknown", "To be announced"},
  }};
  return std::find_if(kLabels.begin(), kLabels.end(),
                      [&](const auto& entry) { return entry.first == code; })
      ->second;
}

bool isOfResultsKind(const Product& product, std::string_view kind) {
  const bool video = product.sort == Product::Sort::video;
  if (kind == "videos") return video;
  if (kind == "pages") return !video;
  if (kind == "films") return product.kind == "film";
  if (kind == "shows") return product.kind == "show";
  if (kind == "channels") return product.kind == "channel" || product.kind == "subchannel";
  return product.kind == "event" || product.kind == "stop" || product.kind == "live_program";
}

struct ResultsKind {
  std::string_view name, label, contains;
};
constexpr std::array<ResultsKind, 7> kResultsKinds{{
    {"top_results", "Top Results", "mixed"},
    {"shows", "Shows", "pages"},
    {"films", "Films", "mixed"},
    {"channels", "Channels", "pages"},
    {"events", "Events", "mixed"},
    {"videos", "Videos", "videos"},
    {"pages", "Pages", "pages"},
}};

}  // namespace

std::string Addresses::lineup(std::string_view name) const {
  return (root + "lineups/").append(name).append(".json");
}

Json pagingSummary(std::size_t total, const Paging& paging) {
  return Json::object({{"total", total}, {"limit", paging.limit}, {"offset", paging.offset}});
}

Documents::Documents(const Catalogue& catalogue, Addresses addresses)
    : catalogue_(catalogue), addresses_(std::move(addresses)) {}

std::optional<Json> Documents::product(std::string_view id, Instant now) const {
  const Product* found = catalogue_.product(id);
  if (found == nullptr) return std::nullopt;
  return product(*found, now);
}

Json Documents::product(const Product& product, Instant now) const {
  const bool video = product.sort == Product::Sort::video;
  Json json = Json::object({{"type", video ? "video" : "page"},
                            {"content_type", product.kind},
                            {"id", product.id},
                            {"title", product.title},
                            {"share_url", "https://orvo.example/watch/" + product.id},
                            {"collections", shelves(product)},
                            {"resources", resources(product)},
                            {"status", status(product, now)},
                            {"links", links(product)}});
  if (!product.subheading.empty()) json.set("subheading", product.subheading);
  if (video || !product.description.empty()) json.set("short_description", product.description);
  if (!product.lineup.empty()) {
    const std::string url = addresses_.lineup(product.lineup == "grid" ? "grid" : "list");
    json.set("lineup", Json::object({{"url", url}, {"display_type", product.lineup}}));
  }
  if (video) {
    const bool canceled = product.code == "canceled";
    json.set("playable", !canceled && product.hoursFromNow.value_or(0) <= 0);
    if (product.durationMilliseconds > 0) json.set("duration", product.durationMilliseconds);
    if (!product.shelves.empty()) json.set("deeplink_playlist", product.shelves.front());
    if (!product.nextPlaylist.empty()) json.set("next_playlist", product.nextPlaylist);
  } else {
    json.set("long_description", "Made up for the demo service, like everything here.");
    if (product.kind == "generic") json.set("icon", "orvo-logo");
  }
  return json;
}

Json Documents::shelves(const Product& product) const {
  return Json::list(product.shelves, [&](const std::string& id) {
    return Json::object({{"id", id}, {"label", catalogue_.shelf(id)->label}});
  });
}

Json Documents::status(const Product& product, Instant now) const {
  std::string_view code = product.code.empty() ? "post" : std::string_view(product.code);
  if (!product.hoursFromNow) {
    return Json::object({{"code", code}, {"label", "On demand"}, {"ttl", 300'000}});
  }
  const Instant start =
      std::chrono::floor<std::chrono::hours>(now) + std::chrono::hours(*product.hoursFromNow);
  const Instant end = start + std::chrono::seconds(product.durationMilliseconds > 0
                                                       ? product.durationMilliseconds / 1000
                                                       : 4 * 3600);
  if (product.code.empty()) code = now < start ? "pre" : now < end ? "live" : "post";
  Json json = Json::object({{"code", code},
                            {"label", label(code)},
                            {"ttl", 60'000},
                            {"start_time", withMilliseconds(start)},
                            // Without milliseconds: both forms are in use.
                            {"end_time", withNumericZone(end)}});
  if (code == "canceled") json.set("message", "We are sorry. It will be held again in spring.");
  return json;
}

Json Documents::links(const Product& product) const {
  const auto button = [](std::string_view id, std::string_view text, std::string_view action) {
    return Json::object({{"type", "button"}, {"id", id}, {"label", text}, {"action", action}});
  };
  Json list = Json::array();
  if (product.sort == Product::Sort::video) {
    Json play = button(product.id, "Play", "play");
    play.set("icon", "play");
    list.push(std::move(play));
    if (!product.shelves.empty())
      list.push(button(product.shelves.front(), "Play all", "playlist"));
    return list;
  }
  if (!product.plays.empty()) list.push(button(product.plays, "Watch", "play"));
  if (product.kind == "channel") list.push(button(product.id, "On air", "tv"));
  for (const std::string& id : product.siblings) {
    const Product* sibling = catalogue_.product(id);
    list.push(Json::object({{"type", "sibling"}, {"id", id}, {"label", sibling->title}}));
    list.push(button(id, "Go to " + sibling->title, "view"));
  }
  return list;
}

std::optional<Json> Documents::collection(std::string_view id, const Paging& paging,
                                          Instant now) const {
  const Shelf* shelf = catalogue_.shelf(id);
  if (shelf == nullptr) return std::nullopt;
  const auto items = window(shelf->items, paging);
  return Json::object(
      {{"id", shelf->id},
       {"type", shelf->kind},
       {"item_type", shelf->contents},
       {"label", shelf->label},
       {"short_label", shelf->shortLabel},
       {"meta", pagingSummary(shelf->items.size(), paging)},
       {"items", Json::list(items, [&](const Product* item) { return product(*item, now); })}});
}

std::optional<Json> Documents::playlist(std::string_view id, std::string_view including,
                                        Paging paging, Instant now) const {
  const Shelf* shelf = catalogue_.shelf(id);
  if (shelf == nullptr) return std::nullopt;
  std::vector<const Product*> videos;
  for (const Product* item : shelf->items) {
    if (item->sort == Product::Sort::video) videos.push_back(item);
    if (item->id == including) {
      paging.limit = std::max(paging.limit, static_cast<std::int64_t>(videos.size()));
    }
  }
  const auto items = window(videos, paging);
  return Json::object(
      {{"id", shelf->id},
       {"label", shelf->label},
       {"short_label", shelf->shortLabel},
       {"meta", pagingSummary(videos.size(), paging)},
       {"items", Json::list(items, [&](const Product* item) { return product(*item, now); })}});
}

Json Documents::searchResults(std::string_view query, std::string_view kind, const Paging& paging,
                              Instant now) const {
  const std::vector<const Product*> found = catalogue_.search(query);
  Json collections = Json::array();
  for (const ResultsKind& results : kResultsKinds) {
    if (!kind.empty() && kind != results.name) continue;
    std::vector<const Product*> matching;
    for (const Product* product : found) {
      const bool top = results.name == "top_results";
      if (top ? matching.size() < kTopResults : isOfResultsKind(*product, results.name)) {
        matching.push_back(product);
      }
    }
    if (matching.empty()) continue;
    collections.push(
        Json::object({{"type", "generic"},
                      {"collection_type", results.name},
                      {"contains", results.contains},
                      {"label", results.label},
                      {"short_label", results.label},
                      {"meta", pagingSummary(matching.size(), paging)},
                      {"items", Json::list(window(matching, paging), [&](const Product* item) {
                         return product(*item, now);
                       })}}));
  }
  return Json::object({{"collections", std::move(collections)}});
}

Json Documents::suggestions(std::string_view query) const {
  constexpr std::size_t kMost = 8;
  Json titles = Json::array();
  const auto found = catalogue_.search(query);
  for (std::size_t index = 0; index < std::min(found.size(), kMost); ++index) {
    titles.push(found[index]->title);
  }
  return titles;
}

Json Documents::adMetadata(std::string_view videoID) const {
  const auto beacon = [&](std::string_view name, double time) {
    const std::string url = (addresses_.root + "beacons/").append(videoID).append("/").append(name);
    return Json::object({{"name", name}, {"time", time}, {"url", url}});
  };
  const auto segment = [](bool ad, double start, double duration) {
    return Json::object({{"ad", ad}, {"start", start}, {"duration", duration}});
  };
  return Json::object(
      {{"events", Json::array({beacon("impression", 0), beacon("firstQuartile", 3.75),
                               beacon("midpoint", 7.5), beacon("complete", 15)})},
       {"segments", Json::array({segment(true, 0, 15), segment(false, 15, 600),
                                 segment(true, 615, 29.5), segment(false, 644.5, 600)})}});
}

}  // namespace orvo::demo
