#include <OrvoAPI/Network/URLSession.h>
#include <gtest/gtest.h>
#include <tests/support/Fetched.h>
#include <tests/support/ScriptedServer.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace orvo::test {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr auto kLimit = 300ms;

/// The code of a fetch from the server with a short time limit.
int impatient(const ScriptedServer& server) {
  URLSession session;
  return codeOf(session.fetch({.url = server.url(), .timeoutInterval = kLimit}));
}

TEST(URLSessionFault, HasTheCodeOfWhatWentWrong) {
  const std::string ok = "HTTP/1.1 200 OK\r\n";
  const std::vector<std::pair<std::string, int>> answers = {
      {"HTTP/1.1 103 Early Hints\r\n\r\n", URLError::networkConnectionLost},
      {ok + "Transfer-Encoding: chunked\r\n\r\n5\r\nhel", URLError::networkConnectionLost},
      {"HTTP/2 9013\r\n\r\n", URLError::badServerResponse},
      {"<html>an answer without a head</html>", URLError::badServerResponse},
      {ok + "Content-Encoding: wishful\r\n\r\nx", URLError::cannotDecodeRawData}};
  URLSession session;
  for (const auto& [answer, code] : answers) {
    const ScriptedServer server(answer);
    EXPECT_EQ(codeOf(session.fetch({.url = server.url()})), code) << answer;
  }
}

TEST(URLSessionFault, OfOneAnswerReachesNoEarlierOne) {
  std::atomic<int> answers{0};
  const ScriptedServer server([&](Connection& connection) {
    connection.readHead();
    connection.send(answers++ == 0 ? "HTTP/1.1 200 OK\r\nX-Last: x\r\nContent-Length: 0\r\n\r\n"
                                   : "HTTP/1.1 200 OK\r\n folded\r\nContent-Length: 0\r\n\r\n");
  });
  URLSession session;
  EXPECT_EQ(codeOf(session.fetch({.url = server.url()})), 200);
  EXPECT_EQ(codeOf(session.fetch({.url = server.url()})), URLError::badServerResponse)
      << "a header cannot begin in the middle of a field";
}

TEST(URLSessionFault, TellsWhyThereIsNoConnection) {
  URLSession session;
  constexpr std::string_view closed = "http://127.0.0.1:1/secret?token=t";
  const auto refused = session.fetch({.url = *URL::parse(closed)}).wait(kPatience);
  EXPECT_EQ(codeOf(refused), URLError::cannotConnectToHost);
  EXPECT_EQ(refused.error()->description().find("secret"), std::string::npos);
  EXPECT_EQ(codeOf(session.fetch({.url = *URL::parse("http://nowhere.invalid/")})),
            URLError::cannotFindHost);
}

TEST(URLSessionTimeout, ComesSoonAfterTheServerFallsSilent) {
  const std::string burst = "HTTP/1.1 200 OK\r\nContent-Length: 2000000\r\n\r\n";
  for (const std::string& said : {std::string(), burst + std::string(1'000'000, 'x')}) {
    const ScriptedServer server([&](Connection& connection) {
      connection.readHead();
      connection.send(said);
      connection.waitForClose();
    });
    const auto start = Clock::now();
    EXPECT_EQ(impatient(server), URLError::timedOut);
    const auto elapsed = Clock::now() - start;
    EXPECT_GE(elapsed, kLimit);
    EXPECT_LT(elapsed, kLimit + 1s);
  }
}

TEST(URLSessionTimeout, DoesNotComeWhileHeaderAndBodyTrickle) {
  const ScriptedServer server([](Connection& connection) {
    connection.readHead();
    connection.trickle("HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\n", 15ms);
    connection.trickle("hello", 60ms);
  });
  const auto start = Clock::now();
  EXPECT_EQ(impatient(server), 200);
  EXPECT_GT(Clock::now() - start, kLimit + kLimit) << "the server was too fast to tell";
}

TEST(URLSessionBound, StopsABodyOfOneByteTooMany) {
  const auto codeFor = [](const std::string& fieldsAndBody) {
    const ScriptedServer server("HTTP/1.1 200 OK\r\n" + fieldsAndBody);
    URLSession session({.maximumBodySize = 1000});
    return codeOf(session.fetch({.url = server.url()}));
  };
  constexpr int kTooLong = URLError::dataLengthExceedsMaximum;
  EXPECT_EQ(codeFor("Content-Length: 1000\r\n\r\n" + std::string(1000, 'x')), 200);
  EXPECT_EQ(codeFor("\r\n" + std::string(1000, 'x')), 200);
  EXPECT_EQ(codeFor("\r\n" + std::string(1001, 'x')), kTooLong);
  EXPECT_EQ(codeFor("Content-Length: 1001\r\n\r\nx"), kTooLong);
}

TEST(URLSessionBound, StopsAHeaderThatIsTooLong) {
  const auto codeFor = [](const std::string& line, int times) {
    const ScriptedServer server([&](Connection& connection) {
      connection.readHead();
      if (!line.starts_with("HTTP/")) connection.send("HTTP/1.1 200 OK\r\n");
      for (int i = 0; i < times; ++i) connection.send(line);
      connection.send("\r\n");
    });
    URLSession session;
    return codeOf(session.fetch({.url = server.url()}));
  };
  EXPECT_EQ(codeFor("X: " + std::string(60'000, 'x') + "\r\n", 1), 200);
  EXPECT_EQ(codeFor(std::string(1000, 'x'), 10'000), URLError::dataLengthExceedsMaximum);
  EXPECT_EQ(codeFor("HTTP/1.1 100 Continue\r\n\r\n", 10'000), URLError::dataLengthExceedsMaximum);
}

}  // namespace
}  // namespace orvo::test
