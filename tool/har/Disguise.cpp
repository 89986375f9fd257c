#include <OrvoAPI/Parsing/JSONDataParser.h>
#include <demo/CodePoints.h>
#include <tool/ModelJson.h>
#include <tool/har/Disguise.h>

#include <algorithm>
#include <cctype>
#include <functional>

namespace orvo::tool {

namespace {

/// Shorter secrets are words that stand elsewhere, too: they are only looked for where one would
/// be.
constexpr std::size_t kLeastDistinct = 8;

/// Texts are searched for all of them: what documents name is taken up to this many.
constexpr std::size_t kMostKnown = 64;
/// A text that has been made for long searches is replaced as a whole.
constexpr std::size_t kMostSearches = 2'000'000;
constexpr std::string_view kWithheld = "(hidden)";

/// The character of that code in hexadecimal digits, or -1.
int hexadecimal(std::string_view digits, std::size_t count) {
  if (digits.size() < count) return -1;
  int value = 0;
  for (const char c : digits.substr(0, count)) {
    if (std::isxdigit(static_cast<unsigned char>(c)) == 0) return -1;
    value = value * 16 + (c <= '9' ? c - '0' : (c | 0x20) - 'a' + 10);
  }
  return value;
}

std::string percentDecoded(std::string_view text) {
  std::string plain;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const int code = text[at] == '%' ? hexadecimal(text.substr(at + 1), 2) : -1;
    plain += code < 0 ? text[at] : static_cast<char>(code);
    if (code >= 0) at += 2;
  }
  return plain;
}

/// The text as a string of JSON holds it, also in nothing but ASCII.
std::string inJson(std::string_view text, bool onlyASCII) {
  constexpr char32_t kFirstBeyond = 0x80, kMost = 0xFFFF;
  const std::string json = Json(text).text();
  std::string out;
  for (auto rest = std::string_view(json).substr(1, json.size() - 2); !rest.empty();) {
    const auto character = demo::firstCharacter(rest);
    const auto point = character.point.value_or(0);
    const bool isEscaped = onlyASCII && point >= kFirstBeyond && point <= kMost;
    out += isEscaped ? demo::unicodeEscape(point) : std::string(character.bytes);
    rest.remove_prefix(character.bytes.size());
  }
  return out;
}

/// Calls `take` with each number of characters at the beginning of the text that may stand for `c`:
/// as itself, escaped in JSON, percent-encoded, or percent-encoded several times.
template <class Take>
void lengthsOf(char c, std::string_view text, Take take) {
  constexpr int kMostEncodings = 5;
  const int code = static_cast<unsigned char>(c);
  if (text.starts_with(c)) take(1);
  if (text.starts_with('\\')) {
    if (text.substr(1).starts_with(c)) take(2);
    if (text.substr(1).starts_with('u') && hexadecimal(text.substr(2), 4) == code) take(6);
  }
  if (!text.starts_with('%')) return;
  for (std::size_t at = 1; at < 1 + 2 * kMostEncodings; at += 2) {
    if (hexadecimal(text.substr(at), 2) == code) take(at + 2);
    if (!text.substr(at).starts_with("25")) return;
  }
}

/// How many characters at the beginning of the text are the secret, or 0. A "%" may stand for
/// itself or begin an escape: all ways to read it are followed, up to a bound, and counted.
std::size_t lengthOf(std::string_view secret, std::string_view text, std::size_t& searches) {
  constexpr std::size_t kMostWays = 16;
  const auto same =
      static_cast<std::size_t>(std::ranges::mismatch(secret, text).in1 - secret.begin());
  // Most texts differ at once, and where nothing is escaped.
  if (text.substr(0, same + 1).find_first_of("%\\") == std::string_view::npos) return 0;
  ++searches;
  std::vector<std::size_t> ends{0};
  for (const char c : secret) {
    std::vector<std::size_t> next;
    for (const std::size_t end : ends) {
      lengthsOf(c, text.substr(end), [&](std::size_t length) {
        const bool isNew = std::ranges::find(next, end + length) == next.end();
        if (isNew && next.size() < kMostWays) next.push_back(end + length);
      });
    }
    if (next.empty()) return 0;
    ends = std::move(next);
  }
  return std::ranges::max(ends);
}

/// Whether a value may begin after, or end before, that character.
bool isEdge(std::string_view neighbour) {
  return neighbour.empty() ||
         std::string_view("/\"=& ?#;,:\\\n\r").find(neighbour[0]) != std::string_view::npos;
}

bool isWord(std::string_view text) {
  const auto isNumbered = [text](std::string_view sort) {
    return text.starts_with(sort) && text.size() > sort.size() &&
           text.find_first_not_of("0123456789", sort.size()) == std::string_view::npos;
  };
  return isNumbered("token-") || isNumbered("masked-");
}

std::string lowerCase(std::string_view text) {
  std::string lower(text);
  std::ranges::transform(lower, lower.begin(), [](unsigned char c) { return std::tolower(c); });
  return lower;
}

bool isSecret(const std::string& lowerName) {
  constexpr std::array<std::string_view, 7> kSigns{"auth", "cookie",  "token",    "secret",
                                                   "key",  "session", "signature"};
  return std::ranges::any_of(kSigns,
                             [&](auto sign) { return lowerName.find(sign) != std::string::npos; });
}

/// Whether what a document calls that is secret.
bool namesSecret(std::string_view key) {
  const std::string lower = lowerCase(key);
  return std::ranges::any_of(std::array{"token", "secret", "password"}, [&](const char* part) {
    return lower.find(part) != std::string::npos;
  });
}

/// Where the credentials begin: behind the name of a scheme, if there is one.
std::size_t credentialsIn(std::string_view authorization) {
  const std::size_t space = authorization.find(' ');
  return space == std::string_view::npos ? 0 : space + 1;
}

/// Takes a user's name and password out of the addresses in the text.
std::string withoutUsers(std::string text) {
  for (const std::string_view mark : {"://", ":\\/\\/"}) {
    for (std::size_t at = 0; (at = text.find(mark, at)) != std::string::npos;) {
      at += mark.size();
      const std::size_t end = std::min(text.find_first_of("/?#\"'<>\\ \t\r\n", at), text.size());
      const std::size_t user = text.substr(at, end - at).rfind('@');
      if (user != std::string::npos) text.erase(at, user + 1);
    }
  }
  return text;
}

}  // namespace

