#include <demo/CodePoints.h>

namespace orvo::demo {

namespace {

/// The length of the UTF-8 sequence at the start of the text; 0 when it starts with none.
std::size_t sequenceLength(std::string_view text) {
  const auto byte = [&](std::size_t index) -> unsigned {
    return index < text.size() ? static_cast<unsigned char>(text[index]) : 0U;
  };
  const auto continues = [&](std::size_t index) { return (byte(index) & 0xC0U) == 0x80U; };
  const unsigned first = byte(0);
  if (first < 0x80) return 1;
  if (first < 0xC2) return 0;
  if (first < 0xE0) return continues(1) ? 2 : 0;
  if (first < 0xF0) {
    const bool overlong = first == 0xE0 && byte(1) < 0xA0;
    const bool surrogate = first == 0xED && byte(1) >= 0xA0;
    return !overlong && !surrogate && continues(1) && continues(2) ? 3 : 0;
  }
  if (first > 0xF4) return 0;
  const bool outside = (first == 0xF0 && byte(1) < 0x90) || (first == 0xF4 && byte(1) >= 0x90);
  return !outside && continues(1) && continues(2) && continues(3) ? 4 : 0;
}

}  // namespace

Character firstCharacter(std::string_view text) {
  const std::size_t length = sequenceLength(text);
  if (length == 0) return {text.substr(0, 1), std::nullopt};
  // The first byte of a longer sequence holds a bit less for each byte that follows.
  const auto byte = [&](std::size_t index) { return static_cast<unsigned char>(text[index]); };
  char32_t point = length == 1 ? byte(0) : byte(0) & (0x7FU >> length);
  for (std::size_t index = 1; index < length; ++index) point = point << 6 | (byte(index) & 0x3FU);
  return {text.substr(0, length), point};
}

bool isControl(char32_t point) {
  const auto isIn = [&](char32_t first, char32_t last) { return first <= point && point <= last; };
  return point < 0x20 || isIn(0x7F, 0x9F) || point == 0x61C || isIn(0x200E, 0x200F) ||
         isIn(0x2028, 0x202E) || isIn(0x2066, 0x2069);
}

std::string unicodeEscape(char32_t point) {
  static constexpr char kHex[] = "0123456789abcdef";
  std::string text = "\\u";
  for (const unsigned shift : {12U, 8U, 4U, 0U}) text += kHex[point >> shift & 15U];
  return text;
}

}  // namespace orvo::demo
