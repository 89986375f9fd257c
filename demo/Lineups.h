#pragma once

#include <demo/Documents.h>
#include <demo/Json.h>
#include <demo/Times.h>

#include <optional>
#include <string_view>

namespace orvo::demo {

/// The lineup document of that name around the given time: "grid" (all channels, three days),
/// "list" (one channel, five days) or "clock-change" (the night in which European clocks change
/// next, whether or not the device's do). Null for any other name.
[[nodiscard]] std::optional<Json> lineup(std::string_view name, const Catalogue& catalogue,
                                         const Addresses& addresses, Instant now);

/// The next instant after `now` at which European clocks go forward or back.
[[nodiscard]] Instant nextClockChange(Instant now);

}  // namespace orvo::demo
