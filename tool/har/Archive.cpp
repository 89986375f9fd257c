#include <OrvoAPI/HTTP/RequestTimeline.h>
#include <OrvoAPI/HTTP/URLError.h>
#include <OrvoAPI/Parsing/JSONDataParser.h>
#include <OrvoAPI/Version.h>
#include <tool/Arguments.h>
#include <tool/Base64.h>
#include <tool/ModelJson.h>
#include <tool/har/Archive.h>
#include <tool/har/Disguise.h>

#include <algorithm>
#include <cmath>

namespace orvo::tool {

namespace {

using Hop = RequestTimeline::Hop;
using Stage = RequestTimeline::Stage;

/// Whether it says the same when it is read back, as UTF-8 does, and is not mostly escapes.
bool isText(const std::string& bytes) {
  const auto json = Json(bytes).text();
  if (json.size() > 2 * bytes.size() + 64) return false;
  const auto read = JSONDataParser::value(Data(json));
  return !read.failed() && read.value()->string() == bytes;
}

const HTTPResult* answerOf(const Exchange& exchange) {
  return exchange.result ? exchange.result->value() : nullptr;
}

/// Null when nobody measured.
std::shared_ptr<const RequestTimeline> timelineOf(const Exchange& exchange) {
  if (const auto* const answer = answerOf(exchange)) return answer->timeline;
  const auto* const error = exchange.result ? exchange.result->error()->as<URLError>() : nullptr;
  return error != nullptr ? error->timeline : nullptr;
}

double inMilliseconds(std::chrono::nanoseconds span) {
  return std::round(static_cast<double>(span.count()) / 1e3) / 1e3;
}

Json timings(const Hop& hop) {
  const auto between = [&hop](Stage from, Stage to) { return hop.at(to) - hop.at(from); };
  // -1: there was no such thing.
  const auto optional = [](std::chrono::nanoseconds span) {
    return span.count() > 0 ? inMilliseconds(span) : -1;
  };
  // What sets up TLS belongs to the connection as well.
  return Json::object({{"blocked", inMilliseconds(between(Stage::begun, Stage::resolving))},
                       {"dns", optional(between(Stage::resolving, Stage::resolved))},
                       {"connect", optional(between(Stage::resolved, Stage::secured))},
                       {"send", inMilliseconds(between(Stage::secured, Stage::sent))},
                       {"wait", inMilliseconds(between(Stage::sent, Stage::firstByte))},
                       {"receive", inMilliseconds(between(Stage::firstByte, Stage::done))},
                       {"ssl", optional(between(Stage::connected, Stage::secured))}});
}

/// A request whose path holds the token; where it is redirected to there may be another key.
bool isStream(const Exchange& exchange) {
  const auto path = exchange.request.url.path();
  return path.ends_with("/playlist.m3u8") || path.ends_with("/playlist.json");
}

/// Writes the entries of one exchange after another.
class Writer {
 public:
  explicit Writer(Disguise disguise) : disguise_(std::move(disguise)) {}

  void add(const Exchange& exchange) {
    const auto* const answer = answerOf(exchange);
    const auto* const failure = exchange.result ? exchange.result->error() : nullptr;
    const auto timeline = timelineOf(exchange);
    exchange_ = &exchange;
    url_ = disguise_.address(exchange.request.url.withoutFragment().text(), false);
    bool hidesQuery = false;
    if (timeline != nullptr) {
      for (const auto& [hop, response, target] : timeline->redirects) {
        // A query that the redirect brought along may be a key; one that it kept is the request's.
        const auto location = response.headers.value("Location").value_or("");
        hidesQuery = hidesQuery || location.find('?') != std::string_view::npos;
        const auto next = isStream(exchange) ? disguise_.target(target)
                                             : disguise_.address(target.text(), hidesQuery);
        if (isStream(exchange)) streamTarget_ = next;
        entry(hop, responseJson(hop, response));
        url_ = next;
      }
    }
    streamTarget_ = kWithheld;
    const Hop last = timeline != nullptr ? timeline->last : unmeasured();
    entry(last, answer != nullptr ? answerJson(last, *answer) : failureJson(failure));
  }

  [[nodiscard]] Json entries() { return Json::array(std::move(entries_)); }
  [[nodiscard]] Disguise& disguise() { return disguise_; }

 private:
  [[nodiscard]] Hop unmeasured() const {
    Hop hop;
    hop.times.fill(exchange_->begun);
    hop.times.back() = std::max(exchange_->ended, exchange_->begun);
    hop.times[hop.times.size() - 2] = hop.times.back();
    return hop;
  }

  void entry(const Hop& hop, Json response) {
    const auto late = hop.at(Stage::begun) - exchange_->begun;
    const Date date = exchange_->date + std::chrono::floor<std::chrono::milliseconds>(late);
    entries_.push_back(
        Json::object({{"startedDateTime", toJson(date)},
                      {"time", inMilliseconds(hop.at(Stage::done) - hop.at(Stage::begun))},
                      {"request", requestJson(hop)},
                      {"response", std::move(response)},
                      {"cache", Json::object()},
                      {"timings", timings(hop)}}));
  }

  [[nodiscard]] static std::string version(const Hop& hop) {
    return hop.protocol.empty() ? "unknown" : "HTTP/" + std::string(hop.protocol);
  }
  [[nodiscard]] Json headers(const HTTPHeaders& headers) {
    Json list = Json::array();
    for (const auto& [name, value] : headers) {
      list.push(Json::object({{"name", disguise_.name(name)}, {"value", fieldValue(name, value)}}));
    }
    return list;
  }
  [[nodiscard]] std::string fieldValue(std::string_view name, std::string_view value) {
    const std::string lower = inLowerCase(name);
    const bool isAddress = lower == "location" || lower == "content-location";
    return isAddress && isStream(*exchange_) ? streamTarget_ : disguise_.field(name, value);
  }

