#pragma once

#include <OrvoAPI/Base/Date.h>
#include <OrvoAPI/Linear/LineupSlot.h>
#include <OrvoAPI/Linear/LineupSlots.h>
#include <OrvoAPI/Model/LineupReference.h>
#include <OrvoAPI/Parsing/JSONValue.h>
#include <OrvoAPI/Storage/Cacheable.h>

#include <vector>

namespace orvo {

/// The slots that start within one hour.
struct LineupHour {
  /// The hour's start.
  Date startTime = {};
  /// In document order.
  LineupSlots slots_ = {};

  friend bool operator==(const LineupHour&, const LineupHour&) = default;
};

/// The hours of one day in which slots start.
struct LineupDay {
  /// The day's start.
  Date startTime = {};
  /// Ascending.
  std::vector<LineupHour> hours = {};

  friend bool operator==(const LineupDay&, const LineupDay&) = default;
};

/// A schedule of slots on one or more channels. A value; its hours and days may be copied out and
/// outlive it.
struct Lineup {
  using DisplayKind = LineupDisplayKind;

  /// In document order.
  LineupSlots slots_ = {};
  /// The same slots by the day and hour of their start, ascending.
  std::vector<LineupDay> days = {};

  /// A lineup of these slots, grouped in the device's time zone.
  [[nodiscard]] static Lineup grouping(std::vector<LineupSlot> all);

  [[nodiscard]] double ttl() const { return DefaultCacheableTTL; }

  friend bool operator==(const Lineup&, const Lineup&) = default;
};

/// Reads a lineup. Stateless; may be called from any thread.
struct LineupParser {
  /// Never fails: slots that cannot be read are left out.
  [[nodiscard]] static Lineup parse(const JSONObjects& json);
};

}  // namespace orvo
