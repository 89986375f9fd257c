#include <OrvoAPI/Base/CharactersInternal.h>
#include <OrvoAPI/HTTP/URL.h>

#include <uriparser/Uri.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

namespace orvo {
namespace {

/// A reference as the parser took it apart; frees the parser's lists.
class ParsedURI {
 public:
  explicit ParsedURI(std::string_view text) {
    const char* errorPosition = nullptr;
    valid_ = !text.empty() && text.size() <= URL::kMaximumLength &&
             uriParseSingleUriExA(&uri_, text.data(), text.data() + text.size(), &errorPosition) ==
                 URI_SUCCESS;
  }
  ParsedURI(const ParsedURI& reference, const ParsedURI& base)
      : valid_(uriAddBaseUriA(&uri_, &reference.uri_, &base.uri_) == URI_SUCCESS) {}
  ParsedURI(const ParsedURI&) = delete;
  ParsedURI& operator=(const ParsedURI&) = delete;
  ~ParsedURI() { uriFreeUriMembersA(&uri_); }

  [[nodiscard]] bool valid() const { return valid_; }

  [[nodiscard]] std::optional<std::string> text() const {
    int length = 0;
    if (uriToStringCharsRequiredA(&uri_, &length) != URI_SUCCESS) return std::nullopt;
    // The writer ends its text with a NUL, for which a string has room after its last character.
    std::string text(static_cast<std::size_t>(length), '\0');
    if (uriToStringA(text.data(), &uri_, length + 1, nullptr) != URI_SUCCESS) return std::nullopt;
    return text;
  }

 private:
  UriUriA uri_{};
  bool valid_ = false;
};

enum CharacterClass : unsigned char {
  kPath = 1,
  kQuery = 2,
  kQueryValue = 4,
  // What can follow a part of a URL.
  kAfterScheme = 8,
  kAfterAuthority = 16,
  kAfterPath = 32,
  kAfterQuery = 64,
  kHostName = 128
};

constexpr std::array<unsigned char, 256> makeCharacterClasses() {
  std::array<unsigned char, 256> classes{};
  const auto add = [&classes](std::string_view characters, int what) {
    for (const char c : characters) {
      auto& entry = classes[static_cast<unsigned char>(c)];
      entry = static_cast<unsigned char>(entry | what);
    }
  };
  add("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~",
      kPath | kQuery | kQueryValue);
  add("!$'()*,:@/", kPath | kQuery | kQueryValue);
  add("&+;=", kPath | kQuery);
  add("?", kQuery | kQueryValue);
  add(":", kAfterScheme);
  add("/", kAfterScheme | kAfterAuthority);
  add("?", kAfterScheme | kAfterAuthority | kAfterPath);
  add("#", kAfterScheme | kAfterAuthority | kAfterPath | kAfterQuery);
  add("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-.", kHostName);
  return classes;
}

constexpr auto kCharacterClasses = makeCharacterClasses();

bool isIn(char c, CharacterClass what) {
  return (kCharacterClasses[static_cast<unsigned char>(c)] & what) != 0;
}

bool isPercentTripleAt(std::string_view text, std::size_t at) {
  return text[at] == '%' && at + 2 < text.size() && detail::isHexDigit(text[at + 1]) &&
         detail::isHexDigit(text[at + 2]);
}

void appendPercentTriple(std::string& out, char c) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  const auto byte = static_cast<unsigned char>(c);
  out += '%';
  out += kDigits[byte >> 4];
  out += kDigits[byte & 15];
}

void appendPath(std::string& out, std::string_view path, std::string_view alsoEncoded = {}) {
  for (std::size_t i = 0; i < path.size(); ++i) {
    const bool kept = isIn(path[i], kPath) || isPercentTripleAt(path, i);
    if (kept && alsoEncoded.find(path[i]) == std::string_view::npos) {
      out += path[i];
    } else {
      appendPercentTriple(out, path[i]);
    }
  }
}

bool isQueryText(std::string_view text) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (!isIn(text[i], kQuery) && !isPercentTripleAt(text, i)) return false;
  }
  return true;
}

/// Where the parts of a web address end that is as plain as nearly all in documents: a host name, a
/// path, perhaps a query. Taking it apart costs the parser more than all else that is done with it;
/// anything less plain is left to the parser.
struct PlainAddress {
  static constexpr std::string_view kScheme = "https";
  static constexpr std::size_t kHostBegin = kScheme.size() + 3;

