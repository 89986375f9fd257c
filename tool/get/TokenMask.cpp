#include <OrvoAPI/Network/Session.h>
#include <OrvoAPI/Parsing/JSONDataParser.h>
#include <tool/get/TokenMask.h>

#include <algorithm>
#include <charconv>
#include <initializer_list>
#include <optional>

namespace orvo::tool {

namespace {

constexpr std::string_view kMasked = "***";

/// A character of a text, as it is or as it is escaped, and how long it is there.
struct Written {
  char letter;
  std::size_t size;
};

/// The byte that digits stand for, if they are whole and it is one.
std::optional<char> decoded(std::string_view digits, std::size_t count) {
  constexpr unsigned kLargestByte = 0xFF;
  unsigned code = 0;
  const char* const end = digits.data() + std::min(count, digits.size());
  const auto read = std::from_chars(digits.data(), end, code, 16);
  const bool isWhole = digits.size() >= count && read.ptr == end && code <= kLargestByte;
  return isWhole ? std::optional(static_cast<char>(code)) : std::nullopt;
}

/// Which escapes are taken for what they stand for.
struct Escapes {
  bool ofAddresses;
  bool ofJSON;
};

/// What the text begins with.
Written first(std::string_view text, Escapes escapes) {
  const Written plain{text[0], 1};
  if (text[0] == '%' && escapes.ofAddresses) {
    const auto letter = decoded(text.substr(1), 2);
    return letter ? Written{*letter, 3} : plain;
  }
  if (text[0] != '\\' || text.size() < 2 || !escapes.ofJSON) return plain;
  constexpr std::string_view kLetters = "bfnrt";
  const std::size_t letterAt = kLetters.find(text[1]);
  if (letterAt != std::string_view::npos) return {"\b\f\n\r\t"[letterAt], 2};
  if (text[1] != 'u') return {text[1], 2};
  const auto letter = decoded(text.substr(2), 4);
  return letter ? Written{*letter, 6} : plain;
}

/// How long the token is at the start of the text; 0 when it is not there.
std::size_t sizeAtStart(std::string_view text, std::string_view token, Escapes escapes) {
  std::size_t size = 0;
  for (const char letter : token) {
    if (size >= text.size()) return 0;
    const Written next = first(text.substr(size), escapes);
    if (next.letter != letter) return 0;
    size += next.size;
  }
  return size;
}

/// The most of it: a token may hold what looks like an escape.
std::size_t sizeAtStart(std::string_view text, std::string_view token) {
  std::size_t most = 0;
  for (const bool ofAddresses : {false, true}) {
    for (const bool ofJSON : {false, true}) {
      most = std::max(most, sizeAtStart(text, token, {ofAddresses, ofJSON}));
    }
  }
  return most;
}

std::optional<std::string> tokenOf(std::string_view body) {
  const auto json = JSONDataParser::object(Data(std::string(body)));
  if (json.failed()) return std::nullopt;
  const auto session = SessionParser::parse(*json.value());
  return session.failed() ? std::nullopt : std::optional(session.value()->token);
}

bool isSpace(char letter) {
  return letter == ' ' || letter == '\t' || letter == '\n' || letter == '\r';
}

/// Where the JSON string ends that begins at `begin`, or the text.
std::size_t stringEnd(std::string_view text, std::size_t begin) {
  std::size_t end = begin;
  while (end < text.size() && text[end] != '"') end += text[end] == '\\' ? 2 : 1;
  return std::min(end, text.size());
}

std::string inLowerCase(std::string_view text) {
  std::string out(text);
  for (char& letter : out) {
    if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter - 'A' + 'a');
  }
  return out;
}

bool holdsOneOf(std::string_view name, std::initializer_list<std::string_view> parts) {
  const std::string known = inLowerCase(name);
  return std::ranges::any_of(
      parts, [&](std::string_view part) { return known.find(part) != std::string::npos; });
}

/// Whether a member of this name holds a secret.
bool namesSecretMember(std::string_view name) {
  return holdsOneOf(name, {"token", "secret", "password"});
}

/// Hides the string that follows each `"token":` and its like.
std::string withoutSecretMembers(std::string_view text) {
  std::string out;
  std::size_t done = 0;
  // Each quotation mark may begin a name: in what is no JSON they come in no pairs.
  for (std::size_t at = 0; (at = text.find('"', at)) != std::string_view::npos;) {
    const std::size_t end = text.find('"', at + 1);
    if (end == std::string_view::npos) break;
    const std::string_view name = text.substr(at + 1, end - at - 1);
    std::size_t next = end + 1;
    const auto skipSpaces = [&] {
      while (next < text.size() && isSpace(text[next])) ++next;
    };
    at = end;
    skipSpaces();
    if (next >= text.size() || text[next] != ':' || !namesSecretMember(name)) continue;
    ++next;
    skipSpaces();
    if (next >= text.size() || text[next] != '"') continue;
    out.append(text.substr(done, next + 1 - done)).append(kMasked);
    done = at = stringEnd(text, next + 1);
  }
  return out.append(text.substr(done));
}

}  // namespace

void TokenMask::add(const std::string& token) {
  if (!token.empty() && token != kMasked) tokens_.insert(token);
}

void TokenMask::learnFrom(std::string_view body) {
  if (const auto token = tokenOf(body)) add(*token);
}

std::string TokenMask::text(std::string_view text) const {
  std::string shown(text);
  for (const std::string& token : tokens_) {
    const std::string marks = std::string("%\\") + token[0];
    std::string out;
    std::size_t done = 0;
    for (std::size_t at = 0; (at = shown.find_first_of(marks, at)) != std::string::npos;) {
      const std::size_t size = sizeAtStart(std::string_view(shown).substr(at), token);
      if (size == 0) {
        ++at;
        continue;
      }
      out.append(shown, done, at - done).append(kMasked);
      done = at += size;
    }
    if (done > 0) shown = out.append(shown, done);
  }
  return shown;
}

std::string TokenMask::body(std::string_view body) const {
  std::string shown = withoutSecretMembers(text(body));
  // The key, or the token, may be written in escapes.
  const auto left = tokenOf(shown);
  return !left || *left == kMasked ? shown : R"({"token":"***"})";
}

std::string TokenMask::headerValue(std::string_view name, std::string_view value) const {
  if (namesSecretMember(name) || holdsOneOf(name, {"auth", "api-key", "apikey"})) {
    return std::string(kMasked);
  }
  if (inLowerCase(name) != "set-cookie") return text(value);
  const std::size_t begin = std::min(value.find('='), value.size());
  const std::size_t end = std::min(value.find(';', begin), value.size());
  return text(std::string(value.substr(0, begin)).append("=***").append(value.substr(end)));
}

}  // namespace orvo::tool
