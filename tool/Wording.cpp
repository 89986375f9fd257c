#include <fmt/format.h>
#include <tool/Wording.h>

#include <array>
#include <cmath>
#include <ctime>

namespace orvo::tool {

namespace {

std::tm localTime(Date date) {
  const auto instant = date.millisecondsSince1970();
  const auto seconds = static_cast<std::time_t>(instant / 1000 - (instant % 1000 < 0 ? 1 : 0));
  std::tm time{};
  localtime_r(&seconds, &time);
  return time;
}

}  // namespace

std::string durationText(double seconds) {
  constexpr double kTooLong = 1e9;
  if (!std::isfinite(seconds) || std::abs(seconds) > kTooLong) return "";
  const auto whole = static_cast<long>(std::lround(seconds));
  if (whole < 60) return fmt::format("{:g} s", std::round(seconds * 10) / 10);
  const long minutes = (whole + 30) / 60;
  if (minutes < 60) return fmt::format("{} min", minutes);
  if (minutes % 60 == 0) return fmt::format("{} h", minutes / 60);
  return fmt::format("{} h {:02}", minutes / 60, minutes % 60);
}

std::string durationText(const std::optional<double>& seconds) {
  return seconds ? durationText(*seconds) : "";
}

std::string spanText(std::chrono::nanoseconds time) {
  const double milliseconds = std::chrono::duration<double, std::milli>(time).count();
  if (milliseconds < 9.95) return fmt::format("{:.1f} ms", milliseconds);
  if (milliseconds < 999.5) return fmt::format("{:.0f} ms", milliseconds);
  return milliseconds < 99'950 ? fmt::format("{:.2f} s", milliseconds / 1e3)
                               : fmt::format("{:.0f} s", milliseconds / 1e3);
}

std::string spanOfDaysText(std::chrono::milliseconds span) {
  constexpr std::chrono::hours kOneDay{24};
  constexpr int kDaysOfAYear = 365;
  const auto length = std::chrono::abs(span);
  if (length < 2 * kOneDay) return durationText(static_cast<double>(length.count()) / 1000);
  const auto days = length / kOneDay;
  return days < 2 * kDaysOfAYear ? countText(days) + " days"
                                 : countText(days / kDaysOfAYear) + " years";
}

std::string clockText(Date date) {
  const std::tm time = localTime(date);
  return fmt::format("{:02}:{:02}", time.tm_hour, time.tm_min);
}

std::string preciseClockText(Date date) {
  return fmt::format("{}:{:02}", clockText(date), localTime(date).tm_sec);
}

std::string dayText(Date date) {
  static constexpr std::array<const char*, 7> kDays{"Sun", "Mon", "Tue", "Wed",
                                                    "Thu", "Fri", "Sat"};
  static constexpr std::array<const char*, 12> kMonths{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                       "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  const std::tm time = localTime(date);
  return fmt::format("{} {} {} {}", kDays[static_cast<std::size_t>(time.tm_wday)], time.tm_mday,
                     kMonths[static_cast<std::size_t>(time.tm_mon)], time.tm_year + 1900);
}

std::string dateText(Date date) { return dayText(date) + ", " + clockText(date); }

std::string statusText(const Status& status) {
  std::string text = status.label;
  if (status.startTime) text += ", " + dateText(*status.startTime);
  if (status.endTime) {
    const bool sameDay = status.startTime && dayText(*status.startTime) == dayText(*status.endTime);
    text += (status.startTime ? " – " : ", until ") +
            (sameDay ? clockText(*status.endTime) : dateText(*status.endTime));
  }
  return text;
}

Style styleOf(StatusCode code) {
  switch (code) {
    case StatusCode::live:
      return Style::good;
    case StatusCode::canceled:
      return Style::bad;
    case StatusCode::delayed:
    case StatusCode::unconfirmed:
      return Style::warning;
    case StatusCode::pre:
      return Style::accent;
    default:
      return Style::plain;
  }
}

std::string countText(std::int64_t count) {
  std::string text = std::to_string(count);
  const std::size_t digits = count < 0 ? 1 : 0;
  for (std::size_t index = text.size(); index > digits + 3;) {
    index -= 3;
    text.insert(index, ",");
  }
  return text;
}

std::string countText(std::int64_t count, const std::string& noun) {
  return countText(count) + " " + noun + (count == 1 ? "" : "s");
}

std::string joined(const std::vector<std::string>& texts) {
  std::string result;
  for (const std::string& text : texts) {
    if (text.empty()) continue;
    if (!result.empty()) result += ", ";
    result += text;
  }
  return result;
}

std::string urlText(const std::optional<URL>& url) { return url ? url->text() : ""; }

}  // namespace orvo::tool
