// Bodies to the same models through other libraries, as one would write it by hand with them: look
// the keys up, check their kinds, read dates, addresses and enumerations with the same operations.
// simdjson's is the one that the library itself is built on, with the same code for the processor.

#include <OrvoAPI/Configuration/Configuration.h>
#include <OrvoAPI/Linear/LinearProgramGuide.h>
#include <OrvoAPI/Linear/Lineup.h>
#include <OrvoAPI/Model/ItemCollection.h>
#include <OrvoAPI/Parsing/DateFormatter.h>
#include <benchmarks/support/Documents.h>
#include <benchmarks/support/Measure.h>
#include <benchmarks/support/OurDocuments.h>
#include <benchmarks/support/PeerFields.h>
#include <benchmarks/support/PeerLibraries.h>

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

using namespace orvo;
using namespace orvo::benchmarks;

namespace {

/// The models, in terms of what each library offers.
template <class Library>
struct Reader : PeerFields<Library> {
  using Value = typename Library::Value;
  using Fields = PeerFields<Library>;
  using Fields::as, Fields::text, Fields::string, Fields::number, Fields::object, Fields::yes,
      Fields::url, Fields::list;

  template <class Key>
  static KeySet<Key> keys(const Value& parent) {
    KeySet<Key> keys;
    const auto found = Library::member(parent, "resources");
    if (const auto array = Library::array(*found)) {
      for (const Value& element : *array) {
        const auto name = Library::text(element);
        const auto key = name ? fromRawValue<Key>(*name) : std::nullopt;
        if (key) keys.insert(*key);
      }
    }
    return keys;
  }
  static std::vector<CollectionReference> collections(const Value& parent) {
    return list(parent, "collections", [](const Value& entry) {
      const auto id = text(entry, "id"), label = text(entry, "label");
      return id && label ? std::optional(CollectionReference{std::string(*id), std::string(*label)})
                         : std::nullopt;
    });
  }
  static std::optional<LineupReference> lineupMeta(const Value& parent) {
    const auto lineup = object(parent, "lineup");
    if (!lineup) return std::nullopt;
    auto address = url(*lineup, "url");
    const auto kind = Fields::template raw<LineupDisplayKind>(*lineup, "display_type");
    if (!address || !kind) return std::nullopt;
    return LineupReference{.url = *std::move(address), .displayKind = *kind};
  }
  static Status status(const Value& parent) {
    const auto json = object(parent, "status");
    const auto code = json ? Fields::template raw<StatusCode>(*json, "code") : std::nullopt;
    const auto label = code ? text(*json, "label") : std::nullopt;
    if (!label) return {};
    const auto time = [&](std::string_view key) {
      const auto found = text(*json, key);
      return found ? resourceTime(*found) : std::nullopt;
    };
    return {.code = *code,
            .label = std::string(*label),
            .ttl = number(*json, "ttl").value_or(300'000) / 1000,
            .message = string(*json, "message"),
            .startTime = time("start_time"),
            .endTime = time("end_time")};
  }
  static std::vector<AppAction> appActions(const Value& parent) {
    return list(parent, "links", [](const Value& link) -> std::optional<AppAction> {
      if (text(link, "type") != "button") return std::nullopt;
      const auto id = text(link, "id"), label = text(link, "label");
      const auto kind = Fields::template raw<AppAction::Kind>(link, "action");
      if (!id || !label || !kind) return std::nullopt;
      return AppAction{.id = std::string(*id),
                       .label = std::string(*label),
                       .kind = *kind,
                       .icon = std::string(text(link, "icon").value_or("space"))};
    });
  }
  static std::vector<Page::Sibling> siblings(const Value& parent) {
    return list(parent, "links", [](const Value& link) -> std::optional<Page::Sibling> {
      const auto id = text(link, "id"), label = text(link, "label");
      if (text(link, "type") != "sibling" || !id || !label) return std::nullopt;
      return Page::Sibling{.label = std::string(*label), .id = std::string(*id)};
    });
  }

  static std::optional<Video> video(const Value& json, const std::optional<std::string>& list) {
    using PlaybackStatus = Video::PlaybackStatus;
    const auto id = text(json, "id"), title = text(json, "title"),
               description = text(json, "short_description");
    if (!id || !title || !description) return std::nullopt;
    const auto milliseconds = number(json, "duration");
    return Video{.id = std::string(*id),
                 .title = std::string(*title),
                 .subheading = std::string(text(json, "subheading").value_or("")),
                 .shortDescription = std::string(*description),
                 .kind = Fields::template raw<Video::ContentKind>(json, "content_type")
                             .value_or(Video::ContentKind::generic),
                 .duration = milliseconds ? std::optional(*milliseconds / 1000) : std::nullopt,
                 .playbackStatus = yes(json, "playable") ? PlaybackStatus::available
                                                         : PlaybackStatus::unavailable,
                 .collections = collections(json),
                 .lineupMeta = lineupMeta(json),
                 .imageResources = {*id, keys<ImageResourceKey>(json)},
                 .videoPreviews = {*id, keys<VideoPreviewKey>(json)},
                 .status = status(json),
                 .appActions = appActions(json),
                 .playlistID = list,
                 .deepLinkPlaylistID = string(json, "deeplink_playlist"),
                 .nextPlaylistID = string(json, "next_playlist"),
                 .shareURL = url(json, "share_url")};
  }
  static std::optional<Page> page(const Value& json) {
    const auto id = text(json, "id"), title = text(json, "title");
    if (!id || !title) return std::nullopt;
    return Page{.id = std::string(*id),
                .title = std::string(*title),
                .subheading = string(json, "subheading"),
                .shortDescription = string(json, "short_description"),
                .longDescription = string(json, "long_description"),
                .kind = Fields::template raw<Page::ContentKind>(json, "content_type")
                            .value_or(Page::ContentKind::generic),
                .collections = collections(json),
                .lineupMeta = lineupMeta(json),
                .imageResources = {*id, keys<ImageResourceKey>(json)},
                .videoPreviews = {*id, keys<VideoPreviewKey>(json)},
                .iconID = std::string(text(json, "icon").value_or(*id)),
                .status = status(json),
                .appActions = appActions(json),
                .siblings = siblings(json),
                .shareURL = url(json, "share_url")};
  }
  static PagingMeta meta(const Value& json) {
    const auto found = object(json, "meta");
    const auto value = [&](std::string_view key) {
      return as(*found, key, Library::integer).value();
    };
    return {.total = value("total"), .limit = value("limit"), .offset = value("offset")};
  }
  static ItemCollection collection(const Value& json) {
    using Kind = ItemCollection::ContentsKind;
    ItemCollection read{
        .id = std::string(text(json, "id").value()),
        .label = std::string(text(json, "label").value()),
        .shortLabel = std::string(text(json, "short_label").value()),
        .kind = Fields::template raw<ItemCollection::Kind>(json, "type").value(),
        .contentsKind = Fields::template raw<Kind>(json, "item_type").value_or(Kind::mixed),
        .meta = meta(json)};
    const std::optional id(read.id);
    read.items = list(json, "items", [&](const Value& item) -> std::optional<ContentItem> {
      const auto kind = Fields::template raw<ContentItem::Kind>(item, "type");
      if (kind == ContentItem::Kind::video) return video(item, id);
      if (kind == ContentItem::Kind::page) return page(item);
      return std::nullopt;
    });
    return read;
  }
  static std::optional<LinearProgram> program(const Value& json) {
    using PlaybackStatus = LinearProgram::PlaybackStatus;
    const auto id = text(json, "id"), title = text(json, "title"), start = text(json, "start_time"),
               end = text(json, "end_time");
    if (!id || !title || !start || !end) return std::nullopt;
    const auto startTime = iso8601Formatter().date(*start);
    const auto endTime = iso8601Formatter().date(*end);
    if (!startTime || !endTime) return std::nullopt;
    return LinearProgram{.id = std::string(*id),
                         .title = std::string(*title),
                         .subheading = string(json, "subheading"),
                         .shortDescription = string(json, "short_description"),
                         .playbackStatus = yes(json, "playable") ? PlaybackStatus::available
                                                                 : PlaybackStatus::unavailable,
                         .imageResources = {*id, keys<ImageResourceKey>(json)},
                         .startTime = *startTime,
                         .endTime = *endTime,
                         .duration = number(json, "duration")};
  }
  static LinearProgramGuide guide(const Value& json) {
    return {list(json, "items", program), meta(json), Date(), Date()};
  }
  /// A slot's templates as one text, as the library keeps them, whose own only it can make.
  struct Images {
    KeySet<LineupTemplateImage::ResourceKey> keys;
    std::string templates;
    bool operator==(const Images&) const = default;
  };
  template <class Found>
  static Images images(const Found& json) {
    Images read;
    if (!json) return read;
    for (const auto& known : enumCases<LineupTemplateImage::ResourceKey>) {
      const auto key = *fromRawValue<LineupTemplateImage::ResourceKey>(known.rawValue);
      const auto image = object(*json, known.rawValue);
      const auto found = image ? text(*image, "template") : std::nullopt;
      if (!found) continue;
      read.keys.insert(key);
      read.templates += *found;
    }
    return read;
  }
  static std::optional<LineupSlot> slot(const Value& json, std::vector<Images>& allImages) {
    const auto start = text(json, "start"), end = text(json, "end"), title = text(json, "title");
    const auto channel = object(json, "channel");
    if (!start || !end || !title || !channel) return std::nullopt;
    const auto startTime = eventDate(*start), endTime = eventDate(*end);
    const auto id = text(*channel, "id"), name = text(*channel, "name");
    const auto order = as(*channel, "order", Library::integer);
    if (!startTime || !endTime || !id || !name || !order) return std::nullopt;
    allImages.push_back(images(object(json, "images")));
    return LineupSlot{.start = *startTime,
                      .end = *endTime,
                      .title = std::string(*title),
                      .imageResources = {},
                      .channelID = std::string(*id),
                      .channelName = std::string(*name),
                      .channelOrder = *order};
  }
  struct PeerLineup {
    Lineup lineup;
    std::vector<Images> images;
  };
  static PeerLineup lineup(const Value& json) {
    PeerLineup read;
    read.lineup = Lineup::grouping(
        list(json, [&read](const Value& item) { return slot(item, read.images); }));
    return read;
  }

  static ColorPalette palette(const Value& json) {
    ColorPalette palette;
    for (const auto& entry : ColorPalette::entries) {
      const auto color = object(json, entry.jsonKey);
      palette.*entry.resource = {.transform = string(*color, "transform").value(),
                                 .color = Color::fromHexString(*text(*color, "hex")).value()};
    }
    return palette;
  }
  static Configuration configuration(const Value& json) {
    const auto section = [&](std::string_view key) { return object(json, key); };
    const auto seconds = [&](std::string_view key) { return number(json, key).value() / 1000; };
    const auto links = section("links");
    const auto tv = section("tv");
    const auto rating = section("user_rating_prompt");
    const auto ads = section("display_ads");
    const auto events = section("upcoming_events");
    std::vector<Configuration::SystemView> views;
    for (const char* name : {"discover", "calendar", "channels"}) {
      const auto view = object(*section("nav"), name);
      views.push_back({name, string(*view, "label").value(), string(*view, "id").value()});
    }
    return {
        .systemViews = std::move(views),
        .constants = {.hlsBaseURL = url(json, "hls_base_url").value(),
                      .linearStreamID = string(json, "linear_stream_id").value(),
                      .upNextHintTimeout = seconds("up_next_hint_time"),
                      .playerControlsTimeout = seconds("player_controls_timeout"),
                      .discoveryResetTimeout = seconds("discovery_reset_timeout"),
                      .relaunchResumeTimeout = seconds("relaunch_resume_timeout"),
                      .countdownVisibilityTimeout = seconds("countdown_visibility_timeout"),
                      .recentlyWatched = yes(json, "recently_watched"),
                      .startedMinimumPercent = number(json, "started_minimum_percent").value(),
                      .startedMinimumTime = seconds("started_minimum_time"),
                      .watchedMinimumPercent = number(json, "watched_minimum_percent").value(),
                      .watchedMinimumTime = seconds("watched_minimum_time_left"),
                      .shareStringTemplate = string(json, "share_string_template").value(),
                      .searchTopResultsLimit =
                          as(json, "search_top_results_limit", Library::integer).value(),
                      .playbackInterruptDelay = seconds("playback_interruption_delay")},
        .colorPalette = palette(*section("colors")),
        .links = {.imprint = url(*links, "imprint").value(),
                  .about = url(*links, "about").value(),
                  .privacy = url(*links, "privacy").value(),
                  .terms = url(*links, "terms").value(),
                  .contact = url(*links, "contact").value(),
                  .feedback = url(*links, "feedback").value()},
        .requirements = {.appVersion = {string(*section("app_update"), "min_build").value(),
                                        string(*section("app_update"), "message").value()},
                         .osVersion = {string(*section("device_update"), "min_os_version").value(),
                                       string(*section("device_update"), "message").value()},
                         .killSwitch = {yes(*section("end_of_life"), "kill"),
                                        string(*section("end_of_life"), "message").value()}},
        .ratingPromptConfig = {as(*rating, "session_interval", Library::integer).value(),
                               number(*rating, "long_session").value(), yes(*rating, "enable"),
                               as(*rating, "repeat_delay", Library::integer).value()},
        .displayAd = DisplayAd{url(*ads, "url").value(), string(*ads, "nw").value(),
                               string(*ads, "prof").value()},
        .linearStream = {string(json, "linear_stream_id").value(), string(*tv, "label").value(),
                         string(*tv, "description").value(), string(*tv, "icon").value()},
        .upcomingEvents = {string(*events, "label").value(), string(*events, "id").value()},
        .environment = Environment::production};
  }

  static void read(DocumentKind kind, const Data& body) {
    const typename Library::Document document(body.view());
    const Value& root = document.root();
    switch (kind) {
      case DocumentKind::video:
        return keep(video(root, {}));
      case DocumentKind::page:
        return keep(page(root));
      case DocumentKind::collection:
        return keep(collection(root));
      case DocumentKind::guide:
        return keep(guide(root));
      case DocumentKind::lineup:
        return keep(lineup(root));
      case DocumentKind::configuration:
        return keep(configuration(root));
    }
  }
};

/// Ends the program unless both sides make the same of the lists.
template <class Library>
void checkThatModelsAreTheSame() {
  using Peer = Reader<Library>;
  const auto check = [](const auto& ours, const auto& theirs) {
    if (ours != theirs) throw std::runtime_error("another model");
  };
  const auto read = [](const Data& body) { return JSONDataParser::value(body).force(); };
  const Data items(collectionDocument(50)), programs(guideDocument(50)), slots(lineupDocument(50));
  // One document at a time, as they share their memory.
  using Document = typename Library::Document;
  check(ItemCollectionParser::parse(*read(items).object()).force().items,
        Peer::collection(Document(items.view()).root()).items);
  check(LinearProgramGuideParser::parse(*read(programs).object(), Date(), Date()).force().items,
        Peer::guide(Document(programs.view()).root()).items);
  std::vector<LineupSlot> ourSlots;
  std::vector<typename Peer::Images> ourImages;
  const auto slotObjects = read(slots).objects().value();
  for (const JSONObject& json : slotObjects) {
    auto slot = LineupSlotParser::parse(json).force();
    auto& images = ourImages.emplace_back();
    for (const auto& [key, image] : slot.imageResources) {
      images.keys.insert(key);
      images.templates += image.template_;
    }
    slot.imageResources = {};
    ourSlots.push_back(std::move(slot));
  }
  const auto theirs = Peer::lineup(Document(slots.view()).root());
  check(Lineup::grouping(std::move(ourSlots)), theirs.lineup);
  check(ourImages, theirs.images);
}

template <class Library>
void measure(const std::string& peer, double meanGoal) {
  checkThatModelsAreTheSame<Library>();
  std::vector<Comparison> all;
  for (const auto& document : typicalDocuments()) {
    const Data body(document.text);
    all.push_back(compare([&] { readModel(document.kind, body); },
                          [&] { Reader<Library>::read(document.kind, body); }));
    print("body to model, " + document.name, "ns", peer, all.back(), kNothing);
  }
  print("body to model, geometric mean", "", peer, geometricMean(all), meanGoal);
}

}  // namespace

int main() {
  measure<Simdjson>("by hand on simdjson's DOM", 0.85);
  measure<RapidJSON>("RapidJSON, in place", 1);
  measure<Boost>("Boost.JSON, kept memory", 1);
  measure<Nlohmann>("nlohmann-json", 1);
}
