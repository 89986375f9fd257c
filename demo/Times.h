#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace orvo::demo {

/// The demo service's instants are whole seconds in UTC.
using Instant = std::chrono::sys_seconds;

[[nodiscard]] Instant present();

/// `2017-05-01T10:00:00.000Z`
[[nodiscard]] std::string withMilliseconds(Instant instant);
/// `2017-05-01T10:00:00+0000`
[[nodiscard]] std::string withNumericZone(Instant instant);
/// `2017-05-01T12:00:00+02:00`, for an offset of whole hours.
[[nodiscard]] std::string withColonZone(Instant instant, std::chrono::hours offset);

/// Reads `2017-05-01T10:00:00.000Z`, the form in which a guide is asked for.
[[nodiscard]] std::optional<Instant> parseInstant(std::string_view text);

}  // namespace orvo::demo