  std::size_t hostEnd = 0;
  std::size_t pathEnd = 0;

  static std::optional<PlainAddress> of(std::string_view text) {
    if (!text.starts_with("https://") || text.size() > URL::kMaximumLength) return std::nullopt;
    const auto skip = [&](std::size_t at, CharacterClass what) {
      while (at < text.size() && isIn(text[at], what)) ++at;
      return at;
    };
    PlainAddress address;
    std::size_t at = address.hostEnd = skip(kHostBegin, kHostName);
    if (at == kHostBegin) return std::nullopt;
    if (at < text.size() && text[at] == '/') at = skip(at, kPath);
    address.pathEnd = at;
    if (at < text.size() && text[at] == '?') at = skip(at, kQuery);
    return at == text.size() ? std::optional(address) : std::nullopt;
  }
};

/// Whether the text is a path, perhaps with a query, that resolving only appends to the base's path
/// up to its last "/": it could not be taken for anything else, and no segment is empty, "." or
/// "..".
bool isPlainPath(std::string_view text) {
  bool firstSegment = true, segmentBegins = true;
  std::size_t at = 0;
  for (; at < text.size() && text[at] != '?'; ++at) {
    const char c = text[at];
    if (segmentBegins && (c == '/' || c == '.')) return false;
    if (firstSegment && c == ':') return false;
    if (!isIn(c, kPath) && !isPercentTripleAt(text, at)) return false;
    segmentBegins = c == '/';
    firstSegment = firstSegment && c != '/';
  }
  return at > 0 && text.size() <= URL::kMaximumLength &&
         (at == text.size() || isQueryText(text.substr(at + 1)));
}

}  // namespace

// The text is known to be valid, so that a few delimiters tell its parts.
URL::URL(std::string validText) : text_(std::move(validText)) {
  const std::string_view text = text_;
  const auto position = [](std::size_t at) { return static_cast<std::uint32_t>(at); };
  // By hand: find_first_of calls the C library for every character.
  const auto endOf = [text](std::size_t from, CharacterClass what) {
    while (from < text.size() && !isIn(text[from], what)) ++from;
    return from;
  };

  std::size_t at = endOf(0, kAfterScheme);
  if (at < text.size() && text[at] == ':') {
    schemeEnd_ = position(at);
    ++at;
  } else {
    at = 0;
  }
  if (text.substr(at, 2) == "//") {
    const auto authorityEnd = endOf(at + 2, kAfterAuthority);
    const auto userEnd = text.substr(0, authorityEnd).find('@', at + 2);
    auto begin = userEnd == std::string_view::npos ? at + 2 : userEnd + 1;
    const bool bracketed = text.substr(begin, 1) == "[";
    if (bracketed) ++begin;
    hostBegin_ = position(begin);
    hostEnd_ = position(std::min(text.find(bracketed ? ']' : ':', begin), authorityEnd));
    at = authorityEnd;
  }
  pathBegin_ = position(at);
  pathEnd_ = position(endOf(at, kAfterPath));
  queryEnd_ = position(endOf(at, kAfterQuery));
}

std::optional<URL> URL::parse(std::string_view text) {
  if (const auto plain = PlainAddress::of(text)) {
    URL url;
    url.text_ = text;
    url.schemeEnd_ = PlainAddress::kScheme.size();
    url.hostBegin_ = PlainAddress::kHostBegin;
    url.hostEnd_ = url.pathBegin_ = static_cast<std::uint32_t>(plain->hostEnd);
    url.pathEnd_ = static_cast<std::uint32_t>(plain->pathEnd);
    url.queryEnd_ = static_cast<std::uint32_t>(text.size());
    return url;
  }
  if (!ParsedURI(text).valid()) return std::nullopt;
  return URL(std::string(text));
}

/// Whether resolving a plain path leaves all up to the last "/" of this URL's path as it is.
bool URL::isPlainBase() const {
  const auto name = host();
  const auto afterName = part(hostEnd_, pathBegin_);
  return (scheme() == "https" || scheme() == "http") && hostBegin_ == schemeEnd_ + 3 &&
         !name.empty() &&
         std::all_of(name.begin(), name.end(), [](char c) { return isIn(c, kHostName); }) &&
         afterName != ":" && path().starts_with('/') &&
         path().find("/.") == std::string_view::npos && path().find("//") == std::string_view::npos;
}

