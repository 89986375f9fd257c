// What models keep, in bytes as the allocator rounds them: beside their documents, and beside the
// same fields in the layout that their description names literally, with a tree map for each table,
// each slot copied into its hour and its day's hour. And what a context keeps.

#include <OrvoAPI/OrvoAPI.h>
#include <OrvoAPI/Testing/StubNetworkDataProvider.h>
#include <OrvoAPI/Testing/StubSessionProvider.h>
#include <benchmarks/support/Documents.h>
#include <benchmarks/support/HeapBytes.h>
#include <benchmarks/support/Measure.h>

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

using namespace orvo;
using namespace orvo::benchmarks;

namespace {

constexpr double kGoal = 0.6;

// --- the literal layout

using LiteralImages = std::map<ImageResourceKey, ImageResource>;
using LiteralPreviews = std::map<VideoPreviewKey, VideoPreview>;

struct LiteralVideo {
  std::string id, title, subheading, shortDescription;
  Video::ContentKind kind{};
  std::optional<double> duration;
  Video::PlaybackStatus playbackStatus{};
  std::vector<CollectionReference> collections;
  std::optional<LineupReference> lineupMeta;
  LiteralImages imageResources;
  LiteralPreviews videoPreviews;
  Status status;
  std::vector<AppAction> appActions;
  std::optional<std::string> playlistID, deepLinkPlaylistID, nextPlaylistID;
  std::optional<URL> shareURL;
};

struct LiteralPage {
  std::string id, title;
  std::optional<std::string> subheading, shortDescription, longDescription;
  Page::ContentKind kind{};
  std::vector<CollectionReference> collections;
  std::optional<LineupReference> lineupMeta;
  LiteralImages imageResources;
  LiteralPreviews videoPreviews;
  std::string iconID;
  Status status;
  std::vector<AppAction> appActions;
  std::vector<Page::Sibling> siblings;
  std::optional<URL> shareURL;
};

struct LiteralCollection {
  std::string id, label, shortLabel;
  ItemCollection::Kind kind{};
  ItemCollection::ContentsKind contentsKind{};
  PagingMeta meta;
  std::vector<std::variant<LiteralVideo, LiteralPage>> items;
};

struct LiteralProgram {
  std::string id, title;
  std::optional<std::string> subheading, shortDescription;
  LinearProgram::PlaybackStatus playbackStatus{};
  LiteralImages imageResources;
  Date startTime, endTime;
  std::optional<double> duration;
};

struct LiteralSlot {
  Date start, end;
  std::string title;
  std::map<LineupTemplateImage::ResourceKey, LineupTemplateImage> imageResources;
  std::string channelID, channelName;
  std::int64_t channelOrder = 0;
};
struct LiteralHour {
  Date startTime;
  std::vector<LiteralSlot> slots;
};
struct LiteralDay {
  Date startTime;
  std::vector<LiteralHour> hours;
};
struct LiteralLineup {
  std::vector<LiteralSlot> slots;
  std::vector<LiteralDay> days;
};

// --- our models in that layout; lists are as long as what they hold, as ours are

LiteralVideo literal(const Video& v) {
  return {v.id,
          v.title,
          v.subheading,
          v.shortDescription,
          v.kind,
          v.duration,
          v.playbackStatus,
          v.collections,
          v.lineupMeta,
          {v.imageResources.begin(), v.imageResources.end()},
          {v.videoPreviews.begin(), v.videoPreviews.end()},
          v.status,
          v.appActions,
          v.playlistID,
          v.deepLinkPlaylistID,
          v.nextPlaylistID,
          v.shareURL};
}

LiteralPage literal(const Page& p) {
  return {p.id,
          p.title,
          p.subheading,
          p.shortDescription,
          p.longDescription,
          p.kind,
          p.collections,
          p.lineupMeta,
          {p.imageResources.begin(), p.imageResources.end()},
          {p.videoPreviews.begin(), p.videoPreviews.end()},
          p.iconID,
          p.status,
          p.appActions,
          p.siblings,
          p.shareURL};
}

LiteralCollection literal(const ItemCollection& c) {
  LiteralCollection copy{c.id, c.label, c.shortLabel, c.kind, c.contentsKind, c.meta, {}};
  copy.items.reserve(c.items.size());
  for (const ContentItem& item : c.items) {
    if (item.video()) copy.items.emplace_back(literal(*item.video()));
    if (item.page()) copy.items.emplace_back(literal(*item.page()));
  }
  return copy;
}

std::vector<LiteralProgram> literal(const LinearProgramGuide& guide) {
  std::vector<LiteralProgram> copy;
  copy.reserve(guide.items.size());
  for (const LinearProgram& p : guide.items) {
    copy.push_back({p.id,
                    p.title,
                    p.subheading,
                    p.shortDescription,
                    p.playbackStatus,
                    {p.imageResources.begin(), p.imageResources.end()},
                    p.startTime,
                    p.endTime,
                    p.duration});
  }
  return copy;
}

std::vector<LiteralSlot> literal(const LineupSlots& slots) {
  std::vector<LiteralSlot> copy;
  copy.reserve(slots.size());
  for (const LineupSlot& s : slots) {
    copy.push_back({s.start,
                    s.end,
                    s.title,
                    {s.imageResources.begin(), s.imageResources.end()},
                    s.channelID,
                    s.channelName,
                    s.channelOrder});
  }
  return copy;
}

LiteralLineup literal(const Lineup& lineup) {
  LiteralLineup copy{literal(lineup.slots_), {}};
  copy.days.reserve(lineup.days.size());
  for (const LineupDay& day : lineup.days) {
    auto& hours = copy.days.emplace_back(LiteralDay{day.startTime, {}}).hours;
    hours.reserve(day.hours.size());
    for (const LineupHour& hour : day.hours)
      hours.push_back({hour.startTime, literal(hour.slots_)});
  }
  return copy;
}

/// What `make` leaves in use while its value lives.
template <class Make>
double bytesKept(Make&& make) {
  const auto before = heapBytes();
  const auto value = std::make_unique<decltype(make())>(make());
  return static_cast<double>(heapBytes() - before);
}

template <class Make>
void measure(const std::string& name, const Data& body, double goal, Make&& make) {
  (void)make();  // what is kept for the next reading is there by now
  const double ours = bytesKept(make);
  const auto model = make();
  printCounts(name, "B", ours, "the literal layout", bytesKept([&] { return literal(model); }),
              goal);
  printCounts(name, "B", ours, "its document", static_cast<double>(body.size()));
}

/// A context, and its store of videos full.
void measureContext() {
  constexpr std::size_t kVideos = 256;
  const auto configuration = configurationDocument();
  std::size_t documents = configuration.size();
  const double ours = bytesKept([&] {
    const auto context = Context::make(
        ConfigurationParser::parse(JSONDataParser::object(Data(configuration)).force(),
                                   Environment::production)
            .force(),
        *URL::parse("https://api.example/v3/"), *URL::parse("https://images.example/"),
        std::make_shared<StubSessionProvider>(), std::make_shared<StubNetworkDataProvider>());
    for (std::size_t i = 0; i < kVideos; ++i) {
      const auto document = videoDocument(i);
      documents += document.size();
      context->store().videos.store(
          std::make_shared<const Video>(
              VideoParser::parse(JSONDataParser::object(Data(document)).force()).force()),
          "https://api.example/v3/products/" + std::to_string(i));
    }
    return context;
  });
  printCounts("a context with 256 videos kept", "B", ours, "their documents",
              static_cast<double>(documents));
}

}  // namespace

int main() {
  const Data collection(collectionDocument(200)), guide(guideDocument(500)),
      lineup(lineupDocument(5000));
  measure("memory of a collection of 200", collection, kNothing, [&] {
    const auto json = JSONDataParser::object(collection);
    return ItemCollectionParser::parse(*json.value()).force();
  });
  measure("memory of a guide of 500", guide, kGoal, [&] {
    const auto json = JSONDataParser::object(guide);
    return LinearProgramGuideParser::parse(*json.value(), Date(), Date()).force();
  });
  measure("memory of a lineup of 5,000", lineup, kGoal, [&] {
    const auto json = JSONDataParser::array(lineup);
    return LineupParser::parse(*json.value());
  });
  measureContext();
}
