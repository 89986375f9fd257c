#include <demo/CodePoints.h>
#include <tool/Base64.h>
#include <tool/ModelJson.h>
#include <tool/Secrets.h>

#include <algorithm>
#include <cctype>

namespace orvo::tool {

namespace {

/// A text that has been made for long searches is hidden as a whole.
constexpr std::size_t kMostSearches = 2'000'000;

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

/// What base64 of a text that holds the secret, `before` bytes into a group of three, has of it
/// alone: without the digits that tell of its neighbours, too.
std::string coreInBase64(std::string_view secret, std::size_t before) {
  const std::string digits = inBase64(std::string(before, '\0').append(secret));
  const std::size_t begin = (8 * before + 5) / 6;
  const std::size_t end = 8 * (before + secret.size()) / 6;
  return digits.substr(begin, end - begin);
}

/// As addresses write it.
std::string withURLDigits(std::string base64) {
  std::ranges::replace(base64, '+', '-');
  std::ranges::replace(base64, '/', '_');
  return base64;
}

/// Calls `take` with each number of characters at the beginning of the text that may stand for `c`:
/// as itself, escaped in JSON, percent-encoded, or percent-encoded several times.
template <class Take>
void lengthsOf(char c, std::string_view text, Take take) {
  constexpr int kMostEncodings = 5;
  const int code = static_cast<unsigned char>(c);
  if (text.starts_with(c)) take(1);
  if (text.starts_with('\\') && text.size() > 1) {
    constexpr std::string_view kLetters = "bfnrt";
    const std::size_t letter = kLetters.find(text[1]);
    const bool isLetter = letter != std::string_view::npos && "\b\f\n\r\t"[letter] == c;
    if (text[1] == c || isLetter) take(2);
    if (text[1] == 'u' && hexadecimal(text.substr(2), 4) == code) take(6);
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
  bool mayBegin = false;
  lengthsOf(secret[0], text, [&mayBegin](std::size_t) { mayBegin = true; });
  if (!mayBegin) return 0;
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

/// Where the JSON string ends that begins at `begin`, or the text.
std::size_t stringEnd(std::string_view text, std::size_t begin) {
  std::size_t end = begin;
  while (end < text.size() && text[end] != '"') end += text[end] == '\\' ? 2 : 1;
  return std::min(end, text.size());
}

}  // namespace

std::string inLowerCase(std::string_view text) {
  std::string out(text);
  for (char& letter : out) {
    if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter - 'A' + 'a');
  }
  return out;
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

bool namesSecret(std::string_view name) {
  const std::string known = inLowerCase(name);
  static constexpr std::array kParts{"token",   "secret",  "password",   "apikey",
                                     "api_key", "api-key", "credential", "authorization"};
  return std::ranges::any_of(
      kParts, [&](const char* part) { return known.find(part) != std::string::npos; });
}

bool namesSecretField(std::string_view name) {
  static constexpr std::array<std::string_view, 7> kSigns{
      "auth", "cookie", "key", "session", "signature", "credential", "jwt"};
  const std::string known = inLowerCase(name);
  // A challenge says what is wanted, and holds nothing.
  if (known.ends_with("authenticate")) return false;
  return namesSecret(known) || std::ranges::any_of(kSigns, [&](auto sign) {
           return known.find(sign) != std::string::npos;
         });
}

std::string_view cookieValue(std::string_view field) {
  const std::string_view pair = field.substr(0, field.find(';'));
  return pair.substr(pair.find('=') + 1);
}

std::string withoutUsers(std::string text, std::string_view instead) {
  for (const std::string_view mark : {"://", ":\\/\\/"}) {
    for (std::size_t at = 0; (at = text.find(mark, at)) != std::string::npos;) {
      at += mark.size();
      const std::size_t end = std::min(text.find_first_of("/?#\"'<>\\ \t\r\n", at), text.size());
      const std::size_t user = text.substr(at, end - at).rfind('@');
      if (user != std::string::npos) text.replace(at, user + 1, instead);
    }
  }
  return text;
}

std::string withSecretMembers(std::string_view text,
                              const std::function<std::string(std::string_view)>& replace) {
  std::string out;
  std::size_t done = 0;
  // Each quotation mark may begin a name: in what is no JSON they come in no pairs.
  for (std::size_t at = 0; (at = text.find('"', at)) != std::string_view::npos;) {
    const std::size_t end = text.find('"', at + 1);
    if (end == std::string_view::npos) break;
    const std::string_view name = text.substr(at + 1, end - at - 1);
    const auto afterSpaces = [&](std::size_t from) {
      return std::min(text.find_first_not_of(" \t\r\n", from), text.size());
    };
    at = end;
    const std::size_t colon = afterSpaces(end + 1);
    if (colon == text.size() || text[colon] != ':' || !namesSecret(name)) continue;
    const std::size_t value = afterSpaces(colon + 1);
    if (value == text.size() || text[value] != '"') continue;
    out.append(text.substr(done, value + 1 - done));
    done = at = stringEnd(text, value + 1);
    out += replace(text.substr(value + 1, done - value - 1));
  }
  return out.append(text.substr(done));
}

void KnownSecrets::add(std::string_view secret, const std::string& word) {
  if (secret.size() < kShortestSought || texts_.contains(secret)) return;
  ++count_;
  // Servers decode what they are sent before they repeat it, and write it in their own way.
  for (const auto& text :
       {std::string(secret), percentDecoded(secret), inJson(secret, false), inJson(secret, true)}) {
    addForm(text, word);
  }
  constexpr std::size_t kMostTwice = 16;
  addBase64(secret, word, count_ <= kMostTwice ? 2 : 1);
}

void KnownSecrets::addBase64(std::string_view secret, const std::string& word, int encodings) {
  for (const std::size_t before : {0U, 1U, 2U}) {
    const std::string core = coreInBase64(secret, before);
    for (const auto& digits : {core, withURLDigits(core)}) {
      addForm(digits, word);
      if (encodings > 1) addBase64(digits, word, encodings - 1);
    }
  }
}

void KnownSecrets::addForm(const std::string& text, const std::string& word) {
  if (text.size() < kShortestSought || !texts_.insert(text).second) return;
  forms_.push_back({text, word});
  insert(all_, forms_.size() - 1);
  insert(beginningWith_[static_cast<unsigned char>(text[0])], forms_.size() - 1);
}

void KnownSecrets::insert(Numbers& numbers, std::size_t number) const {
  const auto size = [this](std::size_t form) { return forms_[form].text.size(); };
  numbers.insert(std::ranges::upper_bound(numbers, size(number), std::greater(), size), number);
}

const KnownSecrets::Numbers& KnownSecrets::candidates(char first) const {
  // An escape may stand for any character.
  return first == '%' || first == '\\' ? all_ : beginningWith_[static_cast<unsigned char>(first)];
}

std::string KnownSecrets::hiddenIn(std::string_view text) const {
  std::string out;
  out.reserve(text.size());
  std::size_t escape = 0, searches = 0;
  for (std::size_t at = 0; at < text.size();) {
    const auto rest = text.substr(at);
    std::size_t length = 0;
    // The next character that may begin an escape: up to there, what is not plain is not there.
    if (at == 0 || escape < at) escape = std::min(text.find_first_of("%\\", at), text.size());
    for (const std::size_t number : candidates(text[at])) {
      const auto& [secret, word] = forms_[number];
      // One that ends like the beginning of an escape may go on.
      const bool isPlain =
          rest.starts_with(secret) && secret.find_first_of("%\\") == std::string::npos;
      if (!isPlain && at + secret.size() <= escape) continue;
      length = isPlain ? secret.size() : lengthOf(secret, rest, searches);
      if (length == 0) continue;
      out += word;
      break;
    }
    if (searches > kMostSearches) return std::string(kWithheld);
    if (length == 0) out += text[at++];
    at += length;
  }
  return out;
}

}  // namespace orvo::tool