URL::URL(const URL& base, std::string_view plainPath)
    : schemeEnd_(base.schemeEnd_),
      hostBegin_(base.hostBegin_),
      hostEnd_(base.hostEnd_),
      pathBegin_(base.pathBegin_) {
  const auto kept = base.part(0, base.pathBegin_ + base.path().rfind('/') + 1);
  text_.reserve(kept.size() + plainPath.size());
  text_.append(kept).append(plainPath);
  queryEnd_ = static_cast<std::uint32_t>(text_.size());
  pathEnd_ = queryEnd_;
  if (const auto mark = plainPath.find('?'); mark != std::string_view::npos) {
    pathEnd_ = static_cast<std::uint32_t>(kept.size() + mark);
  }
}

std::optional<URL> URL::parse(std::string_view reference, const URL& base) {
  // What each fetch asks for; the parser takes ten times as long for the same.
  if (isPlainPath(reference) && base.isPlainBase()) {
    URL url(base, reference);
    if (url.text_.size() > kMaximumLength) return std::nullopt;
    return url;
  }
  const ParsedURI parsedReference(reference);
  if (!parsedReference.valid() || !base.isAbsolute()) return std::nullopt;
  const ParsedURI parsedBase(base.text_);
  const ParsedURI resolved(parsedReference, parsedBase);
  auto text = resolved.valid() ? resolved.text() : std::nullopt;
  if (!text || text->size() > kMaximumLength) return std::nullopt;
  return URL(*std::move(text));
}

std::optional<URL> URL::parsePath(std::string_view path, const URL& base) {
  const auto colon = path.find_first_of(":/?#");
  if (colon != std::string_view::npos && path[colon] == ':') {
    return parse("./" + std::string(path), base);
  }
  return parse(path, base);
}

URL URL::fromPath(std::string_view path) {
  std::string text;
  appendPath(text, path);
  if (!ParsedURI(text).valid()) {
    // ":" and "@" are valid in a path, but not in what reads as the beginning of a reference.
    text.clear();
    appendPath(text, path, ":@");
  }
  return URL(std::move(text));
}

std::optional<std::uint16_t> URL::port() const {
  auto text = part(hostEnd_, pathBegin_);
  if (text.starts_with(']')) text.remove_prefix(1);
  if (!text.starts_with(':')) return std::nullopt;
  text.remove_prefix(1);
  std::uint16_t port = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return port;
}

std::optional<std::string_view> URL::query() const {
  if (pathEnd_ == queryEnd_) return std::nullopt;
  return part(pathEnd_ + 1, queryEnd_);
}

std::optional<std::string_view> URL::fragment() const {
  if (queryEnd_ == text_.size()) return std::nullopt;
  return part(queryEnd_ + 1, text_.size());
}

URL URL::appendingPathComponent(std::string_view component) const {
  auto base = part(0, pathEnd_);
  while (base.size() > pathBegin_ && base.ends_with('/')) base.remove_suffix(1);
  component.remove_prefix(std::min(component.find_first_not_of('/'), component.size()));

  std::string text;
  text.reserve(text_.size() + component.size() + 1);
  text.append(base).append(1, '/');
  appendPath(text, component);
  text.append(part(pathEnd_, text_.size()));
  return URL(std::move(text));
}

std::optional<URL> URL::withQuery(std::string_view query) const {
  if (!isQueryText(query)) return std::nullopt;
  std::string text(part(0, pathEnd_));
  text.append(1, '?').append(query).append(part(queryEnd_, text_.size()));
  if (text.size() > kMaximumLength) return std::nullopt;
  return URL(std::move(text));
}

URL URL::withoutFragment() const {
  if (queryEnd_ == text_.size()) return *this;
  return URL(std::string(part(0, queryEnd_)));
}

std::string percentEncodedQueryValue(std::string_view text) {
  std::string encoded;
  encoded.reserve(text.size() + 8);
  for (const char c : text) {
    if (isIn(c, kQueryValue)) {
      encoded += c;
    } else {
      appendPercentTriple(encoded, c);
    }
  }
  return encoded;
}

}  // namespace orvo
