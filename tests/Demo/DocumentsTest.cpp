#include <OrvoAPI/Linear/LinearProgramGuide.h>
#include <OrvoAPI/Linear/Lineup.h>
#include <OrvoAPI/Model/ContentItem.h>
#include <OrvoAPI/Parsing/JSONDataParser.h>
#include <demo/Documents.h>
#include <demo/Guide.h>
#include <demo/Lineups.h>
#include <tests/support/Test.h>

namespace orvo::demo {
namespace {

const Instant kNow = *parseInstant("2024-05-01T10:20:00.000Z");
const Addresses kAddresses{"http://127.0.0.1:1/"};

JSONObject read(const Json& json) { return JSONDataParser::object(Data(json.text())).force(); }

Date date(Instant instant) { return Date(instant.time_since_epoch().count() * 1000); }

class DemoDocuments : public testing::Test {
 protected:
  JSONObjects slots(const char* name, Instant now = kNow) {
    const Json json = *lineup(name, catalogue_, kAddresses, now);
    return JSONDataParser::array(Data(json.text())).force();
  }

  const Catalogue catalogue_;
  const Documents documents_{catalogue_, kAddresses};
};

TEST_F(DemoDocuments, HoldProductsThatReferToEachOther) {
  for (const auto& [id, product] : catalogue_.products()) {
    EXPECT_FALSE(ContentItemParser::parse(read(documents_.product(product, kNow))).failed()) << id;
    for (const std::string& shelf : product.shelves) EXPECT_TRUE(catalogue_.shelf(shelf)) << id;
    for (const std::string& page : product.siblings) EXPECT_TRUE(catalogue_.product(page)) << id;
    EXPECT_TRUE(product.plays.empty() || catalogue_.product(product.plays)) << id;
    EXPECT_TRUE(product.nextPlaylist.empty() || catalogue_.shelf(product.nextPlaylist)) << id;
  }
}

TEST_F(DemoDocuments, GuideIsAlwaysOnAir) {
  for (const Guide& source : {Guide(catalogue_, 0s), Guide(catalogue_, 5s)}) {
    for (Instant now = kNow; now < kNow + 30h; now += 37min) {
      const LinearProgramGuide page =
          LinearProgramGuideParser::parse(read(*source.part(now, now + 1s, {}, kNow)), date(now),
                                          date(now))
              .force();
      ASSERT_EQ(page.items.size(), 1U);
      EXPECT_TRUE(page.items[0].startTime <= date(now) && date(now) < page.items[0].endTime);
      EXPECT_TRUE(source.video(page.items[0].id).has_value());
    }
  }
}

TEST_F(DemoDocuments, LineupsHaveReadableSlotsAndNoGapWhenClocksChange) {
  for (const char* name : {"grid", "list", "clock-change"}) {
    EXPECT_EQ(LineupParser::parse(slots(name)).slots_.size(), slots(name).size()) << name;
  }
  for (const char* now : {"2024-05-01T10:20:00.000Z", "2024-12-01T10:20:00.000Z"}) {
    const auto list = LineupParser::parse(slots("clock-change", *parseInstant(now))).slots_;
    for (std::size_t index = 1; index < list.size(); ++index) {
      ASSERT_EQ(list[index].start, list[index - 1].end) << now;
    }
  }
  EXPECT_EQ(withMilliseconds(nextClockChange(kNow)), "2024-10-27T01:00:00.000Z");
}

}  // namespace
}  // namespace orvo::demo
