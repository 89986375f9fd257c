// What a server answers, part by part, to a walk over a list and to the guide monitor. The first
// line names who asks: collection, playlist, search, guide or monitor; each further one is the body
// of an answer.

#include <OrvoAPI/Context/ListWalk.h>
#include <OrvoAPI/HTTP/URLError.h>
#include <OrvoAPI/Linear/LinearProgramGuideMonitor.h>
#include <OrvoAPI/Parsing/JSONDataParser.h>
#include <OrvoAPI/Platform/ConsoleSink.h>
#include <OrvoAPI/Queues/MainQueue.h>
#include <OrvoAPI/Testing/ManualQueue.h>
#include <OrvoAPI/Testing/StubNetworkDataProvider.h>
#include <OrvoAPI/Testing/StubSessionProvider.h>
#include <fuzz/FuzzTarget.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

using namespace orvo;

namespace {

constexpr std::size_t kMostAnswers = 64;
constexpr std::chrono::milliseconds kPatience{2};
constexpr int kMostLooks = 5'000;
constexpr Date kMorning{1'493'625'600'000};  // 2017-05-01T08:00:00.000Z

constexpr std::string_view kConfiguration = R"({
  "nav": {}, "colors": {}, "linear_stream_id": "stream", "recently_watched": true,
  "links": {"imprint": "i", "about": "a", "privacy": "p", "terms": "t", "contact": "c",
            "feedback": "f"},
  "tv": {"label": "TV", "description": "On air", "icon": "i"},
  "upcoming_events": {"label": "Soon", "id": "soon"},
  "up_next_hint_time": 1, "player_controls_timeout": 1, "discovery_reset_timeout": 1,
  "relaunch_resume_timeout": 1, "countdown_visibility_timeout": 1, "started_minimum_percent": 1,
  "started_minimum_time": 1, "watched_minimum_percent": 1, "watched_minimum_time_left": 1,
  "share_string_template": "%@", "search_top_results_limit": 6, "playback_interruption_delay": 1,
  "hls_base_url": "https://hls.example/live"})";

Configuration configuration() {
  const Data body(kConfiguration);
  return ConfigurationParser::parse(JSONDataParser::object(body).force(), Environment::staging)
      .force();
}

class Silence final : public Logger {
 public:
  void log(std::string_view, LogLevel, std::string_view, std::string_view) override {}
};

/// A service that answers what the input says, to clients for whom no time passes by itself.
class Service {
 public:
  explicit Service(std::string_view answers) {
    while (!answers.empty() && answers_.size() < kMostAnswers) {
      answers_.push_back(fuzz::takePiece(answers));
    }
  }

  [[nodiscard]] const std::shared_ptr<Context>& context() const { return context_; }
  [[nodiscard]] const std::shared_ptr<ManualQueue>& queue() const { return queue_; }
  [[nodiscard]] std::size_t requests() const { return network_->fetches.count(); }

  /// Answers what is asked until no request comes any more, or no answer is left. Steps of a fetch
  /// run on the library's workers, so that nothing tells when the last has been done: what comes
  /// later than `kPatience` is served the next time.
  void serve() {
    do {
      queue_->run();
      main().drain();
      if (requests() == answered_) continue;
      if (hasSaidAll()) break;
      network_->answer(answered_, 200, answers_[answered_]);
      ++answered_;
    } while (network_->fetches.waitForCount(answered_ + 1, kPatience) || queue_->waiting() > 0);
  }
  /// Refuses what is left, so that no cycle of references keeps itself alive.
  void end() {
    answers_.resize(answered_);
    do {
      serve();
      while (answered_ < requests()) {
        network_->fetches.fail(answered_++, URLError{URLError::cancelled, "the end"});
      }
    } while (network_->fetches.waitForCount(answered_ + 1, 10 * kPatience) ||
             queue_->waiting() > 0);
  }
  [[nodiscard]] bool hasSaidAll() const { return answered_ >= answers_.size(); }

 private:
  static MainQueue::Claim& main() {
    static std::optional<MainQueue::Claim> claim = MainQueue::shared()->claim();
    return *claim;
  }

  std::vector<std::string_view> answers_;
  std::size_t answered_ = 0;
  const std::shared_ptr<ManualClock> clock_ = std::make_shared<ManualClock>(kMorning);
  const std::shared_ptr<ManualQueue> queue_ = std::make_shared<ManualQueue>("fuzz", clock_);
  const std::shared_ptr<StubNetworkDataProvider> network_ =
      std::make_shared<StubNetworkDataProvider>(queue_);
  const std::shared_ptr<Context> context_ = Context::make(
      configuration(), *URL::parse("https://api.example/v3/"), *URL::parse("https://img.example/"),
      std::make_shared<StubSessionProvider>("token", queue_), network_,
      {.logger = std::make_shared<Silence>(), .clock = clock_});
};

template <class First>
void walk(Service& service, First first) {
  ListWalk walk(service.context(), first);
  struct Seen {
    std::optional<std::int64_t> last;
    bool wentOn = true;
  };
  const auto seen = std::make_shared<Seen>();  // the walk may outlive its input
  const auto all = walk.forEach(service.queue(), [seen](const auto& part) {
    seen->wentOn = seen->wentOn && (!seen->last || part->meta.offset > *seen->last);
    seen->last = part->meta.offset;
  });
  const auto isOver = [&] { return all.didComplete() || service.hasSaidAll(); };
  for (int look = 0; look < kMostLooks && !isOver(); ++look) service.serve();
  fuzz::require(isOver(), "a walk goes on or ends");
  fuzz::require(seen->wentOn, "each part lies further on than the one before");
  fuzz::require(service.requests() <= kMostAnswers + 1, "a walk asks once for each part");
}

void watch(Service& service) {
  const auto monitor =
      LinearProgramGuideMonitor::make(service.context(), {.mainQueue = service.queue()});
  const auto complete = std::make_shared<bool>(true);
  monitor->onUpdate([complete](const GuideUpdate& update) {
    *complete = *complete && update.video != nullptr && !update.days.empty();
    for (const auto& day : update.days) *complete = *complete && !day.programs.empty();
  });
  (void)monitor->load(kMorning, 3);
  service.serve();
  for (int step = 0; step < 8 && service.queue()->delayed() > 0; ++step) {
    const auto before = service.requests();
    service.queue()->advanceToNext();
    service.serve();
    if (const auto next = monitor->loadNext(); next && step % 2 == 0) (*next)();
    service.serve();
    fuzz::require(service.requests() - before <= 2 * kMostAnswers, "a programme's end asks seldom");
  }
  fuzz::require(*complete, "an update has a video, and days with programmes");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  static const bool silent = (setConsoleSink([](std::string_view) {}), true);
  (void)silent;
  auto rest = fuzz::text(bytes, size);
  const auto who = fuzz::takePiece(rest);
  Service service(rest);
  const auto& context = service.context();
  if (who == "collection") {
    walk(service, context->collectionCapability("c"));
  } else if (who == "playlist") {
    walk(service, context->playlistCapability("p"));
  } else if (who == "search") {
    walk(service, context->searchCapability("q", SearchCollection::ResultsKind::films));
  } else if (who == "guide") {
    walk(service, context->linearProgramGuideCapability(kMorning, kMorning));
  } else if (who == "monitor") {
    watch(service);
  } else {
    return -1;
  }
  service.end();
  return 0;
}
