#include <OrvoAPI/Linear/LinearProgramGuide.h>
#include <gtest/gtest.h>

#include "tests/support/Document.h"

namespace orvo {
namespace {

const Document kProgram{{"id", R"("a")"},
                        {"title", R"("T")"},
                        {"start_time", R"("1970-01-01T00:00:10Z")"},
                        {"end_time", R"("1970-01-01T01:00:20+0100")"}};
constexpr const char* kMeta = R"({"total": 3, "limit": 2, "offset": 1})";

TEST(LinearProgramParser, RequiresIdTitleAndTimes) {
  expectRequired("LinearProgram", kProgram, {"id", "title", "start_time", "end_time"},
                 LinearProgramParser::parse);
  const auto precise = kProgram.with("end_time", R"("1970-01-01T00:00:10.000Z")");
  EXPECT_EQ(failureOf(LinearProgramParser::parse(precise)), "LinearProgram: end_time");
  const auto program = LinearProgramParser::parse(kProgram).force();
  EXPECT_EQ(program.id + program.title, "aT");
  EXPECT_EQ(program.startTime, Date(10'000));
  EXPECT_EQ(program.endTime, Date(20'000));
  EXPECT_FALSE(program.subheading || program.shortDescription || program.duration);
  EXPECT_EQ(program.playbackStatus, LinearProgram::PlaybackStatus::unavailable);
}

TEST(LinearProgramParser, ReadsOptionalMembersThatAllCountForEquality) {
  const auto plain = LinearProgramParser::parse(kProgram).force();
  const auto with = [&](std::string_view key, std::string_view json) {
    const auto program = LinearProgramParser::parse(kProgram.with(key, json)).force();
    EXPECT_NE(program, plain) << key;
    return program;
  };
  EXPECT_EQ(with("subheading", R"("U")").subheading, "U");
  EXPECT_EQ(with("short_description", R"("S")").shortDescription, "S");
  EXPECT_EQ(with("playable", "true").playbackStatus, LinearProgram::PlaybackStatus::available);
  EXPECT_EQ(with("duration", "90.5").duration, 90.5) << "in seconds already";
  const auto images = with("resources", R"(["orvo_logo_landscape", "x"])").imageResources;
  EXPECT_EQ(images.find(ImageResourceKey::logoLandscape)->productID, "a");
}

TEST(LinearProgramGuideParser, ReportsItsPaging) {
  const auto parse = [](const JSONObject& json) {
    return LinearProgramGuideParser::parse(json, Date(1), Date(2));
  };
  expectRequired("LinearProgramGuide", {{"meta", kMeta}}, {"meta"}, parse);
  EXPECT_EQ(failureOf(parse(object(R"({"meta": {"total": "3", "limit": 2, "offset": 1}})"))),
            "LinearProgramGuide: meta details");
  EXPECT_TRUE(parse(Document{{"meta", kMeta}, {"items", "[{}, 1]"}}).force().items.empty());
}

TEST(LinearProgramGuideParser, DropsAndPrintsWhatItCannotRead) {
  const CapturedConsole console;
  const Document document{
      {"meta", kMeta},
      {"items", "[" + kProgram.with("id", R"("1")").text() + "," +
                    kProgram.with("start_time", R"("1970-01-01T00:00:09Z")").text() + "," +
                    kProgram.without("end_time").text() + "," +
                    kProgram.with("id", R"("2")").text() + "]"}};
  const auto guide = LinearProgramGuideParser::parse(document, Date(1), Date(2)).force();
  ASSERT_EQ(guide.items.size(), 3U);
  EXPECT_EQ(guide.items[0].id + guide.items[1].id + guide.items[2].id, "a12") << "by their starts";
  EXPECT_EQ(guide.meta, (PagingMeta{.total = 3, .limit = 2, .offset = 1}));
  EXPECT_TRUE(guide.startDate == Date(1) && guide.endDate == Date(2));
  EXPECT_EQ(guide.ttl(), 300);
  EXPECT_EQ(console.lines.find("BAILED ON Linearprogram "), 0U) << console.lines;
  EXPECT_NE(console.lines.find("end_time"), std::string::npos) << console.lines;
  EXPECT_EQ(console.lines.find('\n'), console.lines.size() - 1);
  const auto lines = console.lines;
  silenceConsole();
  EXPECT_FALSE(LinearProgramGuideParser::parse(document, Date(1), Date(2)).failed());
  EXPECT_EQ(console.lines, lines);
}

}  // namespace
}  // namespace orvo
