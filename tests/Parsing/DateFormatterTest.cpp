#include <OrvoAPI/Parsing/DateFormatError.h>
#include <OrvoAPI/Parsing/DateFormatter.h>
#include <gtest/gtest.h>
#include <unicode/gregocal.h>
#include <unicode/smpdtfmt.h>

#include <random>
#include <string>

namespace orvo {
namespace {

const std::string kSeconds = "yyyy-MM-dd'T'HH:mm:ssZ";
const std::string kMilliseconds = "yyyy-MM-dd'T'HH:mm:ss.SSSZ";
/// 2017-05-01 10:00:00 UTC.
constexpr Date kMay(1'493'632'800'000);

/// The same formats as a large Unicode library has them.
class Oracle {
 public:
  explicit Oracle(const DateFormatter& formatter)
      : format_(icu::UnicodeString::fromUTF8(std::string(formatter.pattern())),
                icu::Locale("en_US_POSIX"), status_) {
    icu::GregorianCalendar calendar(*icu::TimeZone::getGMT(), status_);
    calendar.setGregorianChange(-1e17, status_);
    format_.setCalendar(calendar);
    format_.setLenient(false);
    EXPECT_TRUE(U_SUCCESS(status_));
  }
  std::string string(Date date) {
    icu::UnicodeString text;
    std::string utf8;
    format_.format(static_cast<UDate>(date.millisecondsSince1970()), text).toUTF8String(utf8);
    return utf8;
  }
  std::optional<Date> date(std::string_view string) {
    const auto text = icu::UnicodeString::fromUTF8(std::string(string));
    icu::ParsePosition position(0);
    const UDate read = format_.parse(text, position);
    if (position.getErrorIndex() >= 0 || position.getIndex() != text.length()) return std::nullopt;
    return Date(static_cast<std::int64_t>(read));
  }

