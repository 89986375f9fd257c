// A million devices and their service, in virtual time: what the library and an app for a
// television ask for when a programme ends, when the service is down for a minute, when all devices
// start at the same time, and when their sessions are renewed half a day later.
//
//     fleet [DEVICES [FOLDER]]
//
// Each device has a context, a session and a guide monitor of its own, which is the library's code;
// only the network and the clock are simulated. Counts are multiplied to a million devices. With a
// folder, plots are written there. It fails when an aim is missed.

#include <soak/FleetEvening.h>
#include <soak/FleetPlot.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <utility>
#include <vector>

namespace orvo::soak {
namespace {

using namespace std::chrono_literals;

/// Of the first day; the second follows.
constexpr Date at(int hour, int minute = 0, int second = 0) {
  constexpr Date kMidnight(1'493'596'800'000);  // 2017-05-01T00:00:00.000Z
  return kMidnight + std::chrono::hours(hour) + std::chrono::minutes(minute) +
         std::chrono::seconds(second);
}

/// An app that sets nothing, and loads the monitor anew when no update has come.
constexpr FleetApp kPlain{.patience = 60s};
/// The same with a delay after the end.
constexpr FleetApp kDelayed{.delayAfterEnd = 30s, .patience = 60s};
/// What docs/fleet.md recommends.
constexpr FleetApp kSpread{
    .delayAfterEnd = 60s, .patience = {}, .delayAfterFailure = 25min, .renewalSpread = 6h};

/// So many that what they ask for in a second tells what a million ask for.
constexpr std::size_t kEnough = 5000;

constexpr Date kHourBegins = at(20, 30), kHourEnds = at(21, 29, 58);

constexpr auto kSessions = [](const FleetSecond& second) {
  return second.asked[static_cast<std::size_t>(Asked::session)];
};
constexpr auto kFailed = [](const FleetSecond& second) { return second.refused + second.late; };

/// Devices that were started in the course of three hours; a programme ends at 21:00, when people
/// have been looking at screens for half an hour.
FleetEvening programsEnd(const FleetApp& app) {
  return {.app = app,
          .begin = at(17, 30),
          .startsWithin = 3h,
          .person = {.from = at(20, 30), .until = at(21, 30)},
          .end = kHourEnds};
}

FleetEvening minuteWithoutService(const FleetApp& app) {
  auto evening = programsEnd(app);
  evening.outage = {.from = at(20, 59, 50), .until = at(21, 0, 50)};
  return evening;
}

/// All devices start within a minute, as after a power cut, and stay on for more than half a day.
FleetEvening startTogether(const FleetApp& app) {
  return {.app = app,
          .begin = at(20),
          .startsWithin = 60s,
          .person = {.from = at(20), .until = at(20, 30)},
          .end = at(24 + 9, 45)};
}

class Fleet {
 public:
  Fleet(std::size_t devices, std::filesystem::path folder)
      : devices_(devices), folder_(std::move(folder)) {}

  int run();

 private:
  using Count = FleetRecord::Count;
  struct Span {
    Date from, until;
    int minutesBetweenMarks = 1;
  };
  struct Curve {
    const char* name;
    const FleetRecord& record;
  };

  void programsEnd();
  void outage(const FleetRecord& normal);
  void start();
  void row(const char* what, const FleetRecord& record, Date from, Date until,
           const Count& count = &FleetSecond::all) const;
  void outcome(const char* what, const FleetRecord& record) const;
  /// What is allowed for beyond an aim when there are only a few devices, a poor sample.
  [[nodiscard]] double noise() const {
    return devices_ < kEnough ? 5 / std::sqrt(static_cast<double>(devices_)) : 0;
  }
  void aim(const char* what, double value, double most);
  void plot(const char* file, const char* title, const Span& span, const std::vector<Curve>& curves,
            const Count& count = &FleetSecond::all);

