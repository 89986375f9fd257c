#include <OrvoAPI/Parsing/JSONDataParser.h>
#include <tool/ModelJson.h>
#include <tool/har/Disguise.h>

#include <algorithm>
#include <array>

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

/// What the library itself sends and reads, as far as it is long enough to be sought.
constexpr std::string_view kVocabulary =
    "session configuration products collections playlists playlist.m3u8 playlist.json search "
    "suggest os_family category smart_tv smartphone app_update available calendar canceled "
    "cancelled channels channel/id channel/name channel/order collection_type constants contains "
    "content_type countdown_visibility_timeout deeplink_playlist description device_update "
    "discover discovery_reset_timeout display_ads display_type duration end_of_life end_time "
    "featured feedback hls_base_url includes item_type landscape linear_stream linear_stream_id "
    "live_program long_description long_session min_build min_os_version next_playlist "
    "orvo_background_banner orvo_background_landscape orvo_background_portrait "
    "orvo_background_square orvo_cover_art_banner orvo_cover_art_landscape orvo_cover_art_portrait "
    "orvo_cover_art_square orvo_display_art_banner orvo_display_art_landscape "
    "orvo_display_art_portrait orvo_display_art_square orvo_logo_landscape "
    "orvo_title_treatment_landscape orvo_title_treatment_square playable "
    "playback_interruption_delay player_controls_timeout portrait production pure_black pure_white "
    "recently_watched redirects relaunch_resume_timeout repear_delay repeat_delay requests "
    "resources schedule search_top_results_limit segments session_interval share_string_template "
    "share_url short_description short_label short_preview_mp4_high short_preview_mp4_low "
    "short_preview_mp4_medium start_time started_minimum_percent started_minimum_time subchannel "
    "subheading template top_results transform unavailable unconfirmed up_next_hint_time "
    "upcoming_events user_rating_prompt video_preview watched_minimum_percent "
    "watched_minimum_time_left";

bool isOwnWord(std::string_view text) {
  return text.find(' ') == std::string_view::npos &&
         kVocabulary.find(text) != std::string_view::npos;
}

/// Whether it is a part of the library's addresses and documents, or made of such: without it there
/// is nothing to replay.
bool isVocabulary(std::string_view secret) {
  if (isOwnWord(secret)) return true;
  const std::string plain = percentDecoded(secret);
  for (std::size_t at = 0; at < plain.size();) {
    const std::size_t end = std::min(plain.find_first_of("/?&=", at), plain.size());
    const auto part = std::string_view(plain).substr(at, end - at);
    if (part.size() + 1 >= kShortestSought && isOwnWord(part)) return true;
    at = end + 1;
  }
  return false;
}

bool isNumber(std::string_view text) {
  return text.find_first_not_of("0123456789") == std::string_view::npos;
}

/// `2026-11-24`, `00:00.000Z`, `127.0.0.1`: stands in many places, and belongs to nobody.
bool isMomentOrHost(std::string_view text) {
  const bool isDay = text.size() >= 10 && isNumber(text.substr(0, 4)) && text[4] == '-' &&
                     isNumber(text.substr(5, 2)) && text[7] == '-';
  const bool isTime = text.find_first_of(":Z") != std::string_view::npos;
  const bool isHost = std::ranges::count(text, '.') == 3;
  return (isDay || isTime || isHost) &&
         text.find_first_not_of("0123456789-:.+TZ\"") == std::string_view::npos;
}

/// Where the credentials begin: behind the name of a scheme, if there is one.
std::size_t credentialsIn(std::string_view authorization) {
  const std::size_t space = authorization.find(' ');
  return space == std::string_view::npos ? 0 : space + 1;
}

}  // namespace

std::string Disguise::word(std::string_view secret, const char* sort) {
  if (secret.empty() || isWord(secret) || numbers_.contains(secret)) return std::string(secret);
  const auto found = words_.find(secret);
  if (found != words_.end()) return found->second;
  const auto number = std::to_string(words_.size() + 1);
  // A number may stand where a document would be none with a word in it.
  const bool isPlain =
      std::string_view(sort) == "masked" && secret.size() >= kShortestSought && isNumber(secret);
  const auto name =
      isPlain ? std::string(secret.size() - std::min(number.size(), secret.size()), '9') + number
              : std::string(sort) + "-" + number;
  if (isPlain) numbers_.insert(name);
  return words_.emplace(secret, name).first->second;
}

