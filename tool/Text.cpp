#include <demo/Json.h>
#include <tool/Text.h>
#include <tool/TextWidthTables.h>

#include <algorithm>
#include <iterator>
#include <span>

namespace orvo::tool {

using demo::utf8SequenceLength;

namespace {

constexpr std::string_view kReplacement = "\uFFFD";
constexpr std::string_view kEllipsis = "\u2026";

std::uint32_t codePoint(std::string_view sequence) {
  const auto byte = [&](std::size_t index) -> std::uint32_t {
    return static_cast<unsigned char>(sequence[index]);
  };
  switch (sequence.size()) {
    case 2:
      return (byte(0) & 0x1F) << 6 | (byte(1) & 0x3F);
    case 3:
      return (byte(0) & 0x0F) << 12 | (byte(1) & 0x3F) << 6 | (byte(2) & 0x3F);
    case 4:
      return (byte(0) & 0x07) << 18 | (byte(1) & 0x3F) << 12 | (byte(2) & 0x3F) << 6 |
             (byte(3) & 0x3F);
    default:
      return byte(0);
  }
}

bool isIn(std::uint32_t point, std::span<const CodePointRange> ranges) {
  const auto range = std::lower_bound(
      ranges.begin(), ranges.end(), point,
      [](const CodePointRange& entry, std::uint32_t value) { return entry.last < value; });
  return range != ranges.end() && range->first <= point;
}

std::size_t columns(std::uint32_t point) {
  if (point < 0x300) return 1;
  if (isIn(point, kZeroWidth)) return 0;
  return isIn(point, kDoubleWidth) ? 2 : 1;
}

bool isControl(std::uint32_t point) { return point < 0x20 || (point >= 0x7F && point < 0xA0); }

bool turnsDirection(std::uint32_t point) {
  return (point >= 0x202A && point <= 0x202E) || (point >= 0x2066 && point <= 0x2069);
}

/// How many bytes at the start of the text fit into the width.
std::size_t fittingBytes(std::string_view text, std::size_t width) {
  std::size_t used = 0;
  std::size_t taken = 0;
  while (used < text.size()) {
    const std::size_t length = std::max<std::size_t>(utf8SequenceLength(text.substr(used)), 1);
    const std::size_t wide = columns(codePoint(text.substr(used, length)));
    if (taken + wide > width) break;
    taken += wide;
    used += length;
  }
  return used;
}

}  // namespace

std::string printable(std::string_view text) {
  std::string out;
  while (!text.empty()) {
    const std::size_t length = utf8SequenceLength(text);
    const std::string_view sequence = text.substr(0, std::max<std::size_t>(length, 1));
    const std::uint32_t point = length == 0 ? 0 : codePoint(sequence);
    if (sequence == "\n" || sequence == "\r" || sequence == "\t") {
      out += ' ';
    } else if (isControl(point) || point == 0x2028 || point == 0x2029) {
      out += kReplacement;
    } else if (!turnsDirection(point)) {
      out += sequence;
    }
    text.remove_prefix(sequence.size());
  }
  return out;
}

std::size_t displayWidth(std::string_view text) {
  std::size_t width = 0;
  while (!text.empty()) {
    const std::size_t length = std::max<std::size_t>(utf8SequenceLength(text), 1);
    width += columns(codePoint(text.substr(0, length)));
    text.remove_prefix(length);
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

std::string paddedLeft(std::string_view text, std::size_t width) {
  const std::string shown = cut(text, width);
  return std::string(width - displayWidth(shown), ' ') + shown;
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
    // A line that is too narrow for a single character holds one nevertheless.
    if (end == 0) end = std::max<std::size_t>(utf8SequenceLength(text), 1);
    std::string_view line = text.substr(0, end);
    line = line.substr(0, line.find_last_not_of(' ') + 1);
    lines.emplace_back(line);
    text.remove_prefix(end);
  }
}

}  // namespace orvo::tool
