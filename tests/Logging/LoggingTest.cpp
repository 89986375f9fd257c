#include <OrvoAPI/Logging/DebugConsoleLogger.h>
#include <OrvoAPI/Logging/LoggingService.h>
#include <OrvoAPI/Logging/OSLogger.h>
#include <errno.h>
#include <gmock/gmock.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <tests/support/Test.h>
#include <unistd.h>

#include <filesystem>

namespace orvo {
namespace {

using testing::EndsWith;
using testing::MatchesRegex;
using testing::SizeIs;

/// A directory of its own, gone with the object.
class TemporaryDirectory {
 public:
  TemporaryDirectory() { mkdtemp(path_.data()); }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
  ~TemporaryDirectory() { std::filesystem::remove_all(path_); }
  [[nodiscard]] std::string file(const std::string& name) const { return path_ + "/" + name; }

 private:
  std::string path_ = std::filesystem::temp_directory_path() / "orvo-log-XXXXXX";
};

/// Stands in for the reader of a log socket. What was sent is there when the sender returns.
class StandInLog {
 public:
  explicit StandInLog(const std::string& path) : socket_(socket(AF_UNIX, SOCK_DGRAM, 0)) {
    unlink(path.c_str());
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    if (bind(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) abort();
  }
  StandInLog(const StandInLog&) = delete;
  StandInLog& operator=(const StandInLog&) = delete;
  ~StandInLog() { close(socket_); }

  /// The next record, or nothing when there is none.
  [[nodiscard]] std::optional<std::string> record() {
    std::vector<char> buffer(1 << 20);
    const auto size = recv(socket_, buffer.data(), buffer.size(), MSG_DONTWAIT);
    if (size < 0) return std::nullopt;
    return std::string(buffer.data(), static_cast<std::size_t>(size));
  }

  /// The fields of the next record, which is in the journal's native format.
  [[nodiscard]] std::map<std::string, std::string> fields() {
    const std::string text = record().value_or("");
    std::map<std::string, std::string> fields;
    for (std::size_t at = 0; at < text.size();) {
      const auto nameEnd = text.find_first_of("=\n", at);
      const bool isBinary = text.at(nameEnd) == '\n';
      const auto begin = nameEnd + (isBinary ? 9 : 1);
      auto size = isBinary ? 0 : text.find('\n', begin) - begin;
      for (auto i = begin - 1; isBinary && i > nameEnd; --i) {
        size = size << 8 | static_cast<unsigned char>(text.at(i));
      }
      fields[text.substr(at, nameEnd - at)] = text.substr(begin, size);
      if (text.at(begin + size) != '\n') abort();
      at = begin + size + 1;
    }
    return fields;
  }

 private:
  int socket_;
};

TEST(LoggingService, PrefersTheJournalAndPutsItBehindTheConsole) {
  const TemporaryDirectory directory;
  StandInLog journal(directory.file("journal"));
  StandInLog classic(directory.file("log"));
  const auto loggers = LoggingService::defaultLoggers(
      {.journal = directory.file("journal"), .classic = directory.file("log")});
  ASSERT_THAT(loggers, SizeIs(2));
  EXPECT_NE(dynamic_cast<DebugConsoleLogger*>(loggers[0].get()), nullptr);
  EXPECT_NE(dynamic_cast<OSLogger*>(loggers[1].get()), nullptr);
  LoggingService(loggers).log("x", LogLevel::info, "Linear", "Guide");
  auto fields = journal.fields();
  EXPECT_EQ(fields["MESSAGE"] + fields["SUBSYSTEM"] + fields["CATEGORY"], "xLinearGuide");
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
  std::string whole(SystemLog::kLongestJournalMessage, 'x');
  whole[whole.size() / 2] = '\n';
  logger->log(whole);
  EXPECT_EQ(reader->fields()["MESSAGE"], whole);

  std::string start(SystemLog::kLongestJournalMessage - 1, 'x');
  start.front() = '\n';
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
