#include <OrvoAPI/Parsing/JSONDataParser.h>
#include <tool/ModelJson.h>
#include <tool/har/Disguise.h>

#include <algorithm>

namespace orvo::tool {

namespace {

/// What is called a secret in documents is sought up to this many.
constexpr std::size_t kMostKnown = 64;

bool isWord(std::string_view text) {
  const auto isNumbered = [text](std::string_view sort) {
    return text.starts_with(sort) && text.size() > sort.size() &&
           text.find_first_not_of("0123456789", sort.size()) == std::string_view::npos;
  };
  return isNumbered("token-") || isNumbered("masked-");
}

bool isSecret(const std::string& lowerName) {
  constexpr std::array<std::string_view, 7> kSigns{"auth", "cookie",  "token",    "secret",
                                                   "key",  "session", "signature"};
  return std::ranges::any_of(kSigns,
                             [&](auto sign) { return lowerName.find(sign) != std::string::npos; });
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

std::string Disguise::word(std::string_view secret, const char* sort) {
  if (secret.empty() || isWord(secret)) return std::string(secret);
  const auto found = words_.find(secret);
  if (found != words_.end()) return found->second;
  const auto name = std::string(sort) + "-" + std::to_string(words_.size() + 1);
  return words_.emplace(secret, name).first->second;
}

void Disguise::add(std::string_view secret, const char* sort) {
  if (!secret.empty()) known_.add(secret, word(secret, sort));
}

void Disguise::addField(std::string_view name, std::string_view value) {
  const std::string lower = inLowerCase(name);
  if (lower == "authorization") return addToken(value.substr(credentialsIn(value)));
  if (lower.find("cookie") == std::string::npos) return;
  const std::size_t begin = value.find('=') + 1;
  const auto cookie = value.substr(begin, value.find(';', begin) - begin);
  add(cookie, "masked");
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
    } else if (known_.count() < kMostKnown && namesSecret(key) &&
               text->find(' ') == std::string_view::npos) {
      add(*text, "masked");
    }
  }
}

std::string Disguise::text(std::string_view text) {
  const std::string plain = known_.hiddenIn(withoutUsers(std::string(text)));
  return withoutStreams(
      withSecretMembers(plain, [this](std::string_view value) { return word(value); }));
}

std::string Disguise::withoutStreams(std::string text) {
  for (const std::string_view name : {"/playlist.m3u8", "/playlist.json"}) {
    for (std::size_t at = 0; (at = text.find(name, at)) != std::string::npos; at += name.size()) {
      const std::size_t end = at > 0 && text[at - 1] == '\\' ? at - 1 : at;
      const std::size_t begin =
          text.find_last_of("/\"'<>=, \t\r\n", std::max<std::size_t>(end, 1) - 1);
      const std::size_t first = begin == std::string::npos ? 0 : begin + 1;
      if (first >= end) continue;
      const auto hidden = word(percentDecoded(std::string_view(text).substr(first, end - first)));
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
  const std::string lower = inLowerCase(name);
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
