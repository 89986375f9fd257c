#include <OrvoAPI/Configuration/ColorPalette.h>
#include <OrvoAPI/Model/RequiredMembersInternal.h>

#include <optional>

namespace orvo {

Result<ColorResource> ColorResourceParser::parse(const JSONObject& json,
                                                 std::string_view fallback) {
  static constexpr detail::TextIndex kKeys({"hex", "transform"});
  const detail::JSONMembers<kKeys> members(json);
  RequiredMembers required("ColorResource");
  const auto hex = required.text(members["hex"]);
  const auto transform = required.text(members["transform"]);
  if (required.failed()) return required.failure();
  auto color = Color::fromHexString(hex);
  if (!color) color = Color::fromHexString(fallback);
  if (!color) {
    required.fail("Unable to create color resource from json or fallback");
    return required.failure();
  }
  return ColorResource{.transform = std::string(transform), .color = *color};
}

ColorPalette ColorPaletteParser::parse(const JSONObject& json) {
  ColorPalette palette;
  for (const auto& entry : ColorPalette::entries) {
    ColorResource& resource = palette.*entry.resource;
    if (const auto member = json.object(entry.jsonKey)) {
      auto parsed = ColorResourceParser::parse(*member, entry.fallbackHex);
      if (ColorResource* found = parsed.value()) {
        resource = std::move(*found);
        continue;
      }
    }
    resource = {.transform = std::string(entry.fallbackTransform),
                .color = Color::fromHexString(entry.fallbackHex).value_or(Color())};
  }
  return palette;
}

}  // namespace orvo
