#include <OrvoAPI/Parsing/DateFormatError.h>
#include <OrvoAPI/Parsing/DateFormatter.h>
#include <tests/support/Test.h>

#include <random>

#include <support/DateOracle.h>

namespace orvo {
namespace {

constexpr Date kMay(1'493'632'800'000);  // 2017-05-01T10:00:00Z

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

TEST(DateFormatter, WantsTheLiteralMillisecondsThatItWrites) {
  const auto epg = epgFromDateFormatter();
  EXPECT_EQ(epg.date("2017-05-01T10:00:00.000Z"), kMay);
  EXPECT_FALSE(epg.date("2017-05-01T10:00:00.001Z") || epg.date("2017-05-01T10:00:00.000+0000"));
}

TEST(DateFormatter, WritesEvenTheFarthestInstants) {
  EXPECT_EQ(to8601(Date(INT64_MAX)), "292278994-08-17T07:12:55+0000");
  EXPECT_EQ(to8601(Date(INT64_MIN)), "292275056-05-16T16:47:04+0000") << "before the year 1";
  EXPECT_EQ(to8601(Date(253'402'300'800'000)), "10000-01-01T00:00:00+0000");
}

TEST(FromEventDate, RefusesWhatIsNoUTF8) {
  const auto result = fromEventDate("\xA9\xA9\xA9\xA9");
  EXPECT_EQ(*result.error()->as<DateFormatError>()->as<DateFormatError::stringDoesNotMatchFormat>(),
            (DateFormatError::stringDoesNotMatchFormat{"\xA9\xA9\xA9\xA9",
                                                       "yyyy-MM-dd'T'HH:mm:ss.SSSZ"}));
}

}  // namespace
}  // namespace orvo
