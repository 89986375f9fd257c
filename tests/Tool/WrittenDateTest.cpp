#include <OrvoAPI/Parsing/DateFormatter.h>
#include <gtest/gtest.h>
#include <tests/support/Zone.h>
#include <tool/WrittenDate.h>

#include <string>

namespace orvo::tool {
namespace {

/// In UTC, read in a zone at noon, there, of a day.
std::string read(const char* zone, const std::string& day, const std::string& text) {
  const Zone here(zone);
  const auto date = writtenDate(text, writtenDate(day + "T12:00", Date()).value());
  return date ? startResourceDateFormatter().string(*date).substr(0, 19) : "";
}

TEST(WrittenDate, IsReadInTheDevicesZone) {
  const auto berlin = [](const std::string& text) {
    return read("Europe/Berlin", "2026-10-24", text);
  };
  EXPECT_EQ(berlin("now"), "2026-10-24T10:00:00");
  EXPECT_EQ(berlin("today"), "2026-10-23T22:00:00");
  EXPECT_EQ(berlin("yesterday"), "2026-10-22T22:00:00");
  EXPECT_EQ(berlin("tomorrow"), "2026-10-24T22:00:00");
  EXPECT_EQ(berlin("tonight"), "2026-10-24T18:00:00");
  EXPECT_EQ(berlin("tomorrow 18:00"), "2026-10-25T17:00:00") << "in winter time already";
  EXPECT_EQ(berlin("18:00"), "2026-10-24T16:00:00");
  EXPECT_EQ(berlin("18:00:59.500"), "2026-10-24T16:00:59");
  EXPECT_EQ(berlin("2026-11-23"), "2026-11-22T23:00:00");
  EXPECT_EQ(berlin("2026-11-23T18:00"), "2026-11-23T17:00:00");
  EXPECT_EQ(berlin("2026-11-23 18:00Z"), "2026-11-23T18:00:00");
  EXPECT_EQ(berlin("2026-11-23T18:00:30-03:30"), "2026-11-23T21:30:30");
  EXPECT_EQ(berlin("2017-05-01T00:00:00.000Z"), "2017-05-01T00:00:00");
  EXPECT_EQ(berlin("2017-05-01T00:00:00.000+0100"), "2017-04-30T23:00:00");
  EXPECT_EQ(berlin("+2h"), "2026-10-24T12:00:00");
  EXPECT_EQ(berlin("-90m"), "2026-10-24T08:30:00");
  EXPECT_EQ(berlin("+1d"), "2026-10-25T11:00:00") << "at the same time of the day";
}

TEST(WrittenDate, IsDefiniteWhereTheClocksChange) {
  EXPECT_EQ(read("Europe/Berlin", "2026-10-25", "02:30"), "2026-10-25T00:30:00") << "of two";
  EXPECT_EQ(read("Europe/Berlin", "2026-03-29", "02:30"), "2026-03-29T01:30:00") << "there is none";
  EXPECT_EQ(read("Africa/Cairo", "2026-04-24", "today"), "2026-04-23T22:00:00") << "from 01:00 on";
  EXPECT_EQ(read("Africa/Cairo", "2026-04-24", "tomorrow"), "2026-04-24T21:00:00");
}

TEST(WrittenDate, IsRefusedWhenItIsNone) {
  for (const char* text : {"",
                           "Today",
                           "todayx",
                           "18",
                           "24:00",
                           "18:60",
                           "8:00",
                           "18:00:60",
                           "18:00:00.5",
                           "18:00Z",
                           "2026-02-29",
                           "2026-13-01",
                           "26-11-23",
                           "2026-11-23T",
                           "2026-11-23Z",
                           "2026-11-23T18:00+",
                           "2026-11-23T18:00+1",
                           "2026-11-23T18:00+24:00",
                           "2026-11-23T18:00+01:60",
                           "2026-11-23T18:00+0100:00",
                           "2026-11-23T18:00Zx",
                           "+h",
                           "+2",
                           "2h",
                           "+2hm",
                           "+2dh",
                           "+999999h",
                           "+-2h"}) {
    EXPECT_EQ(read("UTC", "2026-10-24", text), "") << text;
  }
}

}  // namespace
}  // namespace orvo::tool
