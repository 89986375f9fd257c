#include <tests/Context/StubbedContext.h>
#include <tests/support/Zone.h>

namespace orvo {
namespace {

using std::chrono::milliseconds;
using Meta = std::array<std::int64_t, 3>;  // total, limit, offset
using Texts = std::vector<std::string>;

Date at(std::string_view text) { return from8601(text).force(); }
const Date kNoon = at("2017-05-01T12:00:00Z");

/// A service whose programmes last three hours each, have no gaps, and are numbered since 1970. It
/// answers at once, except for the time that a video takes.
class Channel final : public NetworkDataProvider {
 public:
  explicit Channel(std::shared_ptr<ManualClock> clock) : clock_(std::move(clock)) {}

  static Date begin(std::int64_t number) { return Date(0) + number * 3h; }
  static std::int64_t numberAt(Date date) { return (date - Date(0)) / 3h; }
  static std::string program(const std::string& id, Date start, Date end) {
    return R"({"id": ")" + id + R"(", "title": "T", "start_time": ")" + to8601(start) +
           R"(", "end_time": ")" + to8601(end) + R"("})";
  }

  Future<HTTPResult> fetch(const URLRequest& request) override {
    const bool isGuide = request.url.path() == "/v3/epg";
    const HTTPResult result{
        .response = {.url = request.url, .statusCode = fails ? 503 : 200},
        .body = Data(isGuide ? guide(*request.url.query()) : video(request.url.path()))};
    const bool isHeld = isGuide && holds.exchange(false);
    if (isHeld) held = result;
    if (isGuide) guideAsked.tell();
    return isHeld ? promise.future() : Future<HTTPResult>::completed(result);
  }

  std::atomic<bool> fails = false;
  std::atomic<bool> holds = false;  // the next answer to a request for the guide, in `held`
  std::optional<HTTPResult> held;
  Promise<HTTPResult> promise;
  milliseconds videoLatency{0};
  Meta meta{24, 10, 0};
  std::string items;  // in place of the programmes
  test::Signal guideAsked;
  Texts queries;  // of the requests for the guide

 private:
  std::string guide(std::string_view query) {
    const std::lock_guard guard(lock_);
    queries.emplace_back(query);
    const auto start = *epgFromDateFormatter().date(query.substr(query.find('=') + 1, 24));
    std::string list = items;
    for (auto number = numberAt(start); items.empty() && number < numberAt(start) + 10; ++number) {
      list += (list.empty() ? "" : ",") +
              program(std::to_string(number), begin(number), begin(number + 1));
    }
    return R"({"meta": {"total": )" + std::to_string(meta[0]) + R"(, "limit": )" +
           std::to_string(meta[1]) + R"(, "offset": )" + std::to_string(meta[2]) +
           R"(}, "items": [)" + list + "]}";
  }
  std::string video(std::string_view path) {
    clock_->advance(videoLatency);
    return R"({"id": ")" + std::string(path.substr(path.rfind('/') + 1)) +
           R"(", "title": "V", "short_description": "S",)"
           R"( "status": {"code": "live", "label": "L", "ttl": 36000000}})";
  }

  const std::shared_ptr<ManualClock> clock_;
  std::mutex lock_;
};

/// A monitor of that channel, with a clock and a main queue that the test controls.
struct OnAir final : Logger {
  using Delay = std::function<milliseconds()>;

  explicit OnAir(Date now, Delay delayAfterEnd = {}, Delay delayAfterFailure = {})
      : clock(std::make_shared<ManualClock>(now)),
        context(makeContext(std::make_shared<StubSessionProvider>(kToken), channel,
                            {.logger = {std::shared_ptr<void>(), this}, .clock = clock})),
        monitor(LinearProgramGuideMonitor::make(
            context, {.mainQueue = queue,
                      .delayAfterEnd = std::move(delayAfterEnd),
                      .delayAfterFailure = std::move(delayAfterFailure)})) {
    monitor->onUpdate([this](const GuideUpdate& update) {
      heard.push_back(seen(update.program.id, update.program.startTime, clock->now()));
    });
  }
  /// How an update is noted down: `138300 +300`, with the milliseconds since the programme's start.
  static std::string seen(const std::string& id, Date start, Date now) {
    // Unsigned, for clocks that stand at the end of time.
    const auto since = static_cast<std::uint64_t>(now.millisecondsSince1970()) -
                       static_cast<std::uint64_t>(start.millisecondsSince1970());
    return id + " +" + std::to_string(static_cast<std::int64_t>(since));
  }
  void log(std::string_view message, LogLevel level, std::string_view subsystem,
           std::string_view category) override {
    heard.push_back(std::string(subsystem) + "/" + std::string(category) + " " +
                    std::string(caseName(level)) + ": " + std::string(message));
  }

