#include <OrvoAPI/Configuration/Configuration.h>
#include <OrvoAPI/Context/URLService.h>
#include <OrvoAPI/Network/Session.h>
#include <OrvoAPI/Parsing/JSONDataParser.h>
#include <fmt/format.h>
#include <tool/OwnRequest.h>
#include <tool/Wording.h>
#include <tool/doctor/Advice.h>
#include <tool/doctor/Checkup.h>
#include <tool/doctor/TLSCheck.h>

#include <algorithm>
#include <utility>

namespace orvo::tool {

namespace {

constexpr std::size_t kMostCollections = 4;

std::string bytesText(std::size_t bytes) {
  return countText(static_cast<std::int64_t>(bytes)) + " bytes";
}

/// The text with what its parser makes of the document.
template <class Parse>
std::optional<AnyError> faultIn(const HTTPResult& answer, Parse parse) {
  const auto read = JSONDataParser::object(answer.body).flatMap([&](const JSONObject& json) {
    return parse(json).map([](const auto&) { return true; });
  });
  return read.failed() ? std::optional(*read.error()) : std::nullopt;
}

}  // namespace

Finding Checkup::unread(const std::string& name, const AnyError& fault, const HTTPResult& answer,
                        std::chrono::nanoseconds time) {
  constexpr int kOrdinary = 200;
  Finding finding = failed(name, fault);
  const int status = answer.response.statusCode;
  if (status != kOrdinary) finding.detail += " (status " + std::to_string(status) + ")";
  finding.time = time;
  return finding;
}

Checkup::Probe Checkup::probe(const std::string& name, const URL& url) {
  const URLRequest request{.url = url,
                           .cachePolicy = CachePolicy::reloadIgnoringLocalAndRemoteCacheData,
                           .timeoutInterval = left(),
                           .totalTimeoutInterval = left()};
  // A stream's path tells the token.
  const OwnRequest own{"doctor", name, name == "stream" ? std::string(kHiddenText) : ""};
  auto result = fetch(tool_, *tool_.network(), request, own, "looking at the " + name);
  if (const AnyError* error = result.error()) return {{}, since(begun_, failed(name, *error))};
  HTTPResult answer = *std::move(result.value());
  Finding finding{.name = name, .detail = bytesText(answer.body.size())};
  if (const auto complaint = complaintAbout(answer, proxy_.has_value(), url.host())) {
    return {std::move(answer), since(begun_, bad(name, complaint->detail, complaint->advice))};
  }
  return {std::move(answer), since(begun_, std::move(finding))};
}

void Checkup::openSession() {
  begin();
  const URLService urls{api_, api_};
  auto [answer, finding] = probe("session", urls.session(tool_.options().client));
  // What a cache kept tells no time.
  if (answer && !answer->response.headers.contains("Age")) serviceDate_ = dateOf(answer->response);
  hasSession_ = finding.outcome == Finding::Outcome::good;
  if (hasSession_) {
    if (const auto fault = faultIn(*answer, SessionParser::parse)) {
      finding = unread("session", *fault, *answer, finding.time);
      hasSession_ = false;
    } else {
      finding.detail = "opened";
    }
  }
  tell(std::move(finding));
}

void Checkup::checkClock() {
  const Date now = Clock::system()->now();
  const std::string advice = clockAdvice(now);
  if (!advice.empty()) return tell(bad("clock", "it says " + dateText(now), advice));
  if (!serviceDate_) return tell({.name = "clock", .detail = dateText(now)});
  using std::chrono::milliseconds;
  const milliseconds ahead = now - *serviceDate_;
  constexpr std::chrono::minutes kMost{2};
  Finding finding{.name = "clock"};
  finding.detail = dateText(now) + ", as the service's";
  if (ahead > kMost || ahead < -kMost) {
    finding = bad("clock",
                  "it is " + spanOfDaysText(ahead) + (ahead.count() > 0 ? " ahead of" : " behind") +
                      " the service's",
                  "set the device's clock, or the service's, whichever is wrong");
  }
  finding.facts = Json::object({{"secondsAhead", static_cast<double>(ahead.count()) / 1000}});
  tell(std::move(finding));
}

void Checkup::fetchConfiguration() {
  begin();
  const URLService urls{api_, api_};
  const auto url = urls.configuration(tool_.options().client);
  if (const AnyError* error = url.error()) return tell(failed("configuration", *error));
  auto [answer, finding] = probe("configuration", *url.value());
  hasConfiguration_ = finding.outcome == Finding::Outcome::good;
  if (hasConfiguration_) {
    const auto environment = tool_.options().environment;
    const auto fault = faultIn(*answer, [environment](const JSONObject& json) {
      return ConfigurationParser::parse(json, environment);
    });
    if (fault) {
      finding = unread("configuration", *fault, *answer, finding.time);
      hasConfiguration_ = false;
    }
  }
  tell(std::move(finding));
}

void Checkup::fetchContent() {
  if (!hasSession_ || !hasConfiguration_) {
    return skip({"page", "image", "stream"},
                hasSession_ ? "there is no configuration" : "there is no session");
  }
  begin();
  const auto context = tool_.context();
  if (const AnyError* error = context.error()) {
    tell(since(begun_, failed("page", *error)));
    return skip({"image", "stream"}, "there is no page");
  }
  fetchPage(**context.value());
  if (page_ == nullptr) return skip({"image", "stream"}, "there is no page");
  findItems(**context.value());
  begin();
  fetchImage(**context.value());
  fetchStream(**context.value());
}

void Checkup::fetchPage(const Context& context) {
  const auto views = context.systemViews();
  if (views.empty()) {
    return tell(bad("page", "the configuration names none to begin with",
                    "the service's configuration needs mending: orvo config shows it"));
  }
  const auto page = tool_.wait(views.front().fetch(), "looking at a page");
  if (const AnyError* error = page.error()) return tell(since(begun_, failed("page", *error)));
  page_ = *page.value();
  tell(since(begun_, {.name = "page", .detail = page_->title}));
}

/// Looks for an item with an image, and for a video that can be played, on the page.
void Checkup::findItems(const Context& context) {
  const auto isPlayable = [](const ContentItem& item) {
    const Video* video = item.video();
    return video != nullptr && video->playbackStatus == Video::PlaybackStatus::available;
  };
  const auto hasImage = [](const ContentItem& item) {
    const auto& images =
        item.video() != nullptr ? item.video()->imageResources : item.page()->imageResources;
    return images.begin() != images.end();
  };
  for (std::size_t i = 0; i < std::min(page_->collections.size(), kMostCollections); ++i) {
    if (imageItem_ && playableItem_) return;
    begin();
    const auto fetched = tool_.wait(context.fetchItemCollection(page_->collections[i].id),
                                    "looking into a collection");
    if (const AnyError* error = fetched.error()) {
      auto finding = since(begun_, failed("collection", *error));
      finding.detail = page_->collections[i].id + ": " + finding.detail;
      tell(std::move(finding));
      // Where two fail, others do; each may take its time.
      if (std::exchange(isCollectionLost_, true)) return;
      continue;
    }
    const auto& items = (*fetched.value())->items;
    const auto image = std::ranges::find_if(items, hasImage);
    const auto video = std::ranges::find_if(items, isPlayable);
    if (!imageItem_ && image != items.end()) imageItem_ = *image;
    if (!playableItem_ && video != items.end()) playableItem_ = *video;
  }
}

Finding Checkup::nothing(const std::string& name, const std::string& detail) const {
  if (isCollectionLost_) return skipped(name, "there is no collection that shows one");
  return bad(name, detail, "look at another page with orvo page, or at what the service sends");
}

void Checkup::fetchImage(const Context& context) {
  if (!imageItem_) return tell(nothing("image", "nothing on the page has one"));
  const auto& images = imageItem_->video() != nullptr ? imageItem_->video()->imageResources
                                                      : imageItem_->page()->imageResources;
  constexpr double kWidth = 320;
  const auto image = (*images.begin()).second;
  const URL url = image.url({kWidth, 0}, {}, context.resourceHost());
  auto [answer, finding] = probe("image", url);
  if (finding.outcome == Finding::Outcome::good) {
    const auto kind = answer->response.headers.value("Content-Type").value_or("");
    finding.detail = fmt::format("{}, {}, from {}", bytesText(answer->body.size()),
                                 kind.empty() ? "of no type" : kind, url.host());
    if (!kind.starts_with("image/")) {
      finding.outcome = Finding::Outcome::bad;
      finding.advice = "the host of images sends something else: check --resources";
    }
  } else {
    finding.detail = std::string(url.host()) + ": " + finding.detail;
    if (tool_.options().source.ends_with("resources compiled in")) {
      finding.advice = "this host of images is compiled in: name the service's with --resources";
    }
  }
  tell(std::move(finding));
}

void Checkup::fetchStream(const Context& context) {
  if (!playableItem_) return tell(nothing("stream", "no video on the page can be played now"));
  begin();
  const URL url = context.videoURL(playableItem_->video()->id);
  auto [answer, finding] = probe("stream", url);
  if (finding.outcome == Finding::Outcome::good) {
    finding.detail = fmt::format("the playlist of {}, {}, from {}", playableItem_->video()->id,
                                 bytesText(answer->body.size()), url.host());
    if (!answer->body.view().starts_with("#EXTM3U")) {
      finding.outcome = Finding::Outcome::bad;
      finding.advice = "this is no playlist: something else answers for the streams' host";
    }
  } else {
    finding.detail = std::string(url.host()) + ": " + finding.detail;
  }
  tell(std::move(finding));
}

}  // namespace orvo::tool
