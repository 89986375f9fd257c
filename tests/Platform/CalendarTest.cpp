#include <OrvoAPI/Platform/Calendar.h>
#include <gmock/gmock.h>
#include <tests/support/Test.h>
#include <tests/support/Zone.h>
#include <unicode/gregocal.h>

#include <clocale>
#include <random>

extern "C" __attribute__((weak)) void __lsan_disable();
extern "C" __attribute__((weak)) void __lsan_enable();

namespace orvo {
namespace {

using std::chrono::milliseconds;
using testing::AllOf;
using testing::ElementsAre;
using testing::Ge;
using testing::Le;

/// An instant in UTC.
Date utc(int year, unsigned month, unsigned day, int hour = 0, int minute = 0) {
  const std::chrono::sys_days days =
      std::chrono::year(year) / static_cast<int>(month) / static_cast<int>(day);
  return Date(std::chrono::milliseconds(days.time_since_epoch()).count()) +
         std::chrono::minutes(hour * 60 + minute);
}

TEST(Calendar, StartsDaysByTheClocksOnTheWall) {
  const Zone east("Asia/Kathmandu");  // 5:45
  EXPECT_EQ(Calendar().startOfDay(utc(2024, 5, 1, 18, 20)), utc(2024, 5, 1, 18, 15));
  const Zone zone("Europe/Vienna");
  Calendar calendar;
  EXPECT_EQ(calendar.startOfDay(Date(-1)), utc(1969, 12, 31, 23));
  EXPECT_EQ(calendar.startOfDay(Date(-3'600'001)), utc(1969, 12, 30, 23));
  EXPECT_EQ(calendar.hour(Date(-3'600'001)), 23);
  EXPECT_EQ(calendar.startOfDay(utc(2024, 3, 31, 21, 59)), utc(2024, 3, 30, 23)) << "23 hours";
  const Date autumn = utc(2024, 10, 26, 22);
  EXPECT_EQ(calendar.startOfDay(utc(2024, 10, 27, 22, 59)), autumn) << "25 hours";
  EXPECT_EQ(calendar.hour(autumn + 3h), 2) << "the second time";
  EXPECT_EQ(Calendar::addingHours(autumn, 4), autumn + 4h) << "elapsed ones";
}

constexpr Date kFirst(std::numeric_limits<std::int64_t>::min());
constexpr Date kLast(std::numeric_limits<std::int64_t>::max());
static_assert(kLast + 1ms == kLast && kFirst + -1ms == kFirst && kFirst + 1ms > kFirst);
static_assert(kFirst - 1ms == kFirst && kLast - milliseconds::min() == kLast &&
              kLast - 1ms < kLast);
static_assert(kLast - kFirst == milliseconds::max() && kFirst - kLast == milliseconds::min());

TEST(Calendar, CountsOnAtTheEndsOfTime) {
  const Zone zone("Europe/Vienna");
  Calendar calendar;
  for (const Date date : {kFirst, kLast, Date(kFirst.millisecondsSince1970() / 2)}) {
    const Date day = calendar.startOfDay(date);
    EXPECT_EQ(calendar.startOfDay(day), day);
    EXPECT_EQ(calendar.hour(day), 0);
    EXPECT_THAT(calendar.hour(date), AllOf(Ge(0), Le(23)));
    EXPECT_THAT(calendar.weekday(date), AllOf(Ge(1), Le(7)));
    EXPECT_TRUE(calendar.isToday(date, date));
    for (const int days : {std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
      EXPECT_EQ(calendar.addingDays(date, days) > calendar.addingDays(date, 0), days > 0);
      EXPECT_EQ(Calendar::addingHours(date, days) >= date, days > 0 || date == kFirst);
    }
  }
}

TEST(Calendar, AddsDaysToATimeThatClocksSkipOrShowTwice) {
  const Zone zone("Europe/Vienna");
  Calendar calendar;
  EXPECT_EQ(calendar.addingDays(utc(2024, 3, 30, 1, 30), 1), utc(2024, 3, 31, 1, 30)) << "3:30";
  EXPECT_EQ(calendar.addingDays(utc(2024, 4, 1, 0, 30), -1), utc(2024, 3, 31, 1, 30)) << "3:30";
  EXPECT_EQ(calendar.addingDays(utc(2024, 10, 26, 0, 30), 1), utc(2024, 10, 27, 0, 30)) << "first";
  EXPECT_EQ(calendar.addingDays(utc(2024, 10, 28, 1, 30), -1), utc(2024, 10, 27, 1, 30)) << "last";
  EXPECT_EQ(calendar.addingDays(utc(2024, 3, 30, 1, 30) + 7ms, 2), utc(2024, 4, 1, 0, 30) + 7ms);
}

TEST(Calendar, StartsADayWithItsFirstInstantWhereMidnightIsSkippedOrShownTwice) {
  const Zone zone("America/Sao_Paulo");
  Calendar calendar;
  EXPECT_EQ(calendar.startOfDay(utc(2018, 11, 4, 20)), utc(2018, 11, 4, 3)) << "at 1:00";
  EXPECT_EQ(calendar.hour(utc(2018, 11, 4, 3)), 1);
  EXPECT_TRUE(calendar.isTomorrow(utc(2018, 11, 4, 3), utc(2018, 11, 3, 10)));
  EXPECT_FALSE(calendar.isTomorrow(utc(2018, 11, 4, 2, 59), utc(2018, 11, 3, 10)));
  // 17 February has the hour from 23:00 twice.
  EXPECT_EQ(calendar.startOfDay(utc(2018, 2, 18, 2, 30)), utc(2018, 2, 17, 2));
  EXPECT_EQ(calendar.startOfDay(utc(2018, 2, 18, 3)), utc(2018, 2, 18, 3));
  const Zone other("America/St_Johns");  // back at 0:01, to 23:01 of the day before
  Calendar odd;
  EXPECT_EQ(odd.startOfDay(utc(2010, 11, 7, 12)), utc(2010, 11, 7, 2, 30));
  EXPECT_EQ(odd.startOfDay(utc(2010, 11, 7, 2, 30)), utc(2010, 11, 7, 2, 30));
  EXPECT_EQ(odd.startOfDay(utc(2010, 11, 7, 2, 31)), utc(2010, 11, 6, 2, 30)) << "the 6th again";
}

TEST(Calendar, FindsTomorrowBehindADayThatWasLeftOut) {
  const Zone zone("Pacific/Apia");  // no 30 December 2011
  Calendar calendar;
  const Date now = utc(2011, 12, 29, 22);
  const Date next = utc(2011, 12, 30, 10);
  EXPECT_TRUE(calendar.isToday(next - 1ms, now));
  EXPECT_TRUE(calendar.isTomorrow(next, now));
  EXPECT_TRUE(calendar.isTomorrow(next + 23h, now));
  EXPECT_FALSE(calendar.isTomorrow(next + 24h, now));
  EXPECT_EQ(calendar.weekday(now), 5);
  EXPECT_EQ(calendar.weekday(next), 7);
}

/// One calendar that remembers, a fresh one, and a large Unicode library's agree.
TEST(Calendar, AgreesWithTheOracleAroundChangesOfTheClocks) {
  std::mt19937_64 random(3);
  for (const char* name : {"Europe/Vienna", "America/Sao_Paulo", "Australia/Lord_Howe",
                           "America/St_Johns", "Asia/Kathmandu", "America/New_York", "UTC"}) {
    const Zone zone(name);
    UErrorCode status = U_ZERO_ERROR;
    icu::GregorianCalendar oracle(icu::TimeZone::createTimeZone(name), status);
    const auto oracleDate = [&] { return Date(static_cast<std::int64_t>(oracle.getTime(status))); };
    Calendar calendar;
    for (int i = 0; i < 3000; ++i) {
      const Date date(utc(2008, 1, 1) + std::chrono::milliseconds(random() % 315'360'000'000));
      oracle.setTime(static_cast<UDate>(date.millisecondsSince1970()), status);
      ASSERT_EQ(calendar.hour(date), oracle.get(UCAL_HOUR_OF_DAY, status)) << name;
      ASSERT_EQ(calendar.weekday(date), oracle.get(UCAL_DAY_OF_WEEK, status)) << name;
      ASSERT_EQ(calendar.startOfDay(date), Calendar().startOfDay(date)) << name;
      const int days = static_cast<int>(random() % 400) - 200;
      oracle.add(UCAL_DATE, days, status);
      ASSERT_EQ(calendar.addingDays(date, days), oracleDate()) << name << " " << days;
    }
    ASSERT_TRUE(U_SUCCESS(status));
  }
}

TEST(Calendar, LeavesTheHostsZoneAlone) {
  const Zone zone("Europe/Vienna");
  const Variable changed("TZ", "Asia/Kathmandu");
  EXPECT_EQ(Calendar().hour(utc(2024, 5, 1, 10)), 12) << "until the host says so by tzset";
  EXPECT_STREQ(tzname[0], "CET");
  tzset();
  EXPECT_EQ(Calendar().hour(utc(2024, 5, 1, 10)), 15);
}

TEST(Date, GoesToTheStandardClockAndBackTowardsThePast) {
  using Clock = std::chrono::system_clock;
  EXPECT_EQ(Date(Clock::time_point(-1ns)), Date(-1));
  EXPECT_EQ(Date(Clock::time_point(1'999'999ns)), Date(1));
  EXPECT_EQ(Date(1'493'632'800'123).timePoint(), Clock::time_point(1'493'632'800'123ms));
  EXPECT_EQ(Date(-1).timePoint(), Clock::time_point(-1ms));
  using Limits = std::numeric_limits<std::int64_t>;
  EXPECT_EQ(Date(Limits::min()).timePoint(), Clock::time_point::min());
  EXPECT_EQ(Date(Limits::max()).timePoint(), Clock::time_point::max());
}

TEST(CapitalWeekdayNames, AreEnglishInALocaleThatIsNotInstalled) {
  const Variable all("LC_ALL", "xx_XX.UTF-8");
  EXPECT_THAT(capitalWeekdayNames(), ElementsAre("SUNDAY", "MONDAY", "TUESDAY", "WEDNESDAY",
                                                 "THURSDAY", "FRIDAY", "SATURDAY"));
}

TEST(CapitalWeekdayNames, FollowTheLocaleOfDatesInItsOwnCapitalsAndInUTF8) {
  const std::string folder = testing::TempDir() + "orvo-locales";
  const std::string make = "mkdir -p " + folder + " && localedef -i tr_TR -f ISO-8859-9 " + folder +
                           "/tr_TR >/dev/null 2>&1";
  ASSERT_EQ(std::system(make.c_str()), 0) << "needs localedef and its sources (locales)";
  const std::string before = std::setlocale(LC_ALL, nullptr);
  const Variable path("LOCPATH", folder);
  const Variable all("LC_ALL", "");
  const Variable dates("LC_TIME", "tr_TR");
  // The C library loses the parsed LOCPATH at each use.
  if (__lsan_disable) __lsan_disable();
  const auto names = capitalWeekdayNames();
  if (__lsan_enable) __lsan_enable();
  EXPECT_THAT(names, ElementsAre("PAZAR", "PAZARTESİ", "SALI", "ÇARŞAMBA", "PERŞEMBE", "CUMA",
                                 "CUMARTESİ"));
  EXPECT_EQ(std::setlocale(LC_ALL, nullptr), before);
}

}  // namespace
}  // namespace orvo
