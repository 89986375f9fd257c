#pragma once

#include <soak/FleetDevice.h>
#include <soak/FleetService.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace orvo::soak {

/// What happens to a fleet: when its devices start and the service is down.
struct FleetEvening {
  FleetApp app;
  Date begin;
  std::chrono::milliseconds startsWithin{0};
  FleetDevice::Person person;
  Date end;
  struct Outage {
    Date from, until;
  };
  std::optional<Outage> outage = {};
};

/// What the service has seen of an evening. Counts are for a million devices.
class FleetRecord {
 public:
  using Count = std::function<std::uint32_t(const FleetSecond&)>;
  struct Load {
    double all = 0, mean = 0;
    double busiestSecond = 0;
    double busiestTenSeconds = 0;  ///< on average
    double busiestMinute = 0;      ///< on average
  };

  FleetRecord(const FleetEvening& evening, std::size_t devices, std::vector<FleetSecond> seconds)
      : begin(evening.begin),
        end(evening.end),
        scale_(1e6 / static_cast<double>(devices)),
        seconds_(std::move(seconds)) {}

  [[nodiscard]] Load load(Date from, Date until, const Count& count = &FleetSecond::all) const;
  [[nodiscard]] std::vector<double> curve(Date from, Date until,
                                          const Count& count = &FleetSecond::all) const;

  const Date begin, end;
  /// Of a hundred devices, those that say at the end that a programme is on that has ended, or
  /// do not know one.
  double behind = 0;
  std::chrono::milliseconds slowest{0};

 private:
  const double scale_;
  const std::vector<FleetSecond> seconds_;
};

/// Lets an evening of that many devices pass.
[[nodiscard]] FleetRecord pass(const FleetEvening& evening, std::size_t devices);

}  // namespace orvo::soak