  Json requestJson(const Hop& hop) {
    Json query = Json::array();
    std::string_view rest = std::string_view(url_).substr(std::min(url_.find('?'), url_.size()));
    while (!rest.empty()) {
      const auto item = rest.substr(1, rest.find('&', 1) - 1);
      rest.remove_prefix(item.size() + 1);
      const std::size_t equals = std::min(item.find('='), item.size());
      query.push(Json::object({{"name", item.substr(0, equals)},
                               {"value", item.substr(std::min(equals + 1, item.size()))}}));
    }
    const auto& request = exchange_->request;
    return Json::object({{"method", request.method},
                         {"url", url_},
                         {"httpVersion", version(hop)},
                         {"cookies", Json::array()},
                         {"headers", headers(request.headers)},
                         {"queryString", std::move(query)},
                         {"headersSize", -1},
                         {"bodySize", request.body.size()}});
  }

  /// Without a body.
  Json responseJson(const Hop& hop, const HTTPURLResponse& response) {
    return responseJson(hop, response, Json::object({{"size", 0}, {"mimeType", ""}}));
  }
  Json responseJson(const Hop& hop, const HTTPURLResponse& response, Json content) {
    const auto location = response.headers.value("Location").value_or("");
    return Json::object({{"status", response.statusCode},
                         {"statusText", ""},
                         {"httpVersion", version(hop)},
                         {"cookies", Json::array()},
                         {"headers", headers(response.headers)},
                         {"content", std::move(content)},
                         {"redirectURL", location.empty() ? "" : fieldValue("Location", location)},
                         {"headersSize", -1},
                         {"bodySize", hop.bytesReceived}});
  }

  Json answerJson(const Hop& hop, const HTTPResult& answer) {
    const auto type = answer.response.headers.value("Content-Type").value_or("");
    Json content = Json::object();
    if (exchange_->leftOut > 0) {
      content.set("size", exchange_->leftOut);
      content.set("mimeType", type);
      content.set("comment", "left out: the recording was full");
      return responseJson(hop, answer.response, std::move(content));
    }
    const auto body = disguised(answer);
    content.set("size", body.size());
    content.set("mimeType", type);
    const bool isPlain = isText(body);
    content.set("text", isPlain ? body : inBase64(body));
    if (!isPlain) content.set("encoding", "base64");
    return responseJson(hop, answer.response, std::move(content));
  }

  std::string disguised(const HTTPResult& answer) {
    constexpr int kLeastError = 400;
    const auto path = exchange_->request.url.path();
    const bool isGiven = answer.response.statusCode < kLeastError;
    if (path.ends_with("/session") && isGiven) return disguise_.sessionDocument(answer.body);
    const auto body = answer.body.view();
    return path.ends_with(".m3u8") ? disguise_.playlist(body) : disguise_.text(body);
  }

  Json failureJson(const AnyError* failure) {
    const auto* const error = failure != nullptr ? failure->as<URLError>() : nullptr;
    const std::string text = error != nullptr     ? error->message
                             : failure != nullptr ? failure->description()
                                                  : "the recording ended before the answer came";
    Json json = responseJson({}, HTTPURLResponse{.url = exchange_->request.url});
    json.set("_error", disguise_.text(text));
    json.set("_errorCode", error != nullptr ? error->code : URLError::unknown);
    return json;
  }

  Disguise disguise_;
  std::vector<Json> entries_;
  // Of the entry that is being written.
  const Exchange* exchange_ = nullptr;
  /// As the archive has it.
  std::string url_;
  /// Where a stream's request is redirected to: the address of the next entry.
  std::string streamTarget_;
};

/// What is secret in all that was sent and answered.
Disguise disguiseFor(const RecordedRun& run, const std::vector<Exchange>& exchanges) {
  Disguise disguise(run.words);
  const auto addFields = [&disguise](const HTTPHeaders& headers) {
    for (const auto& [name, value] : headers) disguise.addField(name, value);
  };
  for (const auto& exchange : exchanges) {
    addFields(exchange.request.headers);
    if (const auto* const answer = answerOf(exchange)) {
      addFields(answer->response.headers);
      disguise.addDocument(answer->body);
      if (isStream(exchange)) disguise.addPlaylist(answer->body.view());
    }
    const auto timeline = timelineOf(exchange);
    if (timeline == nullptr) continue;
    for (const auto& [hop, response, target] : timeline->redirects) {
      addFields(response.headers);
      if (isStream(exchange)) disguise.addPath(target.path());
    }
  }
  return disguise;
}

}  // namespace

std::string archiveText(const RecordedRun& run, const std::vector<Exchange>& exchanges) {
  Writer writer(disguiseFor(run, exchanges));
  for (const auto& exchange : exchanges) writer.add(exchange);
  const auto& service = run.service;
  const auto base = [&](const std::optional<URL>& given, const URL& compiledIn) {
    return writer.disguise().address(given.value_or(compiledIn).text(), false);
  };
  const auto creator = Json::object({{"name", "orvo"}, {"version", OrvoAPIVersionString}});
  const auto own =
      Json::object({{"api", base(service.api, url(service.environment))},
                    {"resources", base(service.resources, resourceURL(service.environment))},
                    {"environment", caseName(service.environment)},
                    {"client", caseName(service.client)},
                    {"date", toJson(run.moment)},
                    {"timeZone", run.timeZone}});
  const auto log = Json::object(
      {{"version", "1.2"}, {"creator", creator}, {"entries", writer.entries()}, {"_orvo", own}});
  return Json::object({{"log", log}}).text() + "\n";
}

}  // namespace orvo::tool