Disguise::Disguise() { begins_['%'] = begins_['\\'] = true; }

std::string Disguise::word(std::string_view secret, const char* sort) {
  if (secret.empty() || isWord(secret)) return std::string(secret);
  const auto found = words_.find(secret);
  if (found != words_.end()) return found->second;
  const auto name = std::string(sort) + "-" + std::to_string(words_.size() + 1);
  return words_.emplace(secret, name).first->second;
}

void Disguise::add(std::string_view secret, const char* sort) {
  const auto isKnown = [this](std::string_view text) {
    return text.empty() ||
           std::ranges::any_of(known_, [text](const auto& known) { return known.first == text; });
  };
  if (isKnown(secret)) return;
  const auto name = word(secret, sort);
  // Servers decode what they are sent before they repeat it, and write it in their own way.
  for (const auto& text :
       {std::string(secret), percentDecoded(secret), inJson(secret, false), inJson(secret, true)}) {
    if (isKnown(text)) continue;
    begins_[static_cast<unsigned char>(text[0])] = true;
    known_.emplace_back(text, name);
  }
  std::ranges::stable_sort(known_, std::greater(),
                           [](const auto& known) { return known.first.size(); });
}

void Disguise::addField(std::string_view name, std::string_view value) {
  const std::string lower = lowerCase(name);
  if (lower == "authorization") return addToken(value.substr(credentialsIn(value)));
  if (lower.find("cookie") == std::string::npos) return;
  const std::size_t begin = value.find('=') + 1;
  const auto cookie = value.substr(begin, value.find(';', begin) - begin);
  if (cookie.size() >= kLeastDistinct) add(cookie, "masked");
}

void Disguise::addDocument(const Data& body) {
  const auto holds = [&body](std::string_view part) {
    return body.view().find(part) != std::string_view::npos;
  };
  if (!holds("oken") && !holds("ecret") && !holds("assword")) return;
  const auto document = JSONDataParser::value(body);
  if (document.failed()) return;
  const auto object = document.value()->object();
  if (const auto token = object ? object->string("token") : std::nullopt) addToken(*token);
  addMembers(*document.value());
}

void Disguise::addMembers(const JSONValue& value) {
  if (const auto array = value.array()) {
    for (const auto& element : *array) addMembers(element);
  }
  const auto object = value.object();
  if (!object) return;
  for (const auto& [key, member] : *object) {
    const auto text = member.string();
    if (!text) {
      addMembers(member);
    } else if (known_.size() < kMostKnown && namesSecret(key) && text->size() >= kLeastDistinct &&
               text->find(' ') == std::string_view::npos) {
      add(*text, "masked");
    }
  }
}

std::string Disguise::text(std::string_view text) {
  return withoutStreams(withoutKnown(withoutUsers(std::string(text))));
}