void Disguise::addToken(std::string_view token) {
  if (!token.empty() && !isOwnWord(token)) known_.add(token, word(token, "token"));
}

bool Disguise::isSpoken(std::string_view secret) const {
  return std::ranges::any_of(
      spoken_, [secret](const auto& spoken) { return spoken.find(secret) != std::string::npos; });
}

void Disguise::add(std::string_view secret) {
  const bool isOrdinary =
      secret.empty() || isVocabulary(secret) || isMomentOrHost(secret) || isSpoken(secret);
  if (!isOrdinary) known_.add(secret, word(secret));
}

void Disguise::addField(std::string_view name, std::string_view value) {
  const std::string lower = inLowerCase(name);
  if (lower == "authorization") return addToken(value.substr(credentialsIn(value)));
  if (lower.find("cookie") != std::string::npos) add(cookieValue(value));
}

void Disguise::addPath(std::string_view path) {
  // What is short, or has no digits, may be a folder's name.
  constexpr std::size_t kShortestKey = 12;
  while (!path.empty()) {
    const auto part = path.substr(0, path.find('/'));
    path.remove_prefix(std::min(part.size() + 1, path.size()));
    const bool isKey =
        part.size() >= kShortestKey && part.find_first_of("0123456789") != std::string_view::npos;
    if (isKey && known_.count() < kMostKnown) add(part);
  }
}

void Disguise::addPlaylist(std::string_view text) {
  while (!text.empty()) {
    const auto word = text.substr(0, text.find_first_of(" \t\r\n\"'<>?"));
    text.remove_prefix(std::min(word.size() + 1, text.size()));
    // Files have numbers; their folders may be keys.
    const std::size_t file = word.rfind('/');
    if (file != std::string_view::npos && word.find("://") == std::string_view::npos) {
      addPath(word.substr(0, file));
    }
  }
}

void Disguise::addDocument(const Data& body) {
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
      add(*text);
    }
  }
}

std::string Disguise::text(std::string_view text) {
  const std::string plain = known_.hiddenIn(withoutUsers(std::string(text), ""));
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

std::string Disguise::path(std::string_view path) {
  std::string out;
  while (!path.empty()) {
    const auto part = path.substr(0, path.find('/'));
    path.remove_prefix(part.size());
    out += word(part);
    if (!path.empty()) out += '/';
    path.remove_prefix(std::min<std::size_t>(path.size(), 1));
  }
  return out;
}

std::string Disguise::target(const URL& url) {
  const std::string full = url.withoutFragment().text();
  const std::size_t host = full.find("://") == std::string::npos ? 0 : full.find("://") + 3;
  const std::size_t begin = std::min(full.find_first_of("/?", host), full.size());
  const std::size_t end = std::min(full.find('?', begin), full.size());
  const std::string_view rest(full);
  return text(rest.substr(0, begin)) + path(rest.substr(begin, end - begin)) +
         query(known_.hiddenIn(rest.substr(end)));
}

std::string Disguise::field(std::string_view name, std::string_view value) {
  const std::string lower = inLowerCase(name);
  if (lower == "location" || lower == "content-location") return address(value, true);
  if (lower == "link" || lower == "refresh") return playlist(value);
  if (lower == "authorization") {
    const std::size_t begin = credentialsIn(value);
    return std::string(value.substr(0, begin)) + word(value.substr(begin), "token");
  }
  return namesSecretField(lower) ? word(value) : text(value);
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
  const std::string ends = " \t\r\n\"'<>";
  const std::string plain = this->text(text);
  const std::string_view rest(plain);
  std::string out;
  for (std::size_t at = 0; at < plain.size();) {
    const std::size_t host = plain.find("://", at);
    const std::size_t path =
        host == std::string::npos ? host : plain.find_first_of("/?" + ends, host + 3);
    const std::size_t begin = std::min({plain.find('?', at), path, plain.size()});
    const std::size_t query = std::min(plain.find_first_of("?" + ends, begin), plain.size());
    const std::size_t end = std::min(plain.find_first_of(ends, query), plain.size());
    out.append(plain, at, begin - at);
    out += this->path(rest.substr(begin, query - begin));
    out += this->query(rest.substr(query, end - query));
    at = end;
  }
  return out;
}

}  // namespace orvo::tool
