#pragma once

#include <OrvoAPI/Base/Date.h>
#include <OrvoAPI/HTTP/URL.h>
#include <OrvoAPI/Model/Status.h>
#include <tool/Output.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace orvo::tool {

/// Values as people write them. Times are those of the device's zone; names are English whatever
/// the locale.

/// `44 min`, `1 h 36`, `25 s`.
[[nodiscard]] std::string durationText(double seconds);
/// The same, or nothing.
[[nodiscard]] std::string durationText(const std::optional<double>& seconds);

/// `20 min`, `5 h`, `12 days`, `31 years`; also of a span that is negative.
[[nodiscard]] std::string spanOfDaysText(std::chrono::milliseconds span);

/// `1.2 ms`, `12 ms`, `1.25 s`
[[nodiscard]] std::string spanText(std::chrono::nanoseconds time);

/// `21:30`
[[nodiscard]] std::string clockText(Date date);
/// `21:30:05`
[[nodiscard]] std::string preciseClockText(Date date);
/// `Mon 23 Nov 2026`
[[nodiscard]] std::string dayText(Date date);
/// `Mon 23 Nov 2026, 21:30`
[[nodiscard]] std::string dateText(Date date);

/// `Live now, Mon 23 Nov 2026, 21:30 – 23:00`
[[nodiscard]] std::string statusText(const Status& status);
[[nodiscard]] Style styleOf(StatusCode code);

/// `1,234`
[[nodiscard]] std::string countText(std::int64_t count);
/// `1 video`, `2 videos`
[[nodiscard]] std::string countText(std::int64_t count, const std::string& noun);

/// The texts with ", " between them, without those that are empty.
[[nodiscard]] std::string joined(const std::vector<std::string>& texts);

[[nodiscard]] std::string urlText(const std::optional<URL>& url);

}  // namespace orvo::tool
