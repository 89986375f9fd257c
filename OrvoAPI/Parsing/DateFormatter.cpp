#include <OrvoAPI/Base/IntegersInternal.h>
#include <OrvoAPI/Parsing/DateFormatError.h>
#include <OrvoAPI/Parsing/DateFormatter.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace orvo {

namespace {

constexpr std::int64_t millisecondsPerDay = 86'400'000;
/// "yyyy-MM-ddTHH:mm:ss", with which all patterns begin.
constexpr std::size_t headLength = 19;
constexpr std::string_view literalEnd = ".000Z";

// --- the calendar: proleptic Gregorian. Years are counted from 1 March, so that the leap day is a
// year's last, in eras of 400 years, which are all alike.

constexpr std::int64_t daysPerEra = 146'097;
/// Days from 1 March of the year 0 to 1 January 1970.
constexpr std::int64_t daysTo1970 = 719'468;

/// For years from 1 to 9999.
constexpr std::int64_t daysSince1970(unsigned year, unsigned month, unsigned day) {
  const unsigned marchYear = month > 2 ? year : year - 1;
  const unsigned yearOfEra = marchYear % 400;
  const unsigned dayOfYear = (153 * ((month + 9) % 12) + 2) / 5 + day - 1;
  const unsigned dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
  return marchYear / 400 * daysPerEra + dayOfEra - daysTo1970;
}

struct Day {
  std::int64_t year;
  unsigned month;
  unsigned day;
};

constexpr Day dayOf(std::int64_t daysSince1970) {
  const std::int64_t days = daysSince1970 + daysTo1970;
  const std::int64_t era = detail::floorDivide(days, daysPerEra);
  const auto dayOfEra = static_cast<unsigned>(days - era * daysPerEra);
  const unsigned yearOfEra =
      (dayOfEra - dayOfEra / 1460 + dayOfEra / 36'524 - dayOfEra / 146'096) / 365;
  const unsigned dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
  const unsigned marchMonth = (5 * dayOfYear + 2) / 153;
  const unsigned month = marchMonth < 10 ? marchMonth + 3 : marchMonth - 9;
  return {era * 400 + yearOfEra + (month <= 2 ? 1 : 0), month,
          dayOfYear - (153 * marchMonth + 2) / 5 + 1};
}

constexpr unsigned daysIn(unsigned month, unsigned year) {
  constexpr std::array<unsigned char, 12> days{31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  const bool leap = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
  return month == 2 && leap ? 29 : days[month - 1];
}

// --- reading

/// Reads fixed places of a text; a mismatch is remembered, and checked once, at the end.
class Places {
 public:
  explicit Places(std::string_view text) : text_(text) {}

  unsigned digit(std::size_t place) {
    const auto value = static_cast<unsigned>(text_[place]) - '0';
    wrong_ |= value > 9;
    return value;
  }
  unsigned twoDigits(std::size_t begin) { return digit(begin) * 10 + digit(begin + 1); }
  /// Two digits, at most `limit`.
  unsigned upTo(unsigned limit, std::size_t begin) {
    const unsigned value = twoDigits(begin);
    wrong_ |= value > limit;
    return value;
  }
  void literal(std::size_t place, char expected) { wrong_ |= text_[place] != expected; }

  [[nodiscard]] bool wrong() const { return wrong_; }

 private:
  std::string_view text_;
  bool wrong_ = false;
};

/// The instant of "yyyy-MM-ddTHH:mm:ss" in UTC; `text` is as long as that.
std::optional<std::int64_t> readHead(std::string_view text) {
  Places places(text);
  const unsigned year = places.twoDigits(0) * 100 + places.twoDigits(2);
  places.literal(4, '-');
  const unsigned month = places.upTo(12, 5);
  places.literal(7, '-');
  const unsigned day = places.upTo(31, 8);
  places.literal(10, 'T');
  const unsigned hour = places.upTo(23, 11);
  places.literal(13, ':');
  const unsigned minute = places.upTo(59, 14);
  places.literal(16, ':');
  const unsigned second = places.upTo(59, 17);
  if (places.wrong() || year == 0 || month == 0 || day == 0 || day > daysIn(month, year)) {
    return std::nullopt;
  }
  const std::int64_t seconds = hour * 3600 + minute * 60 + second;
  return daysSince1970(year, month, day) * millisecondsPerDay + seconds * 1000;
}

/// What the zone, `Z` or `+hhmm`, adds to UTC. Its range is that of a clock's display.
std::optional<std::int64_t> readZone(std::string_view text) {
  if (text == "Z") return 0;
  if (text.size() != 5 || (text[0] != '+' && text[0] != '-')) return std::nullopt;
  Places places(text);
  const std::int64_t minutes = places.upTo(23, 1) * 60 + places.upTo(59, 3);
  if (places.wrong()) return std::nullopt;
  return (text[0] == '+' ? minutes : -minutes) * 60'000;
}

/// ".SSS".
std::optional<std::int64_t> readFraction(std::string_view text) {
  Places places(text);
  places.literal(0, '.');
  const std::int64_t milliseconds = places.digit(1) * 100 + places.twoDigits(2);
  if (places.wrong()) return std::nullopt;
  return milliseconds;
}

// --- writing

char* writeDigit(char* out, std::uint64_t value) {
  *out = static_cast<char>('0' + value);
  return out + 1;
}

char* writeTwoDigits(char* out, std::uint64_t value) {
  return writeDigit(writeDigit(out, value / 10), value % 10);
}

/// At least four digits, without a sign: a year before 1 is written as its number BC.
char* writeYear(char* out, std::int64_t year) {
  if (year <= 0) year = 1 - year;
  if (year > 9999) return std::to_chars(out, out + 20, year).ptr;
  const auto value = static_cast<std::uint64_t>(year);
  return writeTwoDigits(writeTwoDigits(out, value / 100), value % 100);
}

char* write(char* out, std::string_view text) { return std::copy(text.begin(), text.end(), out); }

Failure mismatch(std::string_view string, const DateFormatter& formatter) {
  return Failure{DateFormatError::stringDoesNotMatchFormat{std::string(string),
                                                           std::string(formatter.pattern())}};
}

/// Where the third character from the end of a UTF-8 text begins. Combining marks count for
/// themselves: no date has any.
std::optional<std::size_t> thirdFromLast(std::string_view text) {
  int characters = 0;
  for (std::size_t i = text.size(); i-- > 0;) {
    const bool continues = (static_cast<unsigned char>(text[i]) & 0xC0) == 0x80;
    if (!continues && ++characters == 3) return i;
  }
  return std::nullopt;
}

}  // namespace

std::string_view DateFormatter::pattern() const {
  switch (kind_) {
    case Kind::zone:
      return "yyyy-MM-dd'T'HH:mm:ssZ";
    case Kind::millisecondsAndZone:
      return "yyyy-MM-dd'T'HH:mm:ss.SSSZ";
    case Kind::literalZeroMilliseconds:
      return "yyyy-MM-dd'T'HH:mm:ss.'000Z'";
  }
  return {};
}

std::optional<Date> DateFormatter::date(std::string_view string) const {
  if (string.size() <= headLength) return std::nullopt;
  std::string_view rest = string.substr(headLength);
  std::int64_t fraction = 0;
  std::int64_t offset = 0;
  if (kind_ == Kind::literalZeroMilliseconds) {
    if (rest != literalEnd) return std::nullopt;
  } else {
    if (kind_ == Kind::millisecondsAndZone) {
      const auto read = rest.size() > 4 ? readFraction(rest.substr(0, 4)) : std::nullopt;
      if (!read) return std::nullopt;
      fraction = *read;
      rest.remove_prefix(4);
    }
    const auto read = readZone(rest);
    if (!read) return std::nullopt;
    offset = *read;
  }
  const auto head = readHead(string.substr(0, headLength));
  if (!head) return std::nullopt;
  return Date(*head + fraction - offset);
}

std::string DateFormatter::string(Date date) const {
  const std::int64_t milliseconds = date.millisecondsSince1970();
  const std::int64_t days = detail::floorDivide(milliseconds, millisecondsPerDay);
  // Not days * millisecondsPerDay, which the earliest dates overflow.
  const std::int64_t remainder = milliseconds % millisecondsPerDay;
  const auto ofDay =
      static_cast<std::uint64_t>(remainder < 0 ? remainder + millisecondsPerDay : remainder);
  const auto [year, month, day] = dayOf(days);

  std::array<char, 48> text;
  char* out = writeYear(text.data(), year);
  const auto field = [&out](char before, std::uint64_t value) {
    *out = before;
    out = writeTwoDigits(out + 1, value);
  };
  field('-', month);
  field('-', day);
  field('T', ofDay / 3'600'000);
  field(':', ofDay / 60'000 % 60);
  field(':', ofDay / 1000 % 60);
  if (kind_ == Kind::millisecondsAndZone) {
    *out = '.';
    out = writeTwoDigits(writeDigit(out + 1, ofDay % 1000 / 100), ofDay % 100);
  }
  out = write(out, kind_ == Kind::literalZeroMilliseconds ? literalEnd : "+0000");
  return std::string(text.data(), out);
}

DateFormatter iso8601Formatter() { return DateFormatter(DateFormatter::Kind::zone); }

DateFormatter startResourceDateFormatter() {
  return DateFormatter(DateFormatter::Kind::millisecondsAndZone);
}

DateFormatter epgFromDateFormatter() {
  return DateFormatter(DateFormatter::Kind::literalZeroMilliseconds);
}

Result<Date> from8601(std::string_view string) {
  const auto formatter = iso8601Formatter();
  if (const auto date = formatter.date(string)) return *date;
  return mismatch(string, formatter);
}

std::string to8601(Date date) { return iso8601Formatter().string(date); }

Result<Date> fromEventDate(std::string_view string) {
  if (const auto date = eventDate(string)) return *date;
  // Names the pattern with milliseconds, even where it was not tried: readers of logs expect it.
  const auto third = thirdFromLast(string);
  if (!third || string[*third] != ':') return mismatch(string, startResourceDateFormatter());
  return mismatch(std::string(string).erase(*third, 1), startResourceDateFormatter());
}

std::optional<Date> eventDate(std::string_view string) {
  const auto third = thirdFromLast(string);
  if (!third || string[*third] != ':') return startResourceDateFormatter().date(string);
  std::array<char, 24> buffer;  // the longest that can match
  if (string.size() - 1 > buffer.size()) return std::nullopt;
  char* end = write(write(buffer.data(), string.substr(0, *third)), string.substr(*third + 1));
  return iso8601Formatter().date({buffer.data(), end});
}

std::optional<Date> resourceTime(std::string_view string) {
  if (const auto date = startResourceDateFormatter().date(string)) return date;
  return iso8601Formatter().date(string);
}

}  // namespace orvo
