#include <OrvoAPI/Logging/DebugConsoleLogger.h>
#include <OrvoAPI/Logging/LoggingService.h>
#include <OrvoAPI/Logging/OSLogger.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/Logging/StandInLog.h"

namespace orvo {
namespace {

using testing::ElementsAre;
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

}  // namespace
}  // namespace orvo
