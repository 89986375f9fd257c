#include <soak/FleetEvening.h>

#include <algorithm>
#include <numeric>
#include <utility>

namespace orvo::soak {
namespace {

/// What the service answers in a second for a million devices: twice what they ask for in the
/// busiest second of a normal evening with a delay of up to a minute.
constexpr double kAnswersPerDevice = 0.06;
/// How long a queue it has, in seconds of answers.
constexpr double kQueueSeconds = 10;

double busiest(const std::vector<double>& curve, std::size_t width) {
  double most = 0, sum = 0;
  for (std::size_t at = 0; at < curve.size(); ++at) {
    sum += curve[at] - (at >= width ? curve[at - width] : 0);
    most = std::max(most, sum);
  }
  return most / static_cast<double>(width);
}

}  // namespace

std::vector<double> FleetRecord::curve(Date from, Date until, const Count& count) const {
  std::vector<double> all;
  for (auto at = (from - begin).count() / 1000; at < (until - begin).count() / 1000; ++at) {
    const auto index = static_cast<std::size_t>(at);
    all.push_back(index < seconds_.size() ? count(seconds_[index]) * scale_ : 0);
  }
  return all;
}

FleetRecord::Load FleetRecord::load(Date from, Date until, const Count& count) const {
  const auto counts = curve(from, until, count);
  const double all = std::accumulate(counts.begin(), counts.end(), 0.0);
  return {.all = all,
          .mean = all / static_cast<double>(counts.size()),
          .busiestSecond = busiest(counts, 1),
          .busiestTenSeconds = busiest(counts, 10),
          .busiestMinute = busiest(counts, 60)};
}

FleetRecord pass(const FleetEvening& evening, std::size_t devices) {
  FleetTime time(evening.begin);
  const auto perSecond = kAnswersPerDevice * static_cast<double>(devices);
  const auto service = std::make_shared<FleetService>(
      time, perSecond, static_cast<std::size_t>(perSecond * kQueueSeconds));
  std::vector<std::unique_ptr<FleetDevice>> fleet;
  std::minstd_rand random;
  std::uniform_int_distribution<std::int64_t> start(0, evening.startsWithin.count());
  while (fleet.size() < devices) {
    const auto seed = static_cast<std::uint32_t>(fleet.size() + 1);
    auto& device = fleet.emplace_back(
        std::make_unique<FleetDevice>(time, service, evening.app, evening.person, seed));
    time.queue()->postAfter(std::chrono::milliseconds(start(random)),
                            [&device = *device] { device.start(); });
  }
  if (evening.outage) {
    time.runUntil(evening.outage->from);
    service->setDown(true);
    time.runUntil(evening.outage->until);
    service->setDown(false);
  }
  time.runUntil(evening.end);
  FleetRecord record(evening, devices, service->seconds());
  record.slowest = service->slowest();
  record.behind = 100.0 / static_cast<double>(devices) *
                  static_cast<double>(std::ranges::count_if(fleet, [&](const auto& device) {
                    return device->onAirUntil().value_or(Date(0)) <= time.now();
                  }));
  service->close();
  return record;
}

}  // namespace orvo::soak
