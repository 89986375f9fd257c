#include <demo/Images.h>
#include <demo/Lineups.h>
#include <demo/Router.h>
#include <demo/Streams.h>

#include <algorithm>
#include <charconv>
#include <utility>

namespace orvo::demo {

namespace {

Answer json(const Json& document) { return {.body = document.text()}; }

Answer failure(int status, std::string_view message, std::string note = "") {
  return {
      .status = status, .body = Json::object({{"error", message}}).text(), .note = std::move(note)};
}

Answer notFound() { return failure(404, "There is nothing here."); }

Answer json(const std::optional<Json>& document) { return document ? json(*document) : notFound(); }

/// The parts of a path between its slashes.
std::vector<std::string_view> split(std::string_view path) {
  std::vector<std::string_view> parts;
  while (!path.empty()) {
    path.remove_prefix(1);  // the slash
    const std::string_view part = path.substr(0, path.find('/'));
    parts.push_back(part);
    path.remove_prefix(part.size());
  }
  return parts;
}

std::string_view queryItem(const Request& request, std::string_view key) {
  const auto found = request.query.find(key);
  return found == request.query.end() ? std::string_view() : std::string_view(found->second);
}

/// Leaves the value alone when the item is missing; false when it is not a whole number.
bool readNumber(const Request& request, std::string_view key, std::int64_t& value) {
  const std::string_view text = queryItem(request, key);
  if (text.empty()) return true;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  return error == std::errc() && end == text.data() + text.size() && value >= 0;
}

std::optional<Paging> paging(const Request& request) {
  Paging result;
  if (!readNumber(request, "limit", result.limit) ||
      !readNumber(request, "offset", result.offset)) {
    return std::nullopt;
  }
  result.limit = std::min(result.limit, Paging::kLargestLimit);
  return result;
}

}  // namespace

Router::Router(Addresses addresses, int tokenLifetime, std::chrono::seconds programLength)
    : addresses_(std::move(addresses)),
      documents_(catalogue_, addresses_),
      guide_(catalogue_, programLength),
      sessions_(tokenLifetime) {}

Answer Router::answer(const Request& request) {
  if (request.method != "GET" && request.method != "HEAD") {
    return failure(405, "Only GET is served.");
  }
  const Segments path = split(request.path);
  if (path.empty()) return notFound();
  if (path[0] == "v3") return api(request, path);
  if (path[0] == "hls") return stream(request, path);
  if (path[0] == "resources") return resource(path);
  if (path[0] == "beacons" || path[0] == "ads") return {.status = 204, .contentType = ""};
  if (path[0] == "lineups" && path.size() == 2 && path[1].ends_with(".json")) {
    const std::string_view name = path[1].substr(0, path[1].size() - 5);
    return json(lineup(name, catalogue_, addresses_, present()));
  }
  return notFound();
}

Answer Router::api(const Request& request, const Segments& path) {
  if (path.size() == 2 && path[1] == "session") {
    if (queryItem(request, "os_family").empty() || queryItem(request, "category").empty()) {
      return failure(400, "A session needs os_family and category.");
    }
    Answer answer = json(Json::object({{"token", sessions_.open()}}));
    answer.note = "a new session";
    return answer;
  }
  if (path.size() == 4 && path[1] == "configuration" && path[3] == "v1") {
    return json(documents_.configuration());
  }
  if (auto refused = refusal(request)) return *std::move(refused);
  return content(request, path);
}

std::optional<Answer> Router::refusal(const Request& request) {
  switch (sessions_.use(request.authorization)) {
    case Sessions::Answer::granted:
      return std::nullopt;
    case Sessions::Answer::missing:
      return failure(401, "A token is needed.", "no token");
    case Sessions::Answer::unknown:
      return failure(401, "The token is unknown.", "unknown token");
    case Sessions::Answer::expired:
      break;
  }
  return failure(401, "The token has expired.", "expired token");
}

Answer Router::content(const Request& request, const Segments& path) const {
  const std::optional<Paging> part = paging(request);
  if (!part) return failure(400, "limit and offset are whole numbers.");
  if (path.size() == 2 && path[1] == "epg") return guide(request, *part);
  if (path.size() == 2 && path[1] == "search") {
    return json(documents_.searchResults(queryItem(request, "q"),
                                         queryItem(request, "collection_type"), *part, present()));
  }
  if (path.size() != 3) return notFound();
  if (path[1] == "products") return product(path[2]);
  if (path[1] == "collections") return json(documents_.collection(path[2], *part, present()));
  if (path[1] == "playlists") {
    return json(documents_.playlist(path[2], queryItem(request, "includes"), *part, present()));
  }
  if (path[1] == "search" && path[2] == "suggest") {
    return json(documents_.suggestions(queryItem(request, "q")));
  }
  return notFound();
}

Answer Router::product(std::string_view id) const {
  if (const auto program = guide_.video(id)) return json(documents_.product(*program, present()));
  return json(documents_.product(id, present()));
}

Answer Router::guide(const Request& request, const Paging& part) const {
  const auto start = parseInstant(queryItem(request, "start_time"));
  const auto end = parseInstant(queryItem(request, "end_time"));
  if (!start || !end) return failure(400, "start_time and end_time are needed.");
  const auto document = guide_.part(*start, *end, part, present());
  return document ? json(*document) : failure(400, "The range is too long.");
}

std::optional<Product> Router::video(std::string_view id) const {
  const Product* found = catalogue_.product(id);
  if (found == nullptr) return guide_.video(id);
  if (found->sort != Product::Sort::video) return std::nullopt;
  return *found;
}

Answer Router::stream(const Request& request, const Segments& path) {
  if (path.size() != 4) return notFound();
  const std::optional<Product> found = video(path[1]);
  if (!found) return notFound();
  if (!sessions_.knows(path[2])) {
    return failure(403, "The address holds no token of this service.", "unknown token");
  }
  constexpr const char* kPlaylist = "application/vnd.apple.mpegurl";
  if (path[3] == "playlist.m3u8") return {.contentType = kPlaylist, .body = masterPlaylist()};
  if (path[3] == "audio.m3u8") {
    return {.contentType = kPlaylist, .body = mediaPlaylist(*found, present())};
  }
  if (const auto number = segmentNumber(path[3])) {
    return {.contentType = "audio/aac", .body = segment(*number)};
  }
  if (path[3] == "playlist.json") {
    if (auto refused = refusal(request)) return *std::move(refused);
    return json(documents_.adMetadata(path[1]));
  }
  return notFound();
}

Answer Router::resource(const Segments& path) const {
  constexpr std::string_view kInstructions = "im:i:";
  const auto image = [&](std::string_view name, std::string_view rendition,
                         std::string_view instructions) {
    const Transformation transformation = parseTransformation(instructions, rendition);
    return Answer{.contentType = transformation.png ? "image/png" : "image/jpeg",
                  .body = imageFile(name, transformation)};
  };
  // A lineup's artwork is found under an address of another shape, made from a template.
  if (path.size() == 5 && path[1] == "lineup") return image(path[3], path[4], path[2]);
  if (path.size() != 4) return notFound();
  if (path[3] == "video.mp4" && path[2].starts_with("short_preview_mp4_")) {
    return {.contentType = "video/mp4", .body = previewFile()};
  }
  if (!path[3].starts_with(kInstructions)) return notFound();
  const bool icon = path[1] == "icon";
  return image(icon ? path[2] : path[1], icon ? "square" : path[2],
               path[3].substr(kInstructions.size()));
}

std::string Router::loggablePath(std::string_view path) {
  const Segments parts = split(path);
  std::string text;
  for (std::size_t index = 0; index < parts.size(); ++index) {
    text += '/';
    text += index == 2 && parts[0] == "hls" ? std::string_view("(token)") : parts[index];
  }
  return text;
}

}  // namespace orvo::demo
