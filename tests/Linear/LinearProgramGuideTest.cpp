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
  EXPECT_EQ(
      requirements(kProgram, {"id", "title", "start_time", "end_time"}, LinearProgramParser::parse),
      "id -> LinearProgram: id\n"
      "title -> LinearProgram: title\n"
      "start_time -> LinearProgram: start_time\n"
      "end_time -> LinearProgram: end_time\n");
  EXPECT_EQ(failureOf(LinearProgramParser::parse(Document({}))), "LinearProgram: id");
  for (const char* time : {R"("1970-01-01T00:00:10.000Z")", R"("")", R"("10")"}) {
    EXPECT_EQ(failureOf(LinearProgramParser::parse(kProgram.with("end_time", time))),
              "LinearProgram: end_time");
  }
}

TEST(LinearProgramParser, ReadsOptionalMembers) {
  auto program = LinearProgramParser::parse(kProgram).force();
  EXPECT_EQ(program.id + program.title, "aT");
  EXPECT_EQ(program.startTime, Date(10'000));
  EXPECT_EQ(program.endTime, Date(20'000));
  EXPECT_FALSE(program.subheading || program.shortDescription || program.duration);
  EXPECT_EQ(program.playbackStatus, LinearProgram::PlaybackStatus::unavailable);
  EXPECT_TRUE(program.imageResources.empty());

  program = LinearProgramParser::parse(kProgram.with("subheading", R"("U")")
                                           .with("short_description", R"("S")")
                                           .with("playable", "true")
                                           .with("resources", R"(["orvo_logo_landscape", "x"])")
                                           .with("duration", "90.5"))
                .force();
  EXPECT_EQ(*program.subheading + *program.shortDescription, "US");
  EXPECT_EQ(program.playbackStatus, LinearProgram::PlaybackStatus::available);
  EXPECT_EQ(program.imageResources.find(ImageResourceKey::logoLandscape)->productID, "a");
  EXPECT_EQ(program.duration, 90.5) << "in seconds already";
}

TEST(LinearProgram, IsEqualByAllFields) {
  const auto program = LinearProgramParser::parse(kProgram).force();
  EXPECT_EQ(program, LinearProgramParser::parse(kProgram).force());
  for (const auto& [key, json] : Document::Members{{"subheading", R"("U")"},
                                                   {"short_description", R"("S")"},
                                                   {"playable", "true"},
                                                   {"resources", R"(["orvo_logo_landscape"])"},
                                                   {"duration", "1"}}) {
    EXPECT_NE(program, LinearProgramParser::parse(kProgram.with(key, json)).force()) << key;
  }
}

TEST(LinearProgramGuideParser, ReportsItsPaging) {
  const auto failure = [](std::string_view json) {
    return failureOf(LinearProgramGuideParser::parse(object(json), Date(1), Date(2)));
  };
  EXPECT_EQ(failure("{}"), "LinearProgramGuide: meta");
  EXPECT_EQ(failure(R"({"meta": 1})"), "LinearProgramGuide: meta");
  EXPECT_EQ(failure(R"({"meta": {"total": "3", "limit": 2, "offset": 1}})"),
            "LinearProgramGuide: meta details");
}

TEST(LinearProgramGuideParser, DropsAndPrintsWhatItCannotRead) {
  const CapturedConsole console;
  const Document document{{"meta", kMeta},
                          {"items", "[" + kProgram.with("id", R"("1")").text() + "," +
                                        kProgram.without("end_time").text() + "," +
                                        kProgram.with("id", R"("2")").text() + "]"}};
  const auto guide = LinearProgramGuideParser::parse(document, Date(1), Date(2)).force();
  ASSERT_EQ(guide.items.size(), 2U);
  EXPECT_EQ(guide.items[0].id + guide.items[1].id, "12") << "equal starts keep their order";
  EXPECT_EQ(guide.meta, (PagingMeta{.total = 3, .limit = 2, .offset = 1}));
  EXPECT_EQ(guide.startDate, Date(1));
  EXPECT_EQ(guide.endDate, Date(2));
  EXPECT_EQ(guide.ttl(), 300);
  EXPECT_EQ(console.lines.find("BAILED ON Linearprogram "), 0U) << console.lines;
  EXPECT_NE(console.lines.find("end_time"), std::string::npos) << console.lines;
  EXPECT_EQ(console.lines.find('\n'), console.lines.size() - 1);
}

TEST(LinearProgramGuideParser, TakesNoItemsForGranted) {
  const CapturedConsole console;
  for (const char* items : {"null", "[{}, 1]", "[]"}) {
    const Document document{{"meta", kMeta}, {"items", items}};
    EXPECT_TRUE(LinearProgramGuideParser::parse(document, Date(1), Date(2)).force().items.empty());
  }
  EXPECT_EQ(console.lines, "");
}

TEST(LinearProgramGuide, SortsByStart) {
  std::vector<LinearProgram> programs;
  for (const int start : {3, 1, 3, 2, 1}) {
    programs.push_back({.id = std::to_string(programs.size()), .title = "T"});
    programs.back().startTime = Date(start);
  }
  const LinearProgramGuide guide(programs, {}, Date(0), Date(9));
  std::string order;
  for (const auto& program : guide.items) order += program.id;
  EXPECT_EQ(order, "14302");
}

}  // namespace
}  // namespace orvo
