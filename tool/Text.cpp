#include <demo/CodePoints.h>
#include <tool/Text.h>
#include <tool/TextWidthTables.h>

#include <algorithm>
#include <iterator>
#include <span>

namespace orvo::tool {

using demo::Character;
using demo::firstCharacter;

namespace {

constexpr std::string_view kEllipsis = "\u2026";

bool isIn(std::uint32_t point, std::span<const CodePointRange> ranges) {
  const auto range = std::lower_bound(
      ranges.begin(), ranges.end(), point,
      [](const CodePointRange& entry, std::uint32_t value) { return entry.last < value; });
  return range != ranges.end() && range->first <= point;
}

std::size_t columns(const Character& character) {
  const std::uint32_t point = character.point.value_or(0);
  if (point < 0x300) return 1;
  if (isIn(point, kZeroWidth)) return 0;
  return isIn(point, kDoubleWidth) ? 2 : 1;
}

/// How many bytes at the start of the text fit into the width.
std::size_t fittingBytes(std::string_view text, std::size_t width) {
  // A line that would be endless with nothing but combining marks ends as well.
  constexpr std::size_t kMostBytesPerColumn = 64;
  const std::size_t most = kMostBytesPerColumn * (width + 1);
  std::size_t used = 0;
  std::size_t taken = 0;
  while (used < std::min(text.size(), most)) {
    const Character character = firstCharacter(text.substr(used));
    const std::size_t wide = columns(character);
    if (taken + wide > width) break;
    taken += wide;
    used += character.bytes.size();
  }
  return used;
}

}  // namespace

std::string printable(std::string_view text) {
  std::string out;
  while (!text.empty()) {
    const auto [bytes, point] = firstCharacter(text);
    text.remove_prefix(bytes.size());
    if (bytes == "\n" || bytes == "\r" || bytes == "\t") {
      out += ' ';
    } else if (!point) {
      out += demo::kReplacement;
    } else if (!demo::isControl(*point)) {
      out += bytes;
    } else if (!isIn(*point, kZeroWidth)) {
      out += demo::kReplacement;
    }
  }
  return out;
}

std::string escaped(std::string_view text) {
  std::string out;
  while (!text.empty()) {
    const auto [bytes, point] = firstCharacter(text);
    text.remove_prefix(bytes.size());
    if (!point) {
      out += demo::kReplacement;
    } else {
      out += demo::isControl(*point) ? demo::unicodeEscape(*point) : std::string(bytes);
    }
  }
  return out;
}

std::string withoutUserInfo(std::string_view url) {
  const std::size_t colon = url.find("://");
  if (colon == std::string_view::npos) return std::string(url);
  const std::size_t begin = colon + 3;
  const std::size_t at = url.substr(0, url.find_first_of("/?#", begin)).rfind('@');
  if (at == std::string_view::npos || at < begin) return std::string(url);
  return std::string(url.substr(0, begin)).append(kEllipsis).append(url.substr(at));
}

std::string harmless(std::string_view message) {
  std::string out;
  for (std::size_t colon; (colon = message.find("://")) != std::string_view::npos;) {
    const std::size_t begin = colon + 3;
    out.append(message.substr(0, begin));
    message.remove_prefix(begin);
    // Also where it is no address: a "/" may belong to a password that was not encoded.
    const std::size_t at = message.substr(0, message.find_first_of(" \"\n")).rfind('@');
    if (at == std::string_view::npos) continue;
    out.append(kEllipsis);
    message.remove_prefix(at);
  }
  return escaped(out.append(message));
}

std::size_t displayWidth(std::string_view text) {
  std::size_t width = 0;
  while (!text.empty()) {
    const Character character = firstCharacter(text);
    width += columns(character);
    text.remove_prefix(character.bytes.size());
  }
  return width;
}

std::string cut(std::string_view text, std::size_t width) {
  if (fittingBytes(text, width) == text.size()) return std::string(text);
  if (width == 0) return "";
  return std::string(text.substr(0, fittingBytes(text, width - 1))).append(kEllipsis);
}

std::string padded(std::string_view text, std::size_t width) {
  std::string out = cut(text, width);
  return out.append(width - displayWidth(out), ' ');
}

std::vector<std::string> wrapped(std::string_view text, std::size_t width) {
  std::vector<std::string> lines;
  while (true) {
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    if (text.empty()) return lines;
    std::size_t end = fittingBytes(text, width);
    if (end < text.size() && text[end] != ' ') {
      const std::size_t space = text.substr(0, end).rfind(' ');
      if (space != std::string_view::npos) end = space;
    }
    // A line that is too narrow for a single character still holds one.
    if (end == 0) end = firstCharacter(text).bytes.size();
    std::string_view line = text.substr(0, end);
    line = line.substr(0, line.find_last_not_of(' ') + 1);
    lines.emplace_back(line);
    text.remove_prefix(end);
  }
}

}  // namespace orvo::tool