std::string Disguise::withoutStreams(std::string text) {
  for (const std::string_view name : {"/playlist.m3u8", "/playlist.json"}) {
    for (std::size_t at = 0; (at = text.find(name, at)) != std::string::npos; at += name.size()) {
      const std::size_t end = at > 0 && text[at - 1] == '\\' ? at - 1 : at;
      const std::size_t begin =
          text.find_last_of("/\"'<>=, \t\r\n", std::max<std::size_t>(end, 1) - 1);
      const std::size_t first = begin == std::string::npos ? 0 : begin + 1;
      if (first >= end) continue;
      const auto hidden = word(text.substr(first, end - first));
      text.replace(first, end - first, hidden);
      at = at - (end - first) + hidden.size();
      const std::size_t query = at + name.size();
      if (query >= text.size() || text[query] != '?') continue;
      const std::size_t queryEnd =
          std::min(text.find_first_of(" \t\r\n\"'<>#,;", query), text.size());
      text.replace(query, queryEnd - query,
                   this->query(std::string_view(text).substr(query, queryEnd - query)));
    }
  }
  return text;
}

std::string Disguise::withoutKnown(std::string_view text) const {
  std::string out;
  out.reserve(text.size());
  std::size_t escape = 0, searches = 0;
  for (std::size_t at = 0; at < text.size();) {
    const auto rest = text.substr(at);
    std::size_t length = 0;
    // The next character that may begin an escape: up to there, what is not plain is not there.
    if (at == 0 || escape < at) escape = std::min(text.find_first_of("%\\", at), text.size());
    const auto begin =
        known_.begin() + (begins_[static_cast<unsigned char>(text[at])] ? 0 : std::ssize(known_));
    for (auto known = begin; length == 0 && known != known_.end(); ++known) {
      const auto& [secret, word] = *known;
      // One that ends like the beginning of an escape may go on.
      const bool isPlain =
          rest.starts_with(secret) && secret.find_first_of("%\\") == std::string::npos;
      if (!isPlain && at + secret.size() <= escape) continue;
      length = isPlain ? secret.size() : lengthOf(secret, rest, searches);
      const bool isWhole =
          isEdge(text.substr(at > 0 ? at - 1 : 0, at > 0 ? 1 : 0)) && isEdge(rest.substr(length));
      if (secret.size() < kLeastDistinct && !isWhole) length = 0;
      if (length > 0) out += word;
    }
    if (searches > kMostSearches) return std::string(kWithheld);
    if (length == 0) out += text[at++];
    at += length;
  }
  return out;
}

std::string Disguise::query(std::string_view query) {
  std::string out;
  while (!query.empty()) {
    const auto item = query.substr(0, query.find('&', 1));
    query.remove_prefix(item.size());
    const std::size_t value = item.find('=') == std::string_view::npos ? 1 : item.find('=') + 1;
    out.append(item.substr(0, value)).append(word(item.substr(value)));
  }
  return out;
}

std::string Disguise::address(std::string_view url, bool hidesQuery) {
  std::string plain = text(url);
  std::string tail = plain.substr(std::min(plain.find_first_of("?#"), plain.size()));
  plain.resize(plain.size() - tail.size());
  if (hidesQuery && tail.starts_with('?')) {
    const std::size_t end = std::min(tail.find('#'), tail.size());
    tail = query(tail.substr(0, end)) + tail.substr(end);
  }
  return plain + tail;
}

std::string Disguise::field(std::string_view name, std::string_view value) {
  const std::string lower = lowerCase(name);
  if (lower == "location" || lower == "content-location") return address(value, true);
  if (lower == "link" || lower == "refresh") return playlist(value);
  if (lower == "authorization") {
    const std::size_t begin = credentialsIn(value);
    return std::string(value.substr(0, begin)) + word(value.substr(begin), "token");
  }
  return isSecret(lower) ? word(value) : text(value);
}

std::string Disguise::sessionDocument(const Data& body) {
  if (body.empty()) return "";
  const auto document = JSONDataParser::value(body);
  if (document.failed()) return std::string(kWithheld);
  const auto hidden = [this](const auto& self, const JSONValue& value) -> Json {
    if (const auto string = value.string()) return word(*string);
    Json json = value.object() ? Json::object() : Json::array();
    if (const auto object = value.object()) {
      for (const auto& [key, member] : *object) json.set(std::string(key), self(self, member));
      return json;
    }
    const auto array = value.array();
    if (!array) return toJson(value);
    for (const auto& element : *array) json.push(self(self, element));
    return json;
  };
  return hidden(hidden, *document.value()).text();
}

std::string Disguise::playlist(std::string_view text) {
  const std::string plain = this->text(text);
  std::string out;
  for (std::size_t at = 0; at < plain.size();) {
    const std::size_t begin = std::min(plain.find('?', at), plain.size());
    const std::size_t end = std::min(plain.find_first_of(" \t\r\n\"'<>#,;", begin), plain.size());
    out.append(plain, at, begin - at);
    out += query(std::string_view(plain).substr(begin, end - begin));
    at = end;
  }
  return out;
}

}  // namespace orvo::tool
