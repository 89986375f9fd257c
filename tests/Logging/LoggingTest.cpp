#include <OrvoAPI/Logging/DebugConsoleLogger.h>
#include <OrvoAPI/Logging/LoggingService.h>
#include <OrvoAPI/Logging/OSLogger.h>
#include <errno.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <tests/support/Race.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tests/Logging/StandInLog.h"

namespace orvo {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::MatchesRegex;
using testing::SizeIs;

class WritesTo : public Logger {
 public:
  WritesTo(std::vector<std::string>& out, std::string name) : out_(out), name_(std::move(name)) {}
  void log(std::string_view message, LogLevel level, std::string_view subsystem,
           std::string_view category) override {
    out_.push_back(name_);
    for (const auto text : {message, rawValue(level), subsystem, category}) {
      out_.back().append(" ").append(text);
    }
  }

 private:
  std::vector<std::string>& out_;
  std::string name_;
};

TEST(LoggingService, HandsAMessageToItsLoggersInOrder) {
  std::vector<std::string> lines;
  LoggingService service(
      {std::make_shared<WritesTo>(lines, "1"), std::make_shared<WritesTo>(lines, "2")});
  service.log("Hello");
  service.log("Bye", LogLevel::fault, "S", "C");
  EXPECT_THAT(lines,
              ElementsAre("1 Hello default General General", "2 Hello default General General",
                          "1 Bye fault S C", "2 Bye fault S C"));
}

TEST(LoggingService, PrefersTheJournalAndPutsItBehindTheConsole) {
  const TemporaryDirectory directory;
  StandInLog journal(directory.file("journal"));
  StandInLog classic(directory.file("log"));
  const auto loggers = LoggingService::defaultLoggers(
      {.journal = directory.file("journal"), .classic = directory.file("log")});
  ASSERT_THAT(loggers, SizeIs(2));
  EXPECT_NE(dynamic_cast<DebugConsoleLogger*>(loggers[0].get()), nullptr);
  EXPECT_NE(dynamic_cast<OSLogger*>(loggers[1].get()), nullptr);
  for (const auto& logger : loggers) logger->log("x");
  EXPECT_EQ(journal.fields()["MESSAGE"], "x");
  EXPECT_EQ(journal.record(), std::nullopt);
  EXPECT_EQ(classic.record(), std::nullopt);
}

TEST(LoggingService, HasOneLoggerWhereThereIsNoSystemLog) {
  const TemporaryDirectory directory;
  { StandInLog(directory.file("dead")); }
  EXPECT_THAT(LoggingService::defaultLoggers(
                  {.journal = directory.file("absent"), .classic = directory.file("dead")}),
              SizeIs(1));
  EXPECT_THAT(LoggingService::defaultLoggers(
                  {.journal = std::string(4096, 'x'), .classic = directory.file("")}),
              SizeIs(1));
}

class OSLoggerTest : public testing::Test {
 protected:
  void SetUp() override {
    reader.emplace(path);
    logger.emplace(SystemLog::open({.journal = path, .classic = ""}));
  }

