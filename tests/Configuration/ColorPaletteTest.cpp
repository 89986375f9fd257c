#include <OrvoAPI/Configuration/ColorPalette.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <utility>

#include "tests/support/Document.h"

namespace orvo {
namespace {

TEST(Color, IsMadeOfTwentyFourBits) {
  const Color color(0xAAFF8800);
  EXPECT_EQ(color.red(), 1);
  EXPECT_EQ(color.green(), 136 / 255.0);
  EXPECT_EQ(color.blue(), 0);
  EXPECT_EQ(color.alpha(), 1);
  EXPECT_EQ(color.green8(), 136);
  EXPECT_EQ(color, Color(0xFF8800));
}

TEST(Color, ReadsTheLongestRunOfHexadecimalDigits) {
  const std::pair<const char*, std::uint32_t> cases[] = {{"FF8800", 0xFF8800},
                                                         {"#ff8800", 0xFF8800},
                                                         {"##fF8800###", 0xFF8800},
                                                         {"12", 0x12},
                                                         {"12zz34", 0x12},
                                                         {"  ab", 0xAB},
                                                         {"#0xAB", 0xAB},
                                                         {"0x", 0},
                                                         {"AA123456", 0x123456},
                                                         {"123456789", 0xFFFFFF},
                                                         {"1#2", 1}};
  for (const auto& [text, value] : cases) {
    EXPECT_EQ(Color::fromHexString(text), Color(value)) << text;
  }
  for (const char* text : {"", "#", "####", "#zz0000", "-1", " ", "+1", "# "}) {
    EXPECT_EQ(Color::fromHexString(text), std::nullopt) << text;
  }
}

TEST(Color, WritesItsFractionsUnscaled) {
  EXPECT_EQ(Color(0xFF8800).toHex(), "#010000");
  EXPECT_EQ(Color(0xFEFFFF).toHex(), "#000101");
}

/// "name key transform #rrggbb" for every colour.
std::string listing(const ColorPalette& palette) {
  std::string text;
  for (const auto& entry : ColorPalette::entries) {
    const ColorResource& resource = palette.*entry.resource;
    char hex[8];
    std::snprintf(hex, sizeof hex, "#%02X%02X%02X", resource.color.red8(), resource.color.green8(),
                  resource.color.blue8());
    text += std::string(entry.name) + " " + std::string(entry.jsonKey) + " " + resource.transform +
            " " + hex + "\n";
  }
  return text;
}

TEST(ColorPaletteParser, HasAColorForEveryEntryThatIsMissing) {
  EXPECT_EQ(listing(ColorPaletteParser::parse(object("{}"))),
            "pureWhite pure_white br_100 #FFFFFF\n"
            "pureBlack pure_black rd_-100,gr_-100,bl_-100 #000000\n"
            "white ov_white br_79 #E3E3E3\n"
            "black ov_black br_-86 #121212\n"
            "red ov_red rd_72,gr_-92,bl_-50 #DB0A40\n"
            "yellow ov_yellow rd_97,gr_68,bl_-69 #FAD50A\n"
            "orange ov_orange rd_91,gr_17,bl_-92 #F2940A\n"
            "grey100 ov_grey_100 br_-71 #252525\n"
            "grey150 ov_grey_150 br_-58 #353535\n"
            "grey200 ov_grey_200 br_-18 #686868\n"
            "grey300 ov_grey_300 br_18 #969696\n"
            "grey350 ov_grey_350 br_41 #B3B3B3\n");
  EXPECT_EQ(ColorPalette::entries[4].resource, &ColorPalette::red);
  EXPECT_EQ(ColorPalette::entries[11].resource, &ColorPalette::grey350);
}

TEST(ColorPaletteParser, FallsBackEntryByEntry) {
  const auto palette = ColorPaletteParser::parse(object(R"({
      "ov_red": {"hex": "#zz0000", "transform": "br_5"},
      "ov_white": {"hex": "#123456", "transform": "br_1"},
      "ov_black": {"hex": "#123456"},
      "ov_orange": "#123456"})"));
  EXPECT_EQ(palette.red.transform, "br_5");
  EXPECT_EQ(palette.red.color, Color(0xDB0A40));
  EXPECT_EQ(palette.white.transform, "br_1");
  EXPECT_EQ(palette.white.color, Color(0x123456));
  EXPECT_EQ(palette.black.transform, "br_-86");
  EXPECT_EQ(palette.black.color, Color(0x121212));
  EXPECT_EQ(palette.orange.color, Color(0xF2940A));
}

TEST(ColorResourceParser, ReportsWhatIsMissing) {
  const Document document{{"hex", R"("1")"}, {"transform", R"("t")"}};
  EXPECT_EQ(
      requirements(document, {"hex", "transform"},
                   [](const JSONObject& json) { return ColorResourceParser::parse(json, "#2"); }),
      "hex -> ColorResource: hex\ntransform -> ColorResource: transform\n");
  const Document unreadable = document.with("hex", R"("red")");
  EXPECT_EQ(ColorResourceParser::parse(unreadable, "#2").force().color, Color(2));
  EXPECT_EQ(failureOf(ColorResourceParser::parse(unreadable, "none")),
            "ColorResource: Unable to create color resource from json or fallback");
}

}  // namespace
}  // namespace orvo
