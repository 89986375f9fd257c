// Dates read in each of the service's patterns, and slots put into hours and days, beside the C
// library, which is asked for a day's start only when the day is another one.

#include <OrvoAPI/Linear/Lineup.h>
#include <OrvoAPI/Parsing/DateFormatter.h>
#include <OrvoAPI/Parsing/JSONDataParser.h>
#include <benchmarks/support/Documents.h>
#include <benchmarks/support/Measure.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <string>
#include <vector>

using namespace orvo;
using namespace orvo::benchmarks;

namespace {

constexpr double kReadingGoal = 0.35;
constexpr double kBucketsGoal = 1;
constexpr std::size_t kDates = 512;
constexpr std::size_t kSlots = 5000;

/// Instants of some years, written by the formatter.
std::vector<std::string> datesOf(const DateFormatter& formatter) {
  std::vector<std::string> texts;
  constexpr std::int64_t kStep = 86'400'000LL * 5 + 3'723'000;
  for (std::size_t i = 0; i < kDates; ++i) {
    texts.push_back(formatter.string(Date(1'493'596'800'000 + kStep * static_cast<int>(i))));
  }
  return texts;
}

/// As one reads such dates with what the C library has: `format` up to the seconds, three digits
/// where the pattern has them, and the zone.
std::int64_t readByLibrary(const std::string& text, bool milliseconds, bool zone) {
  std::tm parts{};
  const char* rest = strptime(text.c_str(), "%Y-%m-%dT%H:%M:%S", &parts);
  if (rest == nullptr) std::abort();
  std::int64_t fraction = 0;
  if (milliseconds) {
    char* end = nullptr;
    fraction = std::strtol(rest + 1, &end, 10);
    rest = end;
  }
  if (zone && strptime(rest, "%z", &parts) == nullptr) std::abort();
  const std::int64_t offset = parts.tm_gmtoff;  // timegm sets it to zero
  return (timegm(&parts) - offset) * 1000 + fraction;
}

void measureReading(const DateFormatter& formatter, bool milliseconds, bool zone) {
  const auto texts = datesOf(formatter);
  for (const auto& text : texts) {
    const auto ours = formatter.date(text)->millisecondsSince1970();
    if (ours != readByLibrary(text, milliseconds, zone)) std::abort();
  }
  auto figures = compare(
      [&] {
        for (const auto& text : texts) keep(formatter.date(text));
      },
      [&] {
        for (const auto& text : texts) keep(readByLibrary(text, milliseconds, zone));
      });
  figures.ours /= kDates;
  figures.theirs /= kDates;
  print("date read, " + texts.front(), "ns", "strptime and timegm", figures, kReadingGoal);
}

/// The start of the hour, by the wall clock.
void bucketByLibrary(const std::vector<Date>& starts, std::vector<std::time_t>& out) {
  out.clear();
  std::tm day{};
  std::time_t begin = 0;
  for (const Date start : starts) {
    const std::time_t seconds = start.millisecondsSince1970() / 1000;
    std::tm parts{};
    localtime_r(&seconds, &parts);
    if (parts.tm_yday != day.tm_yday || parts.tm_year != day.tm_year || begin == 0) {
      day = parts;
      day.tm_hour = day.tm_min = day.tm_sec = 0;
      day.tm_isdst = -1;
      begin = mktime(&day);
    }
    out.push_back(begin + parts.tm_hour * 3600);
  }
}

std::vector<LineupSlot> slotsOf(std::size_t count) {
  const auto json = JSONDataParser::array(Data(lineupDocument(count)));
  const auto lineup = LineupParser::parse(*json.value());
  return {lineup.slots_.begin(), lineup.slots_.end()};
}

/// What the whole schedule takes beyond its slots themselves.
void measureBuckets(const std::string& order, const std::vector<LineupSlot>& slots, double goal) {
  std::vector<Date> starts;
  for (const LineupSlot& slot : slots) starts.push_back(slot.start);
  std::vector<std::time_t> buckets;
  buckets.reserve(kSlots);
  const auto figures = inTurns(
      [&] {
        std::vector<double> rounds;
        for (int round = 0; round < 9; ++round) {
          auto copy = slots;
          const double begin = threadSeconds();
          const auto lineup = Lineup::grouping(std::move(copy));
          rounds.push_back((threadSeconds() - begin) * 1e9);
          keep(lineup);
        }
        return median(rounds);
      },
      [&] {
        return nanosecondsPerCall([&] {
          bucketByLibrary(starts, buckets);
          keep(buckets);
        });
      });
  print("5,000 slots into hours and days, " + order, "ns", "localtime_r and mktime", figures, goal);
}

}  // namespace

int main() {
  using Kind = DateFormatter::Kind;
  measureReading(DateFormatter(Kind::zone), false, true);
  measureReading(DateFormatter(Kind::millisecondsAndZone), true, true);
  measureReading(DateFormatter(Kind::literalZeroMilliseconds), false, false);
  setenv("TZ", "Europe/Vienna", 1);
  tzset();
  auto slots = slotsOf(kSlots);
  measureBuckets("by time", slots, kBucketsGoal);
  std::ranges::stable_sort(slots, {}, &LineupSlot::channelOrder);
  measureBuckets("channel by channel", slots, kNothing);
}
