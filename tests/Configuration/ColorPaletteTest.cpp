#include <OrvoAPI/Configuration/ColorPalette.h>
#include <gtest/gtest.h>

#include "tests/support/Document.h"

namespace orvo {
namespace {

TEST(Color, IsMadeOfTwentyFourBits) {
  const Color color(0xAAFF8800);
  EXPECT_TRUE(color.red() == 1 && color.blue() == 0 && color.alpha() == 1);
  EXPECT_EQ(color.green(), 136 / 255.0);
  EXPECT_EQ(color, Color(0xFF8800));
}

TEST(Color, ReadsTheLongestRunOfHexadecimalDigits) {
  for (const char* text :
       {"AB", "#ab", "##aB###", "ABzz34", "  ab", "#0xAB", "FF0000AB", "ab#12"}) {
    EXPECT_EQ(Color::fromHexString(text), Color(0xAB)) << text;
  }
  EXPECT_EQ(Color::fromHexString("0x"), Color(0));
  EXPECT_EQ(Color::fromHexString("123456789"), Color(0xFFFFFF)) << "too great a number";
  for (const char* text : {"", "#", "####", "#zz0000", "-1", " ", "+1", "# "}) {
    EXPECT_EQ(Color::fromHexString(text), std::nullopt) << text;
  }
}

TEST(Color, WritesItsFractionsUnscaled) {
  EXPECT_EQ(Color(0xFF8800).toHex(), "#010000");
  EXPECT_EQ(Color(0xFEFFFF).toHex(), "#000101");
}

TEST(ColorPaletteParser, FallsBackEntryByEntry) {
  const auto palette = ColorPaletteParser::parse(object(R"({
      "ov_red": {"hex": "#zz0000", "transform": "br_5"},
      "ov_white": {"hex": "#123456", "transform": "br_1"},
      "ov_black": {"hex": "#123456"},
      "ov_orange": "#123456"})"));
  EXPECT_EQ(palette.pureBlack.transform, "rd_-100,gr_-100,bl_-100");
  EXPECT_EQ(palette.grey350.color, Color(0xB3B3B3));
  EXPECT_EQ(palette.red.transform, "br_5");
  EXPECT_EQ(palette.red.color, Color(0xDB0A40));
  EXPECT_EQ(palette.white.transform, "br_1");
  EXPECT_EQ(palette.white.color, Color(0x123456));
  EXPECT_EQ(palette.black.transform, "br_-86");
  EXPECT_EQ(palette.black.color, Color(0x121212));
  EXPECT_EQ(palette.orange.color, Color(0xF2940A));
}

TEST(ColorResourceParser, ReportsWhatIsMissing) {
  const Document document{{"hex", R"("red")"}, {"transform", R"("t")"}};
  const auto parse = [](const JSONObject& json) { return ColorResourceParser::parse(json, "#2"); };
  expectRequired("ColorResource", document, {"hex", "transform"}, parse);
  EXPECT_EQ(parse(document).force().color, Color(2));
  EXPECT_EQ(failureOf(ColorResourceParser::parse(document, "none")),
            "ColorResource: Unable to create color resource from json or fallback");
}

}  // namespace
}  // namespace orvo
