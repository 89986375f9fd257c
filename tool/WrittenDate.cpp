#include <OrvoAPI/Parsing/DateFormatter.h>
#include <OrvoAPI/Platform/Calendar.h>
#include <tool/WrittenDate.h>

#include <algorithm>
#include <chrono>
#include <ctime>

namespace orvo::tool {

namespace {

using namespace std::chrono;

/// When the evening begins, on television.
constexpr hours kEvening{20};

/// Takes what stands at the beginning of a text from it.
class Scanner {
 public:
  explicit Scanner(std::string_view text) : rest_(text) {}

  [[nodiscard]] bool atEnd() const { return rest_.empty(); }
  bool take(std::string_view text) {
    if (!rest_.starts_with(text)) return false;
    rest_.remove_prefix(text.size());
    return true;
  }
  /// A number of that many digits; more are left.
  std::optional<int> number(std::size_t least, std::size_t most) {
    const std::size_t found = std::min(rest_.find_first_not_of("0123456789"), rest_.size());
    const std::size_t count = std::min(found, most);
    if (count < least) return std::nullopt;
    int value = 0;
    for (const char digit : rest_.substr(0, count)) value = 10 * value + (digit - '0');
    rest_.remove_prefix(count);
    return value;
  }

 private:
  std::string_view rest_;
};

/// `18:00`, `18:00:30`, `18:00:30.000`
std::optional<milliseconds> time(Scanner& scanner) {
  const auto hour = scanner.number(2, 2);
  const auto minute = scanner.take(":") ? scanner.number(2, 2) : std::nullopt;
  const auto second = minute && scanner.take(":") ? scanner.number(2, 2) : 0;
  const auto fraction = second && scanner.take(".") ? scanner.number(3, 3) : 0;
  if (!hour || !minute || !second || !fraction) return std::nullopt;
  if (*hour > 23 || *minute > 59 || *second > 59) return std::nullopt;
  return hours(*hour) + minutes(*minute) + seconds(*second) + milliseconds(*fraction);
}

/// How far the zone is ahead of UTC: `Z`, `+01:00`, `+0100`.
std::optional<milliseconds> zone(Scanner& scanner) {
  if (scanner.take("Z")) return milliseconds(0);
  const bool isWest = scanner.take("-");
  if (!isWest && !scanner.take("+")) return std::nullopt;
  const auto hour = scanner.number(2, 2);
  scanner.take(":");
  const auto minute = scanner.number(2, 2);
  if (!hour || !minute || *hour > 23 || *minute > 59) return std::nullopt;
  const milliseconds ahead = hours(*hour) + minutes(*minute);
  return isWest ? -ahead : ahead;
}

milliseconds eastOfUTC(milliseconds sinceEpoch) {
  const std::time_t time = floor<seconds>(sinceEpoch).count();
  std::tm parts{};
  return localtime_r(&time, &parts) != nullptr ? seconds(parts.tm_gmtoff) : seconds(0);
}

/// When a wall clock in the device's zone shows that.
Date onTheWall(milliseconds wall) {
  const milliseconds before = eastOfUTC(wall - days(1)), after = eastOfUTC(wall + days(1));
  for (const milliseconds offset : {before, after}) {
    if (eastOfUTC(wall - offset) == offset) return Date((wall - offset).count());
  }
  return Date((wall - before).count());
}

Date startOf(sys_days day) {
  return Calendar().startOfDay(onTheWall(day.time_since_epoch() + 12h));
}

/// The day that it is where the device is.
sys_days dayOf(Date date) {
  const milliseconds sinceEpoch(date.millisecondsSince1970());
  return floor<days>(sys_time<milliseconds>(sinceEpoch + eastOfUTC(sinceEpoch)));
}

/// `2026-11-23`, `tomorrow`
std::optional<sys_days> day(Scanner& scanner, Date now) {
  if (scanner.take("today")) return dayOf(now);
  if (scanner.take("tomorrow")) return dayOf(now) + days(1);
  if (scanner.take("yesterday")) return dayOf(now) - days(1);
  const auto years = scanner.number(4, 4);
  const auto months = scanner.take("-") ? scanner.number(2, 2) : std::nullopt;
  const auto dayOfMonth = scanner.take("-") ? scanner.number(2, 2) : std::nullopt;
  if (!years || !months || !dayOfMonth) return std::nullopt;
  const year_month_day date(year(*years), month(static_cast<unsigned>(*months)),
                            std::chrono::day(static_cast<unsigned>(*dayOfMonth)));
  return date.ok() ? std::optional(sys_days(date)) : std::nullopt;
}

/// `+2h`, `-30m`, `+3d`
std::optional<Date> fromNow(std::string_view text, Date now) {
  Scanner scanner(text);
  const bool isPast = scanner.take("-");
  if (!isPast && !scanner.take("+")) return std::nullopt;
  auto count = scanner.number(1, 5);
  if (!count) return std::nullopt;
  if (isPast) count = -*count;
  std::optional<Date> date;
  if (scanner.take("d")) {
    date = Calendar().addingDays(now, *count);
  } else if (scanner.take("h")) {
    date = now + hours(*count);
  } else if (scanner.take("m")) {
    date = now + minutes(*count);
  }
  return scanner.atEnd() ? date : std::nullopt;
}

}  // namespace

std::optional<Date> writtenDate(std::string_view text, Date now) {
  if (text == "now") return now;
  if (text == "tonight") return onTheWall(dayOf(now).time_since_epoch() + kEvening);
  if (const auto date = startResourceDateFormatter().date(text)) return date;
  if (const auto date = fromNow(text, now)) return date;
  Scanner timeOnly(text);
  if (const auto today = time(timeOnly); today && timeOnly.atEnd()) {
    return onTheWall(dayOf(now).time_since_epoch() + *today);
  }
  Scanner scanner(text);
  const auto date = day(scanner, now);
  if (!date) return std::nullopt;
  if (scanner.atEnd()) return startOf(*date);
  if (!scanner.take("T") && !scanner.take(" ")) return std::nullopt;
  const auto clock = time(scanner);
  if (!clock) return std::nullopt;
  const milliseconds wall = date->time_since_epoch() + *clock;
  if (scanner.atEnd()) return onTheWall(wall);
  const auto ahead = zone(scanner);
  return ahead && scanner.atEnd() ? std::optional(Date((wall - *ahead).count())) : std::nullopt;
}

}  // namespace orvo::tool
