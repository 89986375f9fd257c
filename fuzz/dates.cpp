// The readers and writers of dates, one a line, against those of a large Unicode library.

#include <OrvoAPI/Parsing/DateFormatter.h>
#include <fuzz/FuzzTarget.h>
#include <unicode/gregocal.h>
#include <unicode/smpdtfmt.h>

#include <cmath>
#include <memory>

using namespace orvo;

namespace {

class Oracle {
 public:
  explicit Oracle(const DateFormatter& formatter)
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
  [[nodiscard]] std::optional<Date> date(std::string_view string) const {
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

/// A zone can lead out of the years that the patterns can hold.
bool hasFourDigits(Date date) {
  return date >= Date(-62'135'596'800'000) && date < Date(253'402'300'800'000);
}

void compare(const DateFormatter& formatter, const Oracle& oracle, std::string_view text) {
  const auto ours = formatter.date(text);
  const auto theirs = oracle.date(text);
  if (ours) {
    fuzz::require(ours == theirs, "a date that is read is the oracle's");
    fuzz::require(formatter.string(*ours) == oracle.string(*ours), "it is written as it is there");
    fuzz::require(!hasFourDigits(*ours) || formatter.date(formatter.string(*ours)) == ours,
                  "and reads back");
  } else if (theirs) {
    // The oracle also takes what it would never write: single digits, other zones.
    fuzz::require(!hasFourDigits(*theirs) || oracle.string(*theirs) != text,
                  "a date is read in the form in which it is written");
  }
}

void check(std::string_view text) {
  static const DateFormatter formatters[] = {iso8601Formatter(), startResourceDateFormatter(),
                                             epgFromDateFormatter()};
  static const Oracle oracles[] = {Oracle(formatters[0]), Oracle(formatters[1]),
                                   Oracle(formatters[2])};
  for (std::size_t index = 0; index < std::size(formatters); ++index) {
    compare(formatters[index], oracles[index], text);
  }
  fuzz::require(resourceTime(text) == (formatters[1].date(text) ? formatters[1].date(text)
                                                                : formatters[0].date(text)),
                "a resource's date has milliseconds, or else none");
  if (const auto event = fromEventDate(text); const auto* const date = event.value()) {
    fuzz::require(text.find(':') != std::string_view::npos && text.size() >= 3 &&
                      formatters[1].string(*date).size() >= 24,
                  "an event's date has a time");
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  auto rest = fuzz::text(bytes, size);
  do {
    check(fuzz::takePiece(rest));
  } while (!rest.empty());
  return 0;
}
