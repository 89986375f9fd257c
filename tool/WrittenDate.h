#pragma once

#include <OrvoAPI/Base/Date.h>

#include <optional>
#include <string_view>

namespace orvo::tool {

/// The forms that `writtenDate` reads, for a sentence.
inline constexpr const char* kDateForms =
    "now, today, tonight (20:00), yesterday, tomorrow 18:00, 18:00, 2026-11-23, 2026-11-23T18:00, "
    "the same with Z or +01:00 behind it; and, counted from now, +2h, -30m, +3d";

/// A date as people write one; nothing when it is none. A day without a time is its first instant
/// in the device's zone; a time without a day is today's. Of a time that the clocks show twice it
/// is the first; one that they skip moves later by as much as they skip.
[[nodiscard]] std::optional<Date> writtenDate(std::string_view text, Date now);

}  // namespace orvo::tool
