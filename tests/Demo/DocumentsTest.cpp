#include <OrvoAPI/Configuration/Configuration.h>
#include <OrvoAPI/Linear/LinearProgramGuide.h>
#include <OrvoAPI/Linear/Lineup.h>
#include <OrvoAPI/Model/ContentItem.h>
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
  JSONObjects slots(const char* name, Instant now = kNow) {
    const Json json = *lineup(name, catalogue_, kAddresses, now);
    return JSONDataParser::array(Data(json.text())).force();
  }

  const Catalogue catalogue_;
  const Documents documents_{catalogue_, kAddresses};
};

TEST_F(DemoDocuments, HoldProductsOfEveryKindThatReferToEachOther) {
  std::set<std::string_view> videoKinds;
  std::set<std::string_view> pageKinds;
  for (const auto& [id, product] : catalogue_.products()) {
    const auto item = ContentItemParser::parse(read(documents_.product(product, kNow))).force();
    const Video* video = item.video();
    video ? videoKinds.insert(caseName(video->kind))
          : pageKinds.insert(caseName(item.page()->kind));
    for (const std::string& shelf : product.shelves) EXPECT_TRUE(catalogue_.shelf(shelf)) << id;
    for (const std::string& page : product.siblings) EXPECT_TRUE(catalogue_.product(page)) << id;
    EXPECT_TRUE(product.plays.empty() || catalogue_.product(product.plays)) << id;
    EXPECT_TRUE(product.nextPlaylist.empty() || catalogue_.shelf(product.nextPlaylist)) << id;
  }
  EXPECT_EQ(videoKinds.size(), std::size(enumCases<Video::ContentKind>));
  EXPECT_EQ(pageKinds.size(), std::size(enumCases<Page::ContentKind>));
}

TEST_F(DemoDocuments, ConfigurationHasEverySection) {
  const auto configuration =
      ConfigurationParser::parse(read(documents_.configuration()), Environment::qa).force();
  EXPECT_EQ(configuration.systemViews.size(), 3U);
  EXPECT_EQ(configuration.requirements.appVersion.minBuild, "1.4.0");
  EXPECT_TRUE(configuration.ratingPromptConfig.enabled && configuration.displayAd);
  EXPECT_EQ(configuration.upcomingEvents.id, Catalogue::kUpcomingEvents);
  for (const auto& view : configuration.systemViews) EXPECT_TRUE(catalogue_.product(view.id));
}

TEST_F(DemoDocuments, GuideIsAlwaysOnAir) {
  const Guide television(catalogue_, seconds(0));
  const Guide quick(catalogue_, seconds(5));
  for (const Guide* source : {&television, &quick}) {
    for (Instant now = kNow; now < kNow + hours(30); now += minutes(37)) {
      const LinearProgramGuide page = guide(*source, now, now + seconds(1));
      ASSERT_EQ(page.items.size(), 1U);
      EXPECT_TRUE(page.items[0].startTime <= date(now) && date(now) < page.items[0].endTime);
      EXPECT_TRUE(source->video(page.items[0].id).has_value());
    }
  }
}

TEST_F(DemoDocuments, GuidePagesJoinWithoutGaps) {
  const Guide source(catalogue_, seconds(0));
  Paging paging{.limit = 7};
  std::int64_t total = 1;
  std::optional<Date> last;
  for (; paging.offset < total; paging.offset += paging.limit) {
    const LinearProgramGuide page = guide(source, kNow, kNow + hours(72), paging);
    for (const LinearProgram& program : page.items) {
      EXPECT_EQ(program.startTime, last.value_or(program.startTime));
      last = program.endTime;
    }
    total = page.meta.total;
  }
  EXPECT_GE(*last, date(kNow + hours(72)));
  EXPECT_GT(total, 50);
}

TEST_F(DemoDocuments, LineupsKeepAllSlotsInEveryDateForm) {
  for (const char* name : {"grid", "list", "clock-change"}) {
    EXPECT_EQ(LineupParser::parse(slots(name)).slots.size(), slots(name).size()) << name;
  }
}

TEST_F(DemoDocuments, ClockChangeLineupHasNoGapAtTheChange) {
  for (const char* now : {"2024-05-01T10:20:00.000Z", "2024-12-01T10:20:00.000Z"}) {
    const auto list = LineupParser::parse(slots("clock-change", *parseInstant(now))).slots;
    for (std::size_t index = 1; index < list.size(); ++index) {
      ASSERT_EQ(list[index].start, list[index - 1].end) << now;
    }
  }
  const Instant autumn = nextClockChange(kNow);
  EXPECT_EQ(withMilliseconds(autumn), "2024-10-27T01:00:00.000Z");
  EXPECT_EQ(withMilliseconds(nextClockChange(autumn)), "2025-03-30T01:00:00.000Z");
}

}  // namespace
}  // namespace orvo::demo
