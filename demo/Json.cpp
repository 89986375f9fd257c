#include <demo/CodePoints.h>
#include <demo/Json.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <type_traits>

namespace orvo::demo {

namespace {

/// What a string holds in place of the character; nothing when it holds the character itself.
std::string escape(const Character& character) {
  if (!character.point) return std::string(kReplacement);
  switch (*character.point) {
    case U'"':
      return "\\\"";
    case U'\\':
      return "\\\\";
    case U'\n':
      return "\\n";
    case U'\r':
      return "\\r";
    case U'\t':
      return "\\t";
    default:
      return isControl(*character.point) ? unicodeEscape(*character.point) : "";
  }
}

void writeString(std::string& out, std::string_view text) {
  out += '"';
  while (!text.empty()) {
    const Character character = firstCharacter(text);
    const std::string escaped = escape(character);
    out += escaped.empty() ? character.bytes : escaped;
    text.remove_prefix(character.bytes.size());
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
  // A document nested much deeper would be more indentation than text.
  constexpr int kDeepest = 50;
  out += '\n';
  out.append(static_cast<std::size_t>(std::min(depth, kDeepest)) * 2, ' ');
}

}  // namespace

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

std::string Json::plainText() const {
  if (const auto* string = std::get_if<std::string>(&value_)) return *string;
  return std::holds_alternative<std::monostate>(value_) ? "" : text();
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
