#include <OrvoAPI/Parsing/DateFormatError.h>
#include <OrvoAPI/Parsing/DateFormatter.h>
#include <gtest/gtest.h>

#include <random>
#include <string>

#include <support/DateOracle.h>

namespace orvo {
namespace {

const std::string kMilliseconds = "yyyy-MM-dd'T'HH:mm:ss.SSSZ";
constexpr Date kMay(1'493'632'800'000);  // 2017-05-01T10:00:00Z

DateFormatError::stringDoesNotMatchFormat mismatch(const Result<Date>& result) {
  return *result.error()->as<DateFormatError>()->as<DateFormatError::stringDoesNotMatchFormat>();
}

TEST(DateFormatter, WritesAndReadsBackWhatTheOracleDoes) {
  std::mt19937_64 random(7);
  for (const auto& formatter :
       {iso8601Formatter(), startResourceDateFormatter(), epgFromDateFormatter()}) {
    const DateOracle oracle(formatter);
    for (int i = 0; i < 8000; ++i) {
      // The years 1 to 3938, half of them within a century of 1970.
      const auto span = random() % 2 == 0 ? 3'155'760'000'000 : 62'135'596'800'000;
      const Date date(std::uniform_int_distribution<std::int64_t>(-span, span)(random));
      const auto text = formatter.string(date);
      ASSERT_EQ(text, oracle.string(date)) << date.millisecondsSince1970();
      ASSERT_EQ(formatter.date(text), oracle.date(text)) << text;
    }
  }
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

TEST(FromEventDate, ReadsAColonInTheZoneOrMilliseconds) {
  for (const char* text : {"2017-05-01T10:00:00.000Z", "2017-05-01T11:00:00+01:00",
                           "2017-05-01T04:30:00-05:30", "2017-05-01T11:00:00.000+0100"}) {
    EXPECT_EQ(fromEventDate(text).force(), kMay) << text;
  }
}

TEST(FromEventDate, NamesTheMillisecondPatternWhicheverItTried) {
  using Texts = std::pair<std::string, std::string>;
  for (const auto& [text, tried] :
       {Texts("2017-05-01T10:00:00+0100", "2017-05-01T10:00:00+0100"), Texts("", ""),
        Texts(":0", ":0"), Texts("\xA9\xA9\xA9\xA9", "\xA9\xA9\xA9\xA9"),
        Texts("2017-05-01T10:00:00.000+01:00", "2017-05-01T10:00:00.000+0100"),
        Texts("2017-05-01 10:00:00+01:00", "2017-05-01 10:00:00+0100"), Texts(":00", "00"),
        // It counts characters, not bytes.
        Texts(":\xC3\xA9\xE2\x82\xAC", "\xC3\xA9\xE2\x82\xAC")}) {
    EXPECT_EQ(mismatch(fromEventDate(text)),
              (DateFormatError::stringDoesNotMatchFormat{tried, kMilliseconds}));
  }
  EXPECT_EQ(mismatch(from8601("2017-05-01T10:00:00.000Z")).format, "yyyy-MM-dd'T'HH:mm:ssZ");
}

TEST(ResourceTime, FallsBackToWholeSeconds) {
  EXPECT_EQ(resourceTime("2017-05-01T10:00:00.250Z"), kMay + std::chrono::milliseconds(250));
  EXPECT_EQ(resourceTime("2017-05-01T10:00:00Z"), kMay);
  EXPECT_EQ(resourceTime("2017-05-01T11:00:00+01:00"), std::nullopt);
}

}  // namespace
}  // namespace orvo