  /// Runs the main queue until that much was heard.
  void arrive(std::size_t count) {
    for (; heard.size() < count; queue->run()) {
      if (!queue->waitForJob()) throw std::runtime_error("nothing comes");
    }
  }
  void load() {
    const auto before = heard.size();
    EXPECT_TRUE(monitor->load(clock->now(), 3).wait(kPatience).force());
    arrive(before + 1);
  }
  /// Lets time pass until the next wait ends, and what follows has come.
  void goOn() {
    const auto before = heard.size();
    queue->advanceToNext();
    arrive(before + 1);
  }
  [[nodiscard]] bool isIdle() const { return queue->waiting() + queue->delayed() == 0; }
  [[nodiscard]] std::string days() const {
    std::string text;
    for (const auto& day : monitor->lastUpdate()->days) {
      text += day.title + ":";
      for (const auto& program : day.programs) text += " " + program.id;
      text += "; ";
    }
    return text;
  }

  std::shared_ptr<ManualClock> clock;
  std::shared_ptr<ManualQueue> queue = std::make_shared<ManualQueue>("main", clock);
  std::shared_ptr<Channel> channel = std::make_shared<Channel>(clock);
  std::shared_ptr<Context> context;
  std::shared_ptr<LinearProgramGuideMonitor> monitor;
  Texts heard;  // updates and messages
};

int localDay(Date date) {
  tm parts{};
  const time_t seconds = date.millisecondsSince1970() / 1000;
  return localtime_r(&seconds, &parts)->tm_yday;
}

TEST(LinearProgramGuideMonitor, FollowsTwoWeeksAcrossMidnightsAndAChangeOfTheClocks) {
  const Zone zone("Europe/Vienna");
  const Date start = at("2024-03-24T12:00:00Z");
  OnAir tv(start);
  tv.channel->videoLatency = 300ms;

  Texts updates;
  Texts loads{epgFromDateFormatter().string(start)};
  auto number = Channel::numberAt(start), last = number + 9;
  const auto look = [&](Date now, std::int64_t first) {
    if (last - first >= 4) return;
    loads.push_back(epgFromDateFormatter().string(now));
    last = first + 9;
  };
  for (Date time = start + 300ms; time < start + 14 * 24h; ++number) {
    const Date begin = Channel::begin(number), end = Channel::begin(number + 1);
    updates.push_back(OnAir::seen(std::to_string(number), begin, time));
    const Date early = end - (end - time) % 1s;  // waits are whole seconds, then what is left
    look(early, number);
    time = early + 300ms;
    // Since midnight it is yesterday's: the first of today is the next one already.
    if (localDay(early) != localDay(begin)) continue;
    updates.push_back(OnAir::seen(std::to_string(number), begin, early));
    look(end, number + 1);
    time = end + 300ms;
  }

  tv.load();
  while (tv.heard.size() < updates.size()) tv.goOn();
  EXPECT_EQ(updates.size(), 210U) << "112 programmes, 14 of which run over midnight";
  EXPECT_EQ(tv.heard, updates);
  for (auto& query : tv.channel->queries) query = query.substr(query.find('=') + 1, 24);
  EXPECT_EQ(tv.channel->queries, loads);
  EXPECT_EQ(tv.queue->delayed(), 1U);
}

TEST(LinearProgramGuideMonitor, WaitsForWhatIsLeftOfTheLastSecond) {
  OnAir tv(kNoon - 600ms);
  tv.load();
  EXPECT_EQ(tv.queue->advance(599ms), 0U) << "no look at the guide, again and again, till the end";
  tv.goOn();
  EXPECT_EQ(tv.heard, Texts({"138299 +10799400", "138300 +0"}));
}

TEST(LinearProgramGuideMonitor, KeepsTheWaitsOfEarlierLoads) {
  OnAir tv(kNoon);
  tv.load();
  tv.load();
  tv.goOn();
  tv.arrive(4);
  EXPECT_EQ(tv.heard, Texts({"138300 +0", "138300 +0", "138301 +0", "138301 +0"}));
}

TEST(LinearProgramGuideMonitor, IsIdleAfterAFailureUntilTheNextLoad) {
  OnAir tv(kNoon);
  tv.load();
  for (int programs = 9; programs >= 5; --programs) tv.goOn();
  EXPECT_EQ(tv.channel->queries.size(), 1U);
  tv.channel->fails = true;
  tv.queue->advanceToNext();
  ASSERT_TRUE(tv.channel->guideAsked.wait(2)) << "for with this end four programmes are left";
  EXPECT_NE(tv.channel->queries.back().find("T06:00:00.000Z&end_time=2017-05-05T06:00:00.000Z"),
            std::string::npos);
  EXPECT_TRUE(tv.monitor->load(tv.clock->now(), 3).wait(kPatience).failed());
  EXPECT_TRUE(tv.isIdle());
  tv.channel->fails = false;
  tv.load();
  EXPECT_EQ(tv.heard.back(), "138306 +0");
  tv.channel->fails = true;
  tv.goOn();
  EXPECT_EQ(tv.heard.back(), "epg/epg error: Unable to update video for EPG");
  EXPECT_EQ(tv.monitor->lastUpdate()->program.id, "138306");
  EXPECT_TRUE(tv.isIdle());
}

