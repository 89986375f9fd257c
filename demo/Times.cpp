#include <demo/Times.h>

#include <array>
#include <charconv>
#include <cstdio>

namespace orvo::demo {

namespace {

std::string written(Instant instant, std::string_view zone) {
  const auto day = std::chrono::floor<std::chrono::days>(instant);
  const std::chrono::year_month_day date(day);
  const std::chrono::hh_mm_ss time(instant - day);
  std::array<char, 64> buffer;
  std::snprintf(buffer.data(), buffer.size(), "%04d-%02u-%02uT%02d:%02d:%02d",
                static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                static_cast<unsigned>(date.day()), static_cast<int>(time.hours().count()),
                static_cast<int>(time.minutes().count()), static_cast<int>(time.seconds().count()));
  return std::string(buffer.data()).append(zone);
}

}  // namespace

Instant present() {
  return std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
}

std::string withMilliseconds(Instant instant) { return written(instant, ".000Z"); }

std::string withNumericZone(Instant instant) { return written(instant, "+0000"); }

std::string withColonZone(Instant instant, std::chrono::hours offset) {
  std::array<char, 16> zone;
  const int hours = static_cast<int>(offset.count());
  std::snprintf(zone.data(), zone.size(), "%c%02d:00", hours < 0 ? '-' : '+', std::abs(hours));
  return written(instant + offset, zone.data());
}

std::optional<Instant> parseInstant(std::string_view text) {
  constexpr std::string_view kShape = "0000-00-00T00:00:00.000Z";
  if (text.size() != kShape.size()) return std::nullopt;
  for (std::size_t index = 0; index < text.size(); ++index) {
    const bool digit = text[index] >= '0' && text[index] <= '9';
    if (kShape[index] == '0' ? !digit : text[index] != kShape[index]) return std::nullopt;
  }
  const auto number = [&](std::size_t offset, std::size_t length) {
    int value = 0;
    std::from_chars(text.data() + offset, text.data() + offset + length, value);
    return value;
  };
  const std::chrono::year_month_day date(std::chrono::year(number(0, 4)),
                                         std::chrono::month(static_cast<unsigned>(number(5, 2))),
                                         std::chrono::day(static_cast<unsigned>(number(8, 2))));
  if (!date.ok()) return std::nullopt;
  return std::chrono::sys_days(date) + std::chrono::hours(number(11, 2)) +
         std::chrono::minutes(number(14, 2)) + std::chrono::seconds(number(17, 2));
}

}  // namespace orvo::demo
