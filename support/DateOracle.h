#pragma once

#include <OrvoAPI/Parsing/DateFormatter.h>
#include <unicode/gregocal.h>
#include <unicode/smpdtfmt.h>

#include <cmath>
#include <optional>
#include <string>
#include <string_view>

namespace orvo {

/// The same format as a large Unicode library has it.
class DateOracle {
 public:
  explicit DateOracle(const DateFormatter& formatter)
      : format_(icu::UnicodeString::fromUTF8(std::string(formatter.pattern())),
                icu::Locale("en_US_POSIX"), status_) {
    icu::GregorianCalendar calendar(*icu::TimeZone::getGMT(), status_);
    calendar.setGregorianChange(-1e17, status_);
    format_.setCalendar(calendar);
    format_.setLenient(false);
  }

  [[nodiscard]] std::string string(Date date) const {
    icu::UnicodeString text;
    std::string utf8;
    format_.format(static_cast<UDate>(date.millisecondsSince1970()), text).toUTF8String(utf8);
    return utf8;
  }
  /// Not for more digits in a row than a date has: it divides by what a long fraction overflows to.
  [[nodiscard]] std::optional<Date> date(std::string_view string) const {
    std::size_t digits = 0;
    for (const char c : string) {
      digits = c >= '0' && c <= '9' ? digits + 1 : 0;
      if (digits > 9) return std::nullopt;
    }
    const auto text = icu::UnicodeString::fromUTF8(std::string(string));
    icu::ParsePosition position(0);
    const UDate read = format_.parse(text, position);
    if (position.getErrorIndex() >= 0 || position.getIndex() != text.length()) return std::nullopt;
    if (std::abs(read) > 1e17) return std::nullopt;  // years that no type here can hold
    return Date(static_cast<std::int64_t>(read));
  }

 private:
  UErrorCode status_ = U_ZERO_ERROR;
  icu::SimpleDateFormat format_;
};

}  // namespace orvo
