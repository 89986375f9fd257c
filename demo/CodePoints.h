#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace orvo::demo {

/// What stands for bytes that are not UTF-8.
inline constexpr std::string_view kReplacement = "\uFFFD";

/// A character of a text.
struct Character {
  std::string_view bytes;
  /// Nothing for a byte that does not begin a UTF-8 sequence.
  std::optional<char32_t> point;
};

/// The character at the start of a text, which is not empty.
[[nodiscard]] Character firstCharacter(std::string_view text);

/// Whether terminals and editors obey the character instead of showing it: control characters of
/// seven and of eight bits, separators of lines and paragraphs, and what sets the direction of
/// writing.
[[nodiscard]] bool isControl(char32_t point);

/// The escape of JSON, `\u001b`, for a code point of at most four hexadecimal digits.
[[nodiscard]] std::string unicodeEscape(char32_t point);

}  // namespace orvo::demo
