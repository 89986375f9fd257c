#pragma once

#include <OrvoAPI/Base/Date.h>
#include <OrvoAPI/Futures/Result.h>

#include <optional>
#include <string>
#include <string_view>

namespace orvo {

/// Reads and writes dates in one of the service's three patterns, always in UTC and never
/// localised. A value, as cheap to make as to copy; thread-safe.
///
/// Reading takes the whole text or nothing: a year of four digits from 0001 on, two digits for
/// everything else, days that exist, no leap seconds. Where the pattern has a zone it is `Z` or
/// `+hhmm` or `-hhmm` up to 23:59; where it has a fraction, that is exactly three digits.
class DateFormatter {
 public:
  /// What the pattern ends in, after "yyyy-MM-dd'T'HH:mm:ss".
  enum class Kind { zone, millisecondsAndZone, literalZeroMilliseconds };

  explicit DateFormatter(Kind kind) : kind_(kind) {}

  /// The pattern in the notation of Unicode's date formats.
  [[nodiscard]] std::string_view pattern() const;
  [[nodiscard]] std::optional<Date> date(std::string_view string) const;
  /// What the pattern has no place for is cut off towards the past. A year above 9999 has more
  /// digits; one before 1 is written as its number BC, since the pattern has no place for an era.
  [[nodiscard]] std::string string(Date date) const;

 private:
  Kind kind_;
};

/// "yyyy-MM-dd'T'HH:mm:ssZ": whole seconds with a zone.
[[nodiscard]] DateFormatter iso8601Formatter();
/// "yyyy-MM-dd'T'HH:mm:ss.SSSZ": milliseconds with a zone.
[[nodiscard]] DateFormatter startResourceDateFormatter();
/// "yyyy-MM-dd'T'HH:mm:ss.'000Z'": whole seconds, followed by the literal text ".000Z".
[[nodiscard]] DateFormatter epgFromDateFormatter();

/// Reads with `iso8601Formatter`, or fails with `DateFormatError`.
[[nodiscard]] Result<Date> from8601(std::string_view string);
/// Writes with `iso8601Formatter`.
[[nodiscard]] std::string to8601(Date date);

/// Reads an event's date: with a colon in its zone (`2017-05-01T10:00:00+01:00`) and no fraction,
/// or without a colon and with milliseconds (`2017-05-01T10:00:00.000Z`). A `DateFormatError`
/// always names the pattern with milliseconds, whichever was tried: readers of logs expect it.
[[nodiscard]] Result<Date> fromEventDate(std::string_view string);
/// As `fromEventDate`, without an error.
[[nodiscard]] std::optional<Date> eventDate(std::string_view string);

/// The date of a resource's start or end: with milliseconds, or else without; nothing when neither
/// pattern fits.
[[nodiscard]] std::optional<Date> resourceTime(std::string_view string);

}  // namespace orvo
