#include <soak/FleetDevice.h>

#include <algorithm>
#include <utility>

namespace orvo::soak {
namespace {

using namespace std::chrono_literals;

constexpr int kScreens = 200;
constexpr int kShelves = 2;
/// How often somebody tries a screen before leaving it.
constexpr int kMostTries = 4;

/// What is logged of requests that fail is what the simulation wants to happen.
struct Silence final : Logger {
  void log(std::string_view, LogLevel, std::string_view, std::string_view) override {}
};

URL address(std::string_view text) { return *URL::parse(text); }

}  // namespace

FleetDevice::FleetDevice(FleetTime& time, std::shared_ptr<FleetService> service,
                         const FleetApp& app, Person person, std::uint32_t seed)
    : time_(time), service_(std::move(service)), app_(app), person_(person), random_(seed) {}

void FleetDevice::after(Milliseconds delay, std::function<void()> task) {
  time_.queue()->postAfter(delay, std::move(task));
}

FleetDevice::Milliseconds FleetDevice::between(Milliseconds least, Milliseconds most) {
  return Milliseconds(
      std::uniform_int_distribution<std::int64_t>(least.count(), most.count())(random_));
}

FleetDevice::Milliseconds FleetDevice::untilTriedAgain() { return between(5s, 15s); }

void FleetDevice::start() {
  static const auto silence = std::make_shared<Silence>();
  BootstrapOptions options{.context = {.logger = silence, .clock = time_.clock()}};
  options.wrapNetwork = [service = service_](const auto&) { return service; };
  ContextService::context(address("https://api.example/v3/"), address("https://img.example/"),
                          Client::appleTV, options)
      .onComplete(time_.queue(), [this](const Result<std::shared_ptr<Context>>& context) {
        if (context.failed()) return after(untilTriedAgain(), [this] { start(); });
        opened(*context.value());
      });
}

void FleetDevice::opened(std::shared_ptr<Context> context) {
  context_ = std::move(context);
  if (app_.renewalSpread) {
    renewal_ = SessionRenewal::make(context_->sessionProvider(),
                                    {.spread = *app_.renewalSpread, .queue = time_.queue()});
  }
  watch();
  showFirstView();
  browseLater();
}

void FleetDevice::showFirstView() {
  context_->fetchSystemView("discover", "Discover")
      .onComplete(time_.queue(), [this](const Result<Shared<Page>>& page) {
        if (page.failed()) return after(untilTriedAgain(), [this] { showFirstView(); });
        showShelves("discover");
      });
}

void FleetDevice::showShelves(const std::string& of) {
  for (int shelf = 0; shelf < kShelves; ++shelf) {
    static_cast<void>(context_->fetchItemCollection(
        of + "-" + std::to_string(shelf), {.page = ListPartRequest{.offset = 0, .limit = 8}}));
  }
}

void FleetDevice::watch() {
  const auto& context = scope_.emplace(context_).context();
  LinearProgramGuideMonitorOptions options{.mainQueue = time_.queue()};
  if (app_.delayAfterEnd) options.delayAfterEnd = randomDelayUpTo(*app_.delayAfterEnd);
  if (app_.delayAfterFailure) options.delayAfterFailure = randomDelayUpTo(*app_.delayAfterFailure);
  monitor_ = LinearProgramGuideMonitor::make(context, std::move(options));
  monitor_->onUpdate([this](const GuideUpdate& update) { show(update); });
  monitor_->load(time_.now(), 1);
}

void FleetDevice::show(const GuideUpdate& update) {
  until_ = update.program.endTime;
  if (!app_.patience) return;
  // A monitor whose requests fail stops; the next update is due by then.
  const auto left = std::max(*until_ - time_.now(), 0ms);
  after(left + *app_.patience, [this, shown = until_] {
    if (until_ == shown) watch();
  });
}

void FleetDevice::browseLater() {
  std::exponential_distribution<double> pause(1.0 /
                                              static_cast<double>(person_.betweenScreens.count()));
  const auto wait = Milliseconds(static_cast<std::int64_t>(pause(random_)));
  const auto next = std::max(time_.now(), person_.from) + wait;
  if (next > person_.until) return;
  after(next - time_.now(), [this] {
    const auto screen = std::uniform_int_distribution(0, kScreens - 1)(random_);
    browse("screen-" + std::to_string(screen), kMostTries);
  });
}

void FleetDevice::browse(const std::string& id, int tries) {
  context_->fetchContentItem(id).onComplete(
      time_.queue(), [this, id, tries](const Result<Shared<ContentItem>>& item) {
        if (item.failed() && tries > 1)
          return after(untilTriedAgain(), [this, id, tries] { browse(id, tries - 1); });
        if (!item.failed()) showShelves(id);
        browseLater();
      });
}

}  // namespace orvo::soak
