#include <demo/Json.h>

#include <array>
#include <charconv>
#include <cmath>
#include <type_traits>

namespace orvo::demo {

namespace {

void writeEscape(std::string& out, char character) {
  static constexpr char kHex[] = "0123456789abcdef";
  switch (character) {
    case '"':
      out += "\\\"";
      return;
    case '\\':
      out += "\\\\";
      return;
    case '\n':
      out += "\\n";
      return;
    case '\r':
      out += "\\r";
      return;
    case '\t':
      out += "\\t";
      return;
    default: {
      const auto byte = static_cast<unsigned char>(character);
      out += "\\u00";
      out += kHex[byte >> 4];
      out += kHex[byte & 15];
    }
  }
}

void writeString(std::string& out, std::string_view text) {
  out += '"';
  while (!text.empty()) {
    const std::size_t length = utf8SequenceLength(text);
    if (length == 0) {
      out += "\xEF\xBF\xBD";
    } else if (length == 1 && (text[0] == '"' || text[0] == '\\' ||
                               static_cast<unsigned char>(text[0]) < 0x20 || text[0] == 0x7F)) {
      writeEscape(out, text[0]);
    } else {
      out += text.substr(0, length);
    }
    text.remove_prefix(length == 0 ? 1 : length);
  }
  out += '"';
}

void writeNumber(std::string& out, double value) {
  if (!std::isfinite(value)) {
    out += "null";
    return;
  }
  std::array<char, 64> buffer;
  // Left to itself the shortest form of 100000 is 1e+05.
  const double size = std::abs(value);
  const bool plain = size == 0 || (size >= 1e-6 && size < 1e15);
  const auto format = plain ? std::chars_format::fixed : std::chars_format::scientific;
  const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, format).ptr;
  out.append(buffer.data(), end);
}

void newLine(std::string& out, int depth) {
  out += '\n';
  out.append(static_cast<std::size_t>(depth) * 2, ' ');
}

}  // namespace

std::size_t utf8SequenceLength(std::string_view text) {
  const auto byte = [&](std::size_t index) -> unsigned {
    return index < text.size() ? static_cast<unsigned char>(text[index]) : 0U;
  };
  const auto continues = [&](std::size_t index) { return (byte(index) & 0xC0U) == 0x80U; };
  const unsigned first = byte(0);
  if (text.empty()) return 0;
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

Json Json::array(std::vector<Json> elements) {
  Json json;
  json.value_ = std::move(elements);
  return json;
}

Json Json::object(std::initializer_list<Member> members) {
  Json json;
  json.value_ = Object();
  for (const Member& member : members) json.set(member.key, member.value);
  return json;
}

void Json::push(Json element) { std::get<Array>(value_).push_back(std::move(element)); }

void Json::set(std::string key, Json value) {
  auto& object = std::get<Object>(value_);
  object.keys.push_back(std::move(key));
  object.values.push_back(std::move(value));
}

std::string Json::text() const {
  std::string out;
  write(out, 0, false);
  return out;
}

std::string Json::indentedText() const {
  std::string out;
  write(out, 0, true);
  return out;
}

void Json::write(std::string& out, int depth, bool indented) const {
  std::visit(
      [&](const auto& value) {
        using T = std::decay_t<decltype(value)>;
        if constexpr (std::is_same_v<T, std::monostate>) {
          out += "null";
        } else if constexpr (std::is_same_v<T, bool>) {
          out += value ? "true" : "false";
        } else if constexpr (std::is_same_v<T, std::int64_t>) {
          out += std::to_string(value);
        } else if constexpr (std::is_same_v<T, double>) {
          writeNumber(out, value);
        } else if constexpr (std::is_same_v<T, std::string>) {
          writeString(out, value);
        } else if constexpr (std::is_same_v<T, Array>) {
          writeItems(out, "[]", value, {}, depth, indented);
        } else {
          writeItems(out, "{}", value.values, value.keys, depth, indented);
        }
      },
      value_);
}

void Json::writeItems(std::string& out, const char* brackets, const Array& values,
                      const std::vector<std::string>& keys, int depth, bool indented) {
  out += brackets[0];
  for (std::size_t index = 0; index < values.size(); ++index) {
    if (index > 0) out += ',';
    if (indented) newLine(out, depth + 1);
    if (!keys.empty()) {
      writeString(out, keys[index]);
      out += indented ? ": " : ":";
    }
    values[index].write(out, depth + 1, indented);
  }
  if (indented && !values.empty()) newLine(out, depth);
  out += brackets[1];
}

}  // namespace orvo::demo