  TemporaryDirectory directory;
  std::string path = directory.file("journal");
  std::optional<StandInLog> reader;
  std::optional<OSLogger> logger;
};

TEST_F(OSLoggerTest, KeepsMessageLevelSubsystemAndCategoryApart) {
  Logger& interface = *logger;
  interface.log("Hello");
  EXPECT_EQ(reader->fields(), (std::map<std::string, std::string>{
                                  {"MESSAGE", "Hello"},
                                  {"PRIORITY", "5"},
                                  {"SUBSYSTEM", "General"},
                                  {"CATEGORY", "General"},
                                  {"SYSLOG_IDENTIFIER", program_invocation_short_name}}));
  for (const std::string& message :
       {std::string("100 %s %n"), std::string("a\nPRIORITY=0\n\nb\0\xFF", 17)}) {
    logger->log(message, LogLevel::error, "Linear", "Guide\nPRIORITY=0");
    auto fields = reader->fields();
    EXPECT_EQ(fields["MESSAGE"], message);
    EXPECT_EQ(fields["PRIORITY"], "3");
    EXPECT_EQ(fields["SUBSYSTEM"], "Linear");
    EXPECT_EQ(fields["CATEGORY"], "Guide\nPRIORITY=0");
  }
}

TEST_F(OSLoggerTest, MapsEachLevelToItsPriority) {
  std::string priorities;
  for (const auto level :
       {LogLevel::fault, LogLevel::error, LogLevel::warning, LogLevel::info, LogLevel::default_}) {
    logger->log("", level);
    priorities += reader->fields()["PRIORITY"];
  }
  EXPECT_EQ(priorities, "23765");
}

TEST_F(OSLoggerTest, CutsALongMessageBetweenTwoCharacters) {
  const std::string whole(SystemLog::kLongestJournalMessage, 'x');
  logger->log(whole);
  EXPECT_EQ(reader->fields()["MESSAGE"], whole);

  const std::string start(SystemLog::kLongestJournalMessage - 1, 'x');
  logger->log(start + "\xC3\xA4" + std::string(1 << 20, 'y'));
  EXPECT_EQ(reader->fields()["MESSAGE"], start + "\xE2\x80\xA6");
}

TEST_F(OSLoggerTest, SharesAHandleBetweenPairsOfTheSameKey) {
  logger->log("", LogLevel::info, "a-b", "c");
  logger->log("", LogLevel::info, "a", "b-c");
  logger->log("", LogLevel::info, "a", "c");
  for (const auto* const name : {"a-b", "a-b", "a"}) {
    EXPECT_EQ(reader->fields()["SUBSYSTEM"], name);
  }
}

TEST_F(OSLoggerTest, LosesRecordsRatherThanWaitForAStalledReader) {
  constexpr int kMany = 20'000;
  for (int i = 0; i < kMany; ++i) logger->log("x");
  int received = 0;
  while (reader->record()) ++received;
  EXPECT_GT(received, 0);
  EXPECT_LT(received, kMany);

  logger->log("again");
  EXPECT_EQ(reader->fields()["MESSAGE"], "again");
}

TEST_F(OSLoggerTest, FindsARestartedReader) {
  reader.reset();
  logger->log("lost");
  for (const auto* const message : {"found", "found at once"}) {
    reader.emplace(path);
    logger->log(message);
    EXPECT_EQ(reader->fields()["MESSAGE"], message);
  }
}

TEST_F(OSLoggerTest, TakesRecordsFromManyThreads) {
  test::race(
      200, [](int) {},
      [&](int racer, int round) {
        if (round % 5 == 0) (void)reader->record();
        logger->log("x", LogLevel::info, std::to_string(racer), std::to_string(round % 7));
      });
  auto fields = reader->fields();
  EXPECT_FALSE(fields.empty());
  for (; !fields.empty(); fields = reader->fields()) EXPECT_THAT(fields, SizeIs(5));
}

TEST(LoggingToTheClassicSocket, WritesOneLineForEachRecord) {
  const TemporaryDirectory directory;
  StandInLog reader(directory.file("log"));
  const LoggingService service{LoggingService::defaultLoggers(
      {.journal = directory.file("absent"), .classic = directory.file("log")})};
  ASSERT_THAT(service.loggers(), SizeIs(2));

  service.loggers().back()->log("one\n<0>two %n", LogLevel::error, "Linear\n", "Guide");
  EXPECT_THAT(reader.record().value(),
              MatchesRegex("<11>[A-Z][a-z][a-z] [ 123][0-9] [0-9:]+ " +
                           std::string(program_invocation_short_name) +
                           "\\[[0-9]+\\]: \\[Linear -Guide\\] one <0>two %n"));

  service.loggers().back()->log(std::string(100'000, 'x'));
  const auto record = reader.record().value();
  EXPECT_LT(record.size(), 8192U);
  EXPECT_THAT(record, EndsWith("xxx\xE2\x80\xA6"));
}

}  // namespace
}  // namespace orvo
