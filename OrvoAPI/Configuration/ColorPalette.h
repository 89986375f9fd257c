#pragma once

#include <OrvoAPI/Base/Color.h>
#include <OrvoAPI/Futures/Result.h>
#include <OrvoAPI/Parsing/JSONValue.h>

#include <string>
#include <string_view>

namespace orvo {

/// A colour with its instruction for tinting images.
struct ColorResource {
  /// "br_" with a brightness, or "rd_", "gr_" and "bl_" with a change each, from -100 to 100 and
  /// joined by commas; passed on to the app as sent.
  std::string transform;
  Color color;
};

/// The colours of the brand.
struct ColorPalette {
  ColorResource pureWhite;
  ColorResource pureBlack;
  ColorResource white;
  ColorResource black;
  ColorResource red;
  ColorResource yellow;
  ColorResource orange;
  ColorResource grey100;
  ColorResource grey150;
  ColorResource grey200;
  ColorResource grey300;
  ColorResource grey350;

  /// What is known of one of the colours without a document.
  struct Entry {
    std::string_view name;
    ColorResource ColorPalette::*resource;
    std::string_view jsonKey;
    /// These stand in for an entry that is missing or cannot be read.
    std::string_view fallbackHex;
    std::string_view fallbackTransform;
  };
  /// In declaration order.
  static const Entry entries[12];
};

inline constexpr ColorPalette::Entry ColorPalette::entries[12] = {
    {"pureWhite", &ColorPalette::pureWhite, "pure_white", "#FFFFFF", "br_100"},
    {"pureBlack", &ColorPalette::pureBlack, "pure_black", "#000000", "rd_-100,gr_-100,bl_-100"},
    {"white", &ColorPalette::white, "ov_white", "#E3E3E3", "br_79"},
    {"black", &ColorPalette::black, "ov_black", "#121212", "br_-86"},
    {"red", &ColorPalette::red, "ov_red", "#DB0A40", "rd_72,gr_-92,bl_-50"},
    {"yellow", &ColorPalette::yellow, "ov_yellow", "#FAD50A", "rd_97,gr_68,bl_-69"},
    {"orange", &ColorPalette::orange, "ov_orange", "#F2940A", "rd_91,gr_17,bl_-92"},
    {"grey100", &ColorPalette::grey100, "ov_grey_100", "#252525", "br_-71"},
    {"grey150", &ColorPalette::grey150, "ov_grey_150", "#353535", "br_-58"},
    {"grey200", &ColorPalette::grey200, "ov_grey_200", "#686868", "br_-18"},
    {"grey300", &ColorPalette::grey300, "ov_grey_300", "#969696", "br_18"},
    {"grey350", &ColorPalette::grey350, "ov_grey_350", "#B3B3B3", "br_41"}};

/// Reads a colour. Stateless; may be called from any thread.
struct ColorResourceParser {
  /// `fallback`: hexadecimal text of the colour that stands in for an unreadable "hex".
  [[nodiscard]] static Result<ColorResource> parse(const JSONObject& json,
                                                   std::string_view fallback);
};

/// Reads the palette. Stateless; may be called from any thread.
struct ColorPaletteParser {
  /// Never fails: each entry falls back on its own.
  [[nodiscard]] static ColorPalette parse(const JSONObject& json);
};

}  // namespace orvo