 private:
  UErrorCode status_ = U_ZERO_ERROR;
  icu::SimpleDateFormat format_;
};

/// Instants of the years 1 to 9999, half of them within a century of 1970, and at days' edges.
Date someDate(std::mt19937_64& random) {
  const auto span = random() % 2 == 0 ? 3'155'760'000'000 : 62'135'596'800'000;
  Date date(std::uniform_int_distribution<std::int64_t>(-span, span)(random));
  const auto ofDay = date.millisecondsSince1970() % 86'400'000;
  return random() % 4 == 0
             ? Date(date.millisecondsSince1970() - ofDay) - std::chrono::milliseconds(1)
             : date;
}

DateFormatError::stringDoesNotMatchFormat mismatch(const Result<Date>& result) {
  return *result.error()->as<DateFormatError>()->as<DateFormatError::stringDoesNotMatchFormat>();
}

/// The text with one to three characters changed, added or taken away.
std::string damaged(std::string text, std::mt19937_64& random) {
  const std::string_view characters = "0123456789:+-.TZ tz\xC3\xA9";
  for (auto faults = random() % 3 + 1; faults-- > 0;) {
    const auto place = random() % text.size();
    const auto kind = random() % 8;
    const char character = characters[random() % characters.size()];
    text.replace(place, kind == 0 ? 0 : 1, kind == 1 ? 0 : 1, character);
  }
  return text;
}

TEST(DateFormatter, WritesAndReadsWhatTheOracleDoesAndNoMore) {
  std::mt19937_64 random(7);
  int accepted = 0;
  for (const auto& formatter :
       {iso8601Formatter(), startResourceDateFormatter(), epgFromDateFormatter()}) {
    Oracle oracle(formatter);
    for (int i = 0; i < 8000; ++i) {
      const Date date = someDate(random);
      const auto text = formatter.string(date);
      ASSERT_EQ(text, oracle.string(date)) << date.millisecondsSince1970();
      ASSERT_EQ(formatter.date(text), oracle.date(text)) << text;
      const auto other = damaged(text, random);
      if (!formatter.date(other)) continue;
      ++accepted;
      ASSERT_EQ(formatter.date(other), oracle.date(other)) << other;
    }
  }
  EXPECT_GT(accepted, 1000);
}

TEST(DateFormatter, TakesTheWholeTextOrNothing) {
  const auto reads = [](const std::string& text) {
    return iso8601Formatter().date(text).has_value();
  };
  for (const char* text :
       {"2017-05-01T10:00:00Z", "2017-05-01T10:00:00+0000", "2016-02-29T23:59:59-2359",
        "2000-02-29T00:00:00Z", "0001-01-01T00:00:00Z", "9999-12-31T23:59:59+2359"}) {
    EXPECT_TRUE(reads(text)) << text;
  }
  for (const std::string day :
       {"2017-02-29", "1900-02-29", "2017-04-31", "2017-00-01", "2017-13-01", "2017-05-00",
        "0000-01-01", "2017-5-1", "17-05-01", " 2017-05-01", "+2017-05-01", ""}) {
    EXPECT_FALSE(reads(day + "T10:00:00Z")) << day;
  }
  for (const std::string time :
       {"", "T24:00:00", "T10:60:00", "T10:00:60", "t10:00:00", " 10:00:00", "T10:00:0\xC2\xB2"}) {
    EXPECT_FALSE(reads("2017-05-01" + time + "Z")) << time;
  }
  for (const std::string zone :
       {"", "Z ", "z", "+01:00", "+01", "+2400", "+0060", "GMT", ".000Z"}) {
    EXPECT_FALSE(reads("2017-05-01T10:00:00" + zone)) << zone;
  }
}

TEST(DateFormatter, WantsExactlyThreeDigitsOfAFraction) {
  const auto reads = [](const std::string& fraction) {
    return startResourceDateFormatter().date("2017-05-01T10:00:00" + fraction).has_value();
  };
  EXPECT_TRUE(reads(".250Z") && reads(".000+0100"));
  for (const char* fraction :
       {"Z", ".Z", ".2Z", ".25Z", ".2500Z", ",250Z", ".250", ".-25Z", ".25"}) {
    EXPECT_FALSE(reads(fraction)) << fraction;
  }
  const auto epg = epgFromDateFormatter();
  EXPECT_EQ(epg.date("2017-05-01T10:00:00.000Z"), kMay);
  EXPECT_FALSE(epg.date("2017-05-01T10:00:00.001Z") || epg.date("2017-05-01T10:00:00.000+0000"));
}

TEST(DateFormatter, CutsOffTowardsThePast) {
  EXPECT_EQ(to8601(Date(kMay.millisecondsSince1970() + 750)), "2017-05-01T10:00:00+0000");
  EXPECT_EQ(epgFromDateFormatter().string(Date(kMay.millisecondsSince1970() + 999)),
            "2017-05-01T10:00:00.000Z");
  EXPECT_EQ(to8601(Date(-1)), "1969-12-31T23:59:59+0000");
  EXPECT_EQ(startResourceDateFormatter().string(Date(-1)), "1969-12-31T23:59:59.999+0000");
  EXPECT_EQ(startResourceDateFormatter().date("1969-12-31T23:59:59.999Z"), Date(-1));
}

TEST(DateFormatter, WritesEvenTheFarthestInstants) {
  EXPECT_EQ(to8601(Date(INT64_MAX)), "292278994-08-17T07:12:55+0000");
  EXPECT_EQ(to8601(Date(INT64_MIN)), "292275056-05-16T16:47:04+0000") << "before the year 1";
  EXPECT_EQ(to8601(Date(253'402'300'800'000)), "10000-01-01T00:00:00+0000");
}

TEST(From8601, NamesThePatternThatItTried) {
  EXPECT_EQ(from8601("2017-05-01T12:00:00+0200").force(), kMay);
  EXPECT_EQ(mismatch(from8601("2017-05-01T10:00:00.000Z")).format, kSeconds);
  EXPECT_EQ(mismatch(from8601("")).string, "");
}

TEST(FromEventDate, ReadsAColonInTheZoneOrMilliseconds) {
  EXPECT_EQ(fromEventDate("2017-05-01T10:00:00.000Z").force(), kMay);
  EXPECT_EQ(fromEventDate("2017-05-01T10:00:00.250Z").force(),
            kMay + std::chrono::milliseconds(250));
  EXPECT_EQ(fromEventDate("2017-05-01T11:00:00+01:00").force(), kMay);
  EXPECT_EQ(fromEventDate("2017-05-01T04:30:00-05:30").force(), kMay);
  EXPECT_EQ(fromEventDate("2017-05-01T11:00:00.000+0100").force(), kMay);
}

TEST(FromEventDate, NamesTheMillisecondPatternWhicheverItTried) {
  using Mismatch = DateFormatError::stringDoesNotMatchFormat;
  const auto unchanged = [](const std::string& text) {
    EXPECT_EQ(mismatch(fromEventDate(text)), (Mismatch{text, kMilliseconds}));
  };
  unchanged("2017-05-01T10:00:00+0100");
  unchanged("2017-05-01T10:00:00Z");
  unchanged("");
  unchanged(":0");
  unchanged("\xA9\xA9\xA9\xA9");
  EXPECT_EQ(mismatch(fromEventDate("2017-05-01 10:00:00+01:00")),
            (Mismatch{"2017-05-01 10:00:00+0100", kMilliseconds}));
  EXPECT_EQ(mismatch(fromEventDate("2017-05-01T10:00:00.000+01:00")),
            (Mismatch{"2017-05-01T10:00:00.000+0100", kMilliseconds}));
  EXPECT_EQ(mismatch(fromEventDate(":00")).string, "00");
  EXPECT_EQ(mismatch(fromEventDate(":\xC3\xA9\xE2\x82\xAC")).string, "\xC3\xA9\xE2\x82\xAC")
      << "it counts characters, not bytes";
}

TEST(ResourceTime, FallsBackToWholeSeconds) {
  EXPECT_EQ(resourceTime("2017-05-01T10:00:00.250Z"), kMay + std::chrono::milliseconds(250));
  EXPECT_EQ(resourceTime("2017-05-01T10:00:00Z"), kMay);
  EXPECT_EQ(resourceTime("2017-05-01T11:00:00+01:00"), std::nullopt);
}

}  // namespace
}  // namespace orvo