  const std::size_t devices_;
  const std::filesystem::path folder_;
  bool isFine_ = true;
};

void Fleet::row(const char* what, const FleetRecord& record, Date from, Date until,
                const Count& count) const {
  const auto load = record.load(from, until, count);
  std::printf("%-52s %10.0f %10.0f %8.0f\n", what, load.busiestSecond, load.busiestTenSeconds,
              load.mean);
  std::fflush(stdout);
}

void Fleet::outcome(const char* what, const FleetRecord& record) const {
  const auto failed = record.load(record.begin, record.end, kFailed);
  std::printf("%-52s %.0f failed, the slowest answer took %.1f s, %.1f %% do not know what is on\n",
              what, failed.all, static_cast<double>(record.slowest.count()) / 1000, record.behind);
}

void Fleet::aim(const char* what, double value, double most) {
  const bool isMet = value <= most;
  std::printf("aim: %s: %.2f, at most %.2f: %s\n", what, value, most, isMet ? "met" : "MISSED");
  isFine_ = isFine_ && isMet;
}

void Fleet::plot(const char* file, const char* title, const Span& span,
                 const std::vector<Curve>& curves, const Count& count) {
  if (folder_.empty()) return;
  FleetPlot plot{.title = title,
                 .unit = "requests a second",
                 .beginsAt = static_cast<int>((span.from - at(0)) / 1s),
                 .secondsBetweenMarks = span.minutesBetweenMarks * 60,
                 .curves = {}};
  for (const auto& [name, record] : curves)
    plot.curves.push_back({name, record.curve(span.from, span.until, count)});
  isFine_ = write(plot, folder_ / file) && isFine_;
}

void Fleet::programsEnd() {
  std::puts("\nA programme ends at 21:00");
  const auto plain = pass(soak::programsEnd(kPlain), devices_);
  row("no delay: from 20:59:59, a minute", plain, at(20, 59, 59), at(21, 0, 59));
  outcome("", plain);
  const auto spread = pass(soak::programsEnd(kSpread), devices_);
  row("a delay of up to 60 s: from 21:00:00, a minute", spread, at(21), at(21, 1));
  row("                       20:30 to 21:30", spread, kHourBegins, kHourEnds);
  outcome("", spread);
  const auto load = spread.load(at(21), at(21, 1));
  aim("the minute's busiest second, by its mean",
      (noise() > 0 ? load.busiestTenSeconds : load.busiestSecond) / load.mean, 2 + noise());
  plot("fleet-programme.svg", "A programme ends at 21:00, a million devices",
       {at(20, 55), at(21, 10)}, {{"no delay", plain}, {"up to 60 s", spread}});
  outage(spread);
}

/// People who see that a screen has failed press "Try again"; nothing spreads them. So what the
/// devices ask for by themselves is looked at alone as well.
void Fleet::outage(const FleetRecord& normal) {
  std::puts("\nThe service is down from 20:59:50 to 21:00:50");
  const Date from = at(21, 0, 50), until = at(21, 25, 50);
  const auto now = pass(minuteWithoutService(kDelayed), devices_);
  row("loads anew after 60 s: the 25 minutes after it", now, from, until);
  row("                       by themselves", now, from, until, &FleetSecond::byDevices);
  outcome("", now);
  const auto spread = pass(minuteWithoutService(kSpread), devices_);
  row("delay after a failure up to 25 min: the same", spread, from, until);
  row("                       by themselves", spread, from, until, &FleetSecond::byDevices);
  outcome("", spread);
  row("no outage, the same 25 minutes", normal, from, until);
  row("                       20:30 to 21:30", normal, kHourBegins, kHourEnds);
  row("                       by themselves", normal, kHourBegins, kHourEnds,
      &FleetSecond::byDevices);
  const auto busiest = [&](const Count& count) {
    return spread.load(from, until, count).busiestTenSeconds /
           normal.load(kHourBegins, kHourEnds, count).busiestTenSeconds;
  };
  std::printf("the busiest ten seconds after it, by those of the normal hour: %.2f\n",
              busiest(&FleetSecond::all));
  aim("the same of what devices ask for by themselves", busiest(&FleetSecond::byDevices),
      1.1 + noise());
  aim("the 25 minutes after it, by the same of a normal evening",
      spread.load(from, until).mean / normal.load(from, until).mean, 1.1 + noise());
  aim("of a hundred devices, those that do not know what is on", spread.behind, 0);
  plot("fleet-outage.svg", "The service is down from 20:59:50 to 21:00:50, a million devices",
       {at(20, 55), at(21, 28), 5},
       {{"loads anew after 60 s", now}, {"delay up to 25 min", spread}, {"no outage", normal}});
}

void Fleet::start() {
  std::puts("\nAll devices start from 20:00 to 20:01");
  const auto now = pass(startTogether(kDelayed), devices_);
  row("loads anew after 60 s: ten minutes", now, at(20), at(20, 10));
  outcome("", now);
  const auto spread = pass(startTogether(kSpread), devices_);
  row("delay after a failure up to 25 min: the same", spread, at(20), at(20, 10));
  outcome("", spread);
  aim("of a hundred devices, those that do not know what is on", spread.behind, 0);
  std::puts("\nTheir sessions, until 09:45 of the next day");
  const Date from = at(24 + 1), until = at(24 + 9, 45);
  row("renewed by fetches", now, from, until, kSessions);
  row("renewed up to 6 h before they are stale", spread, from, until, kSessions);
  const auto bunched = now.load(from, until, kSessions);
  const auto load = spread.load(from, until, kSessions);
  std::printf("%.0f and %.0f renewals, %.1f %% and %.1f %% of them in the busiest minute\n",
              bunched.all, load.all, 6000 * bunched.busiestMinute / bunched.all,
              6000 * load.busiestMinute / load.all);
  aim("of a hundred renewals, those in the busiest minute", 6000 * load.busiestMinute / load.all,
      180.0 / 360 + 700 / static_cast<double>(devices_));
  plot("fleet-start.svg", "All devices start from 20:00 to 20:01, a million devices",
       {at(20), at(20, 12)}, {{"loads anew after 60 s", now}, {"delay up to 25 min", spread}});
  plot("fleet-renewals.svg", "Sessions opened, a million devices", {at(20), at(24 + 9, 45), 60},
       {{"by fetches", now}, {"up to 6 h before", spread}}, kSessions);
}

int Fleet::run() {
  std::printf("%zu devices, each stands for %.0f\n%-52s %10s %10s %8s\n", devices_,
              1e6 / static_cast<double>(devices_), "requests a second", "busiest s", "10 s",
              "mean");
  programsEnd();
  start();
  return isFine_ ? 0 : 1;
}

}  // namespace
}  // namespace orvo::soak

int main(int count, char** arguments) {
  setenv("TZ", "UTC", 1);  // days and programmes begin at the same time everywhere
  const auto devices = count > 1 ? std::strtoull(arguments[1], nullptr, 10) : 10'000;
  if (devices == 0) return std::fputs("usage: fleet [DEVICES [FOLDER]]\n", stderr), 2;
  return orvo::soak::Fleet(devices, count > 2 ? arguments[2] : "").run();
}