TEST(LinearProgramGuideMonitor, TriesAgainAfterAFailureWhenToldTo) {
  OnAir tv(kNoon, {}, [] { return 7min; });
  tv.channel->fails = true;
  EXPECT_TRUE(tv.monitor->load(kNoon, 1).wait(kPatience).failed());
  for (int i = 0; i < 10'000'000 && tv.queue->delayed() == 0; ++i) std::this_thread::yield();
  tv.channel->fails = false;
  tv.goOn();
  tv.channel->fails = true;
  tv.goOn();
  tv.channel->fails = false;
  tv.goOn();
  EXPECT_EQ(tv.heard, Texts({"138300 +420000", "epg/epg error: Unable to update video for EPG",
                             "138301 +420000"}));
  EXPECT_EQ(tv.channel->queries.size(), 2U) << "a video that failed does not need the guide";
  EXPECT_EQ(tv.queue->delayed(), 1U);
}

TEST(LinearProgramGuideMonitor, WaitsAnewWhenTheClockIsSet) {
  OnAir tv(kNoon);
  tv.load();
  tv.clock->setWall(kNoon + 2h);
  tv.queue->run();
  tv.goOn();
  EXPECT_EQ(tv.clock->elapsed(), 1h);
  tv.clock->setWall(kNoon + 2h);
  tv.queue->run();
  EXPECT_EQ(tv.queue->advance(3h), 2U) << "the jobs of the waits given up find nothing to do";
  tv.goOn();
  EXPECT_EQ(tv.heard, Texts({"138300 +0", "138301 +0", "138302 +0"}));
  tv.clock->setWall(at("2027-01-01T00:00:10Z"));
  tv.arrive(4);
  EXPECT_EQ(tv.heard.back(), "166552 +10000") << "at once, from a guide that is loaded anew";
}

TEST(LinearProgramGuideMonitor, WaitsLongerThanToTheEndWhenToldTo) {
  OnAir tv(kNoon + 500ms, [] { return 7001ms; });
  tv.load();
  tv.goOn();
  EXPECT_EQ(tv.heard, Texts({"138300 +500", "138301 +7001"}));
  std::set<milliseconds> delays;
  for (int i = 0; i < 400; ++i) delays.insert(randomDelayUpTo(3ms)());
  EXPECT_EQ(delays, (std::set{0ms, 1ms, 2ms, 3ms}));
  EXPECT_EQ(randomDelayUpTo(-1ms)(), 0ms);
}

TEST(LinearProgramGuideMonitor, StopsWhenReleased) {
  OnAir tv(kNoon);
  tv.load();
  const auto loadNext = *tv.monitor->loadNext();
  tv.channel->holds = true;
  const auto pending = tv.monitor->load(kNoon, 4);
  ASSERT_TRUE(tv.channel->guideAsked.wait(2));
  const std::weak_ptr probe = std::exchange(tv.monitor, nullptr);
  for (int i = 0; i < 1'000'000 && !probe.expired(); ++i) std::this_thread::yield();
  EXPECT_TRUE(probe.expired()) << "except for the moment in which a part is taken in";
  loadNext();
  tv.channel->promise.success(*tv.channel->held);
  EXPECT_EQ(tv.queue->advanceToNext(), 1U);
  EXPECT_TRUE(tv.isIdle());
}

TEST(LinearProgramGuideMonitorListeners, HearOnlyWhatIsSentWhileTheyAreRegistered) {
  OnAir tv(kNoon);
  tv.load();
  Texts heard;
  const auto key =
      tv.monitor->onUpdate([&](const GuideUpdate& update) { heard.push_back(update.video->id); });
  tv.goOn();
  tv.monitor->removeUpdate(key);
  tv.goOn();
  EXPECT_EQ(heard, Texts({"138301"}));
}

TEST(LinearProgramGuideMonitorListeners, ComeAndGoOnAnyThread) {
  OnAir tv(kNoon);
  const auto monitor = LinearProgramGuideMonitor::make(tv.context);  // on the real main queue
  const auto heard = std::make_shared<test::Signal>();
  const auto use = [&] {
    for (int round = 0; round < 25; ++round) {
      const auto key = monitor->onUpdate([heard](const GuideUpdate&) { heard->tell(); });
      monitor->load(kNoon, 3);
      if (const auto next = monitor->loadNext()) (*next)();
      EXPECT_TRUE(!monitor->lastUpdate() || !monitor->lastUpdate()->days.empty());
      if (round % 2 == 0) monitor->removeUpdate(key);
    }
  };
  std::thread other(use);
  use();
  other.join();
  EXPECT_TRUE(heard->wait());
}

