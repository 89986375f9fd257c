// Time-zone rules and instants: the first line is the value of TZ, after it come instants of eight
// bytes each.

#include <OrvoAPI/Platform/Calendar.h>
#include <fuzz/FuzzTarget.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>
#include <utility>

using namespace orvo;

namespace {

/// Some 10,000 years around 1970, within which each instant has a day of the calendar.
constexpr std::int64_t kFarthest = 300'000'000'000'000;

/// Whether clocks change more than once around an instant, as only nonsense has them do: a calendar
/// takes it that they do not.
bool isRestless(Date date) {
  constexpr std::time_t kStep = 300;
  constexpr std::time_t kReach = 36 * 3'600;
  const std::time_t now = date.millisecondsSince1970() / 1000;
  int changes = -1;
  long offset = -1;
  for (std::time_t time = now - kReach; time <= now + kReach; time += kStep) {
    std::tm parts{};
    localtime_r(&time, &parts);
    if (std::exchange(offset, parts.tm_gmtoff) != parts.tm_gmtoff) ++changes;
  }
  return changes > 1;
}

void look(Calendar& calendar, Date date) {
  if (isRestless(date)) return;
  const Date start = calendar.startOfDay(date);
  const int hour = calendar.hour(date);
  const int weekday = calendar.weekday(date);
  Calendar fresh;
  fuzz::require(
      fresh.startOfDay(date) == start && fresh.hour(date) == hour && fresh.weekday(date) == weekday,
      "a calendar that remembers agrees with a fresh one");
  fuzz::require(hour >= 0 && hour <= 23 && weekday >= 1 && weekday <= 7,
                "hours and weekdays have their ranges");
  fuzz::require(calendar.isToday(date, date), "an instant lies in its own day");
  if (std::abs(date.millisecondsSince1970()) > kFarthest) return;
  fuzz::require(start <= date, "a day begins before it goes on");
  fuzz::require(calendar.startOfDay(start) == start, "the start of a day lies in that day");
  fuzz::require(calendar.addingDays(date, 0) == date, "no days added change nothing");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  auto rest = fuzz::text(bytes, size);
  const std::string rule(fuzz::takePiece(rest));
  // Rules only: a name would be looked up among the system's files.
  if (rule.find('/') != std::string::npos || rule.starts_with(':')) return -1;
  if (rule.find('\0') != std::string::npos) return -1;
  setenv("TZ", rule.c_str(), 1);  // NOLINT(concurrency-mt-unsafe): there is one thread
  tzset();
  Calendar calendar;
  while (rest.size() >= sizeof(std::int64_t)) {
    std::int64_t instant = 0;
    std::memcpy(&instant, rest.data(), sizeof(instant));
    rest.remove_prefix(sizeof(instant));
    look(calendar, Date(instant));
    // Fuzzers find the far ends by themselves, the present less so.
    look(calendar, Date(instant % 2'000'000'000'000));
  }
  return 0;
}
