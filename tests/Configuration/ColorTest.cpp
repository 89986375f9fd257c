#include <OrvoAPI/Configuration/ColorPalette.h>
#include <gtest/gtest.h>

#include <tests/support/Document.h>
#include <tests/support/Outcome.h>

namespace orvo {
namespace {

TEST(Color, IsMadeOfTwentyFourBits) {
  const Color color(0xAAFF8800);
  EXPECT_TRUE(color.red() == 1 && color.blue() == 0 && color.alpha() == 1);
  EXPECT_EQ(color.green(), 136 / 255.0);
  EXPECT_EQ(color, Color(0xFF8800));
}

TEST(Color, WritesItsFractionsUnscaled) {
  EXPECT_EQ(Color(0xFF8800).toHex(), "#010000");
  EXPECT_EQ(Color(0xFEFFFF).toHex(), "#000101");
}

std::string failedKey(const Result<ColorResource>& result) {
  return *caseOf<JSONParseError::unableToParse>(*result.error())->key();
}

TEST(ColorResourceParser, ReportsWhatIsMissing) {
  const auto parse = [](const char* document, const char* fallback) {
    return ColorResourceParser::parse(object(document), fallback);
  };
  for (const auto* const document : {R"({"transform": "t"})", R"({"hex": 7})"}) {
    EXPECT_EQ(failedKey(parse(document, "#2")), "hex");
  }
  EXPECT_EQ(failedKey(parse(R"({"hex": "AB", "transform": 7})", "#2")), "transform");
  const auto* const red = R"({"hex": "red", "transform": "t"})";
  EXPECT_EQ(parse(red, "#2").force().color, Color(2));
  EXPECT_EQ(failedKey(parse(red, "none")), "Unable to create color resource from json or fallback");
}

}  // namespace
}  // namespace orvo