TEST(LinearProgramGuideMonitorLoad, AsksForCalendarDaysTenProgrammesAtATime) {
  const Zone zone("Europe/Vienna");
  OnAir tv(kNoon);
  tv.channel->fails = true;
  const auto loaded = tv.monitor->load(at("2024-03-30T12:00:00Z"), 3, {.offset = 20});
  EXPECT_TRUE(loaded.wait(kPatience).failed());
  EXPECT_EQ(tv.channel->queries, Texts({"start_time=2024-03-30T12:00:00.000Z"
                                        "&end_time=2024-04-02T11:00:00.000Z&offset=20&limit=10"}));
}

TEST(LinearProgramGuideMonitorLoad, GroupsByTheDaysOfTheDevice) {
  const Zone zone("UTC");
  OnAir tv(kNoon);
  const auto add = [&](const std::string& id, std::chrono::hours start, milliseconds length = 1h) {
    tv.channel->items += (tv.channel->items.empty() ? "" : ",") +
                         Channel::program(id, kNoon + start, kNoon + start + length);
  };
  add("yesterday's", -13h, 13h + 1s);
  add("ended", -1h);
  add("next", 1h);
  add("late", 11h, 5h);
  add("tomorrow", 12h);
  add("mon", 7 * 24h);
  add("mon+7", 14 * 24h);
  tv.load();
  EXPECT_EQ(tv.monitor->lastUpdate()->program.id, "next");
  EXPECT_EQ(tv.days(),
            "TODAY: next late; TOMORROW: tomorrow; SUNDAY: yesterday's; MONDAY: mon mon+7; ");
}

TEST(LinearProgramGuideMonitorLoad, DropsTheLoaderOfAnEarlierOneButTakesItsLatePageIn) {
  OnAir tv(kNoon);
  tv.channel->items = Channel::program("a", kNoon, kNoon + 1h);
  tv.load();
  EXPECT_TRUE(tv.monitor->loadNext());
  tv.channel->holds = true;
  const auto late = tv.monitor->load(kNoon, 4);
  EXPECT_FALSE(tv.monitor->loadNext()) << "it would append parts of the range before";
  ASSERT_TRUE(tv.channel->guideAsked.wait(2));
  tv.load();
  tv.channel->promise.success(*tv.channel->held);
  EXPECT_TRUE(late.wait(kPatience).force());
  tv.arrive(3);
  EXPECT_EQ(tv.days(), "TODAY: a a; ");
}

TEST(LinearProgramGuideMonitorLoad, SurvivesDatesAtTheEndOfTime) {
  using Dates = std::numeric_limits<std::int64_t>;
  OnAir tv(Date{Dates::min()});
  tv.channel->items = Channel::program("a", kNoon, kNoon + 1h);
  tv.monitor->load(Date(Dates::max()), std::numeric_limits<int>::max());
  tv.monitor->load(Date(Dates::min()), std::numeric_limits<int>::min());
  tv.arrive(2);
  EXPECT_TRUE(tv.isIdle()) << "no number of seconds leads to its end";
}

TEST(LinearProgramGuideMonitorPaging, GoesOnAfterAFailureAndEndsWithTheFinalPage) {
  OnAir tv(kNoon);
  tv.channel->items = Channel::program("a", kNoon, kNoon + 1h);
  tv.load();
  tv.channel->fails = true;
  (*tv.monitor->loadNext())();
  ASSERT_TRUE(tv.channel->guideAsked.wait(2));
  tv.channel->fails = false;
  for (const std::int64_t offset : {10, 20}) {
    tv.channel->meta = {24, 10, offset};
    (*tv.monitor->loadNext())();
    tv.arrive(tv.heard.size() + 1);
    EXPECT_TRUE(tv.channel->queries.back().ends_with(std::to_string(offset) + "&limit=10"));
  }
  EXPECT_FALSE(tv.monitor->loadNext()) << "it would append the final part again and again";
  EXPECT_EQ(tv.days(), "TODAY: a a a; ");
}

TEST(LinearProgramGuideMonitorPaging, EndsWhereOffsetsEndOrDoNotGrow) {
  constexpr auto kMost = std::numeric_limits<std::int64_t>::max();
  for (const auto& meta :
       {Meta{10, 10, 0}, Meta{kMost, kMost, 1}, Meta{25, 0, 0}, Meta{25, -5, 10}}) {
    OnAir tv(kNoon);
    tv.channel->meta = meta;
    tv.load();
    EXPECT_FALSE(tv.monitor->loadNext()) << meta[0] << " " << meta[1];
  }
}

}  // namespace
}  // namespace orvo
