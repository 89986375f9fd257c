#include <OrvoAPI/Configuration/ColorPalette.h>
#include <OrvoAPI/Model/RequiredMembersInternal.h>

#include <optional>

namespace orvo {
namespace {

consteval detail::TextIndex entryKeys() {
  std::string_view keys[std::size(ColorPalette::entries)];
  for (std::size_t i = 0; i < std::size(keys); ++i) keys[i] = ColorPalette::entries[i].jsonKey;
  return detail::TextIndex(keys);
}

constexpr detail::TextIndex kEntryKeys = entryKeys();

}  // namespace

Result<ColorResource> ColorResourceParser::parse(const JSONObject& json,
                                                 std::string_view fallback) {
  static constexpr detail::TextIndex kKeys({"hex", "transform"});
  const detail::JSONMembers<kKeys> members(json);
  detail::RequiredMembers required("ColorResource");
  (void)required.text(members["hex"]);
  const auto transform = required.text(members["transform"]);
  if (required.failed()) return required.failure();
  auto color =
      members["hex"].stringAs([](std::string_view hex) { return Color::fromHexString(hex); });
  if (!color) color = Color::fromHexString(fallback);
  if (!color) {
    required.fail(members["hex"].fault(JSONValue::Kind::string),
                  "Unable to create color resource from json or fallback");
    return required.failure();
  }
  return ColorResource{.transform = std::string(transform), .color = *color};
}

ColorPalette ColorPaletteParser::parse(const JSONObject& json) {
  const detail::JSONMembers<kEntryKeys> members(json);
  ColorPalette palette;
  std::size_t number = 0;
  for (const auto& entry : ColorPalette::entries) {
    ColorResource& resource = palette.*entry.resource;
    if (const auto member = members.at(number++).object()) {
      auto parsed = ColorResourceParser::parse(*member, entry.fallbackHex);
      if (ColorResource* found = parsed.value()) {
        resource = std::move(*found);
        continue;
      }
      detail::drop(*member);
    }
    resource = {.transform = std::string(entry.fallbackTransform),
                .color = Color::fromHexString(entry.fallbackHex).value_or(Color())};
  }
  return palette;
}

}  // namespace orvo
