#include <OrvoAPI/Linear/LinearProgramGuide.h>
#include <gtest/gtest.h>

#include "tests/support/Document.h"

namespace orvo {
namespace {

TEST(LinearProgram, DiffersByEachOfItsFields) {
  const LinearProgram program{.id = "a", .title = "T"};
  for (const auto change : {+[](LinearProgram& other) { other.id = "b"; },
                            +[](LinearProgram& other) { other.title = "U"; },
                            +[](LinearProgram& other) { other.subheading = ""; },
                            +[](LinearProgram& other) { other.shortDescription = ""; },
                            +[](LinearProgram& other) { other.playbackStatus = {}; },
                            +[](LinearProgram& other) {
                              other.imageResources = {"a", KeySet<ImageResourceKey>::fromBits(1)};
                            },
                            +[](LinearProgram& other) { other.startTime = Date(1); },
                            +[](LinearProgram& other) { other.endTime = Date(1); },
                            +[](LinearProgram& other) { other.duration = 0; }}) {
    LinearProgram other = program;
    change(other);
    EXPECT_NE(other, program);
  }
}

TEST(LinearProgramGuideParser, IsSilentOnASilencedConsole) {
  const CapturedConsole console;
  silenceConsole();
  const auto document = object(R"({"meta": {"total": 1, "limit": 1, "offset": 0}, "items": [{}]})");
  EXPECT_TRUE(LinearProgramGuideParser::parse(document, {}, {}).force().items.empty());
  EXPECT_EQ(console.lines, "");
}

}  // namespace
}  // namespace orvo
