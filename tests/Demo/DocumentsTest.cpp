#include <OrvoAPI/Configuration/Configuration.h>
#include <OrvoAPI/Linear/LinearProgramGuide.h>
#include <OrvoAPI/Linear/Lineup.h>
#include <OrvoAPI/Model/ContentItem.h>
#include <OrvoAPI/Model/Playlist.h>
#include <OrvoAPI/Model/SearchCollection.h>
#include <OrvoAPI/Parsing/JSONDataParser.h>
#include <demo/Documents.h>
#include <demo/Guide.h>
#include <demo/Lineups.h>
#include <gtest/gtest.h>

#include <set>

namespace orvo::demo {
namespace {

using std::chrono::hours;
using std::chrono::minutes;
using std::chrono::seconds;

const Instant kNow = *parseInstant("2024-05-01T10:20:00.000Z");
const Addresses kAddresses{"http://127.0.0.1:1/"};

JSONObject read(const Json& json) { return JSONDataParser::object(Data(json.text())).force(); }

Date date(Instant instant) { return Date(instant.time_since_epoch().count() * 1000); }

class DemoDocuments : public testing::Test {
 protected:
  LinearProgramGuide guide(const Guide& source, Instant start, Instant end, Paging paging = {}) {
    const auto page = source.page(start, end, paging, kNow);
    return LinearProgramGuideParser::parse(read(*page), date(start), date(end)).force();
  }

