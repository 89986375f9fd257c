#include <OrvoAPI/Linear/LinearProgramGuide.h>
#include <OrvoAPI/Linear/Lineup.h>
#include <OrvoAPI/Model/ContentItem.h>
#include <OrvoAPI/Parsing/JSONDataParser.h>
#include <demo/Documents.h>
#include <demo/Guide.h>
#include <demo/Images.h>
#include <demo/Lineups.h>
#include <demo/Streams.h>
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

unsigned bigEndian(const std::string& bytes, std::size_t offset, std::size_t count) {
  unsigned value = 0;
  for (std::size_t index = 0; index < count; ++index) {
    value = value << 8 | static_cast<unsigned char>(bytes[offset + index]);
  }
  return value;
}

TEST(DemoImages, HaveTheSizeThatTheirAddressNames) {
  const std::string png = imageFile("a", parseTransformation("e_trim,w_61,h_43,f_png"));
  EXPECT_EQ(png.substr(0, 8), "\x89PNG\r\n\x1A\n");
  EXPECT_EQ(bigEndian(png, 16, 4), 61U);
  EXPECT_EQ(bigEndian(png, 20, 4), 43U);
  const std::string jpeg = imageFile("a", parseTransformation("c_fill,w_600,h_400,f_jpg,q_65"));
  const std::size_t frame = jpeg.find("\xFF\xC0");
  EXPECT_EQ(bigEndian(jpeg, frame + 5, 2), 400U);
  EXPECT_EQ(bigEndian(jpeg, frame + 7, 2), 600U);
  const auto huge = parseTransformation(",,w_99999999999999999999,h_-4,f_png").size;
  EXPECT_TRUE(huge.width == 2048 && huge.height == 1);
}

TEST(DemoStreams, OfVideosEndAndLiveOnesMove) {
  const Instant now = *parseInstant("2024-05-01T10:20:00.000Z");
  const Product clip{.kind = "clip", .durationMilliseconds = 13'000};
  const std::string recorded = mediaPlaylist(clip, now);
  EXPECT_NE(recorded.find("segment-2.aac\n#EXT-X-ENDLIST"), std::string::npos);
  const Product live{.kind = "live_program"};
  EXPECT_EQ(mediaPlaylist(live, now).find("ENDLIST"), std::string::npos);
  EXPECT_NE(mediaPlaylist(live, now), mediaPlaylist(live, now + std::chrono::seconds(7)));
}

TEST(DemoStreams, SegmentsCarryTheirTime) {
  const std::string bytes = segment(5);
  EXPECT_EQ(bytes.substr(0, 3), "ID3");
  // The tag ends in the time of the 90 kHz clock; the frames follow.
  const std::size_t frames = bytes.find("\xFF\xF1");
  EXPECT_EQ(bigEndian(bytes, frames - 4, 4), 5U * 6400U * 90U);
  EXPECT_EQ((bytes.size() - frames) % 13, 0U);
  EXPECT_EQ(segmentNumber("segment-12.aac"), 12);
  EXPECT_FALSE(segmentNumber("segment--1.aac") || segmentNumber("segment-.aac"));
}

TEST(DemoJson, EscapesWhatStringsCannotHold) {
  const std::string text("a\"b\\c\n\x01\x7F\xC3\xA9\xFF\xE2\x82", 13);
  EXPECT_EQ(Json(text).text(), "\"a\\\"b\\\\c\\n\\u0001\\u007f\u00e9\uFFFD\uFFFD\uFFFD\"");
  EXPECT_EQ(Json("\xED\xA0\x80").text(), "\"\uFFFD\uFFFD\uFFFD\"");  // half of a surrogate pair
  EXPECT_EQ(Json("\xC2\x80\xC2\x9F\xC2\xA0\u061C\u200D\u200E\u200F\u2027\u2028\u2029").text(),
            "\"\\u0080\\u009f\xC2\xA0\\u061c\u200D\\u200e\\u200f\u2027\\u2028\\u2029\"");
  EXPECT_EQ(Json("\u202A\u202E\u202F\u2065\u2066\u2069\u206A\U0001F682").text(),
            "\"\\u202a\\u202e\u202F\u2065\\u2066\\u2069\u206A\U0001F682\"");
}

}  // namespace
}  // namespace orvo::demo