  const Catalogue catalogue_;
  const Documents documents_{catalogue_, kAddresses};
};

TEST_F(DemoDocuments, HoldProductsOfEveryKind) {
  std::set<std::string_view> videoKinds;
  std::set<std::string_view> pageKinds;
  for (const auto& [id, product] : catalogue_.products()) {
    const auto item = ContentItemParser::parse(read(documents_.product(product, kNow)));
    ASSERT_NE(item.value(), nullptr) << id;
    if (const Video* video = item.value()->video()) {
      videoKinds.insert(caseName(video->kind));
      EXPECT_TRUE(video->imageResources.contains(ImageResourceKey::landscape));
    } else {
      pageKinds.insert(caseName(item.value()->page()->kind));
    }
  }
  EXPECT_EQ(videoKinds.size(), std::size(enumCases<Video::ContentKind>));
  EXPECT_EQ(pageKinds.size(), std::size(enumCases<Page::ContentKind>));
}

TEST_F(DemoDocuments, ReferToProductsAndShelvesThatExist) {
  for (const auto& [id, product] : catalogue_.products()) {
    for (const std::string& shelf : product.shelves) {
      EXPECT_NE(catalogue_.shelf(shelf), nullptr) << id;
    }
    for (const std::string& sibling : product.siblings) {
      EXPECT_NE(catalogue_.product(sibling), nullptr) << id;
    }
    EXPECT_TRUE(product.plays.empty() || catalogue_.product(product.plays)) << id;
    EXPECT_TRUE(product.nextPlaylist.empty() || catalogue_.shelf(product.nextPlaylist)) << id;
  }
}

TEST_F(DemoDocuments, ConfigurationHasEverySection) {
  const auto result = ConfigurationParser::parse(read(documents_.configuration()), Environment::qa);
  ASSERT_NE(result.value(), nullptr);
  const Configuration& configuration = *result.value();
  EXPECT_EQ(configuration.systemViews.size(), 3U);
  EXPECT_EQ(configuration.requirements.appVersion.minBuild, "1.4.0");
  EXPECT_TRUE(configuration.ratingPromptConfig.enabled);
  EXPECT_TRUE(configuration.displayAd.has_value());
  EXPECT_EQ(configuration.upcomingEvents.id, Catalogue::kUpcomingEvents);
  for (const auto& view : configuration.systemViews) {
    EXPECT_NE(catalogue_.product(view.id), nullptr) << view.name;
  }
}

TEST_F(DemoDocuments, LiveProgrammesFollowTheClock) {
  const auto code = [&](Instant now) {
    const Json json = *documents_.product("live-harbour-merrowick", now);
    return VideoParser::parse(read(json)).force().status;
  };
  const Status status = code(kNow);
  EXPECT_EQ(status.code, StatusCode::live);
  EXPECT_LE(*status.startTime, date(kNow));
  EXPECT_GT(*status.endTime, date(kNow));
}

TEST_F(DemoDocuments, PlaylistStretchesToTheIncludedVideo) {
  const Json json =
      *documents_.playlist("episodes-workbench", "episode-workbench-20", {.limit = 5}, kNow);
  const Playlist playlist = PlaylistParser::parse(read(json)).force();
  EXPECT_EQ(playlist.items.size(), 20U);
  EXPECT_EQ(playlist.items.back().id, "episode-workbench-20");
}

TEST_F(DemoDocuments, SearchFiltersByKind) {
  const auto search = [&](std::string_view kind) {
    const Json json = documents_.searchResults("NIGHT", kind, {.limit = 3}, kNow);
    return SearchResultsParser::parse(read(json), "NIGHT").force();
  };
  EXPECT_GT(search("").size(), 3U);
  const auto shows = search("shows");
  ASSERT_EQ(shows.size(), 1U);
  EXPECT_EQ(shows[0].resultsKind, SearchCollection::ResultsKind::shows);
  EXPECT_EQ(search("videos")[0].items.size(), 3U);
  EXPECT_TRUE(documents_.searchResults("", "", {}, kNow).text() == R"({"collections":[]})");
}

TEST_F(DemoDocuments, GuideIsAlwaysOnAir) {
  const Guide television(catalogue_, seconds(0));
  const Guide quick(catalogue_, seconds(5));
  for (const Guide* source : {&television, &quick}) {
    for (Instant now = kNow; now < kNow + hours(30); now += minutes(37)) {
      const LinearProgramGuide page = guide(*source, now, now + seconds(1));
      ASSERT_EQ(page.items.size(), 1U);
      EXPECT_LE(page.items[0].startTime, date(now));
      EXPECT_GT(page.items[0].endTime, date(now));
      EXPECT_TRUE(source->video(page.items[0].id).has_value());
    }
  }
}

TEST_F(DemoDocuments, GuidePagesJoinWithoutGaps) {
  const Guide source(catalogue_, seconds(0));
  Paging paging{.limit = 7};
  Date last = date(kNow);
  std::int64_t count = 0;
  while (true) {
    const LinearProgramGuide page = guide(source, kNow, kNow + hours(72), paging);
    for (const LinearProgram& program : page.items) {
      EXPECT_TRUE(count == 0 || program.startTime == last);
      ++count;
      last = program.endTime;
    }
    paging.offset += paging.limit;
    if (paging.offset >= page.meta.total) break;
    EXPECT_EQ(page.items.size(), 7U);
  }
  EXPECT_GE(last, date(kNow + hours(72)));
  EXPECT_GT(count, 50);
}

TEST_F(DemoDocuments, LineupsKeepAllSlotsInEveryDateForm) {
  for (const char* name : {"grid", "list", "clock-change"}) {
    const Json json = *lineup(name, catalogue_, kAddresses, kNow);
    const auto array = JSONDataParser::array(Data(json.text())).force();
    const Lineup parsed = LineupParser::parse(array);
    EXPECT_EQ(parsed.slots.size(), array.size()) << name;
    EXPECT_GE(parsed.days.size(), 3U) << name;
  }
}

TEST_F(DemoDocuments, ClockChangeLineupHasNoGapAtTheChange) {
  for (const char* text : {"2024-05-01T10:20:00.000Z", "2024-12-01T10:20:00.000Z"}) {
    const Json json = *lineup("clock-change", catalogue_, kAddresses, *parseInstant(text));
    const Lineup parsed = LineupParser::parse(JSONDataParser::array(Data(json.text())).force());
    for (std::size_t index = 1; index < parsed.slots.size(); ++index) {
      ASSERT_EQ(parsed.slots[index].start, parsed.slots[index - 1].end) << text;
    }
  }
  EXPECT_EQ(withMilliseconds(nextClockChange(kNow)), "2024-10-27T01:00:00.000Z");
  EXPECT_EQ(withMilliseconds(nextClockChange(*parseInstant("2024-10-27T01:00:00.000Z"))),
            "2025-03-30T01:00:00.000Z");
}

}  // namespace
}  // namespace orvo::demo
