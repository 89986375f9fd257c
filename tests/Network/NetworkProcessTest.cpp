#include <OrvoAPI/Network/URLSession.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <tests/support/Fetched.h>
#include <tests/support/HTTPServer.h>
#include <tests/support/ScriptedServer.h>
#include <tests/support/Signal.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <string>
#include <vector>

namespace orvo::test {
namespace {

std::vector<Future<HTTPResult>>* underWay = nullptr;

/// Runs when the library has come to its end: 3 if every fetch was told so.
void checkUnderWay() {
  for (const auto& fetch : *underWay) {
    const auto* const error = fetch.error();
    if (error == nullptr || error->as<URLError>()->code != URLError::cancelled) _exit(4);
  }
  _exit(3);
}

[[noreturn]] void exitWithRequestsUnderWay() {
  std::atexit(checkUnderWay);
  underWay = new std::vector<Future<HTTPResult>>;
  Signal asked;
  const ScriptedServer server([&](Connection& connection) {
    connection.readHead();
    asked.tell();
    connection.waitForClose();
  });
  URLSession session;
  for (int i = 0; i < 20; ++i) underWay->push_back(session.fetch({.url = server.url()}));
  if (!asked.wait(10)) _exit(5);
  std::exit(0);  // NOLINT(concurrency-mt-unsafe)
}

TEST(NetworkProcessDeathTest, ExitEndsWhatIsUnderWay) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(exitWithRequestsUnderWay(), testing::ExitedWithCode(3), "");
}

TEST(NetworkProcessDeathTest, AForkedChildExitsAtOnce) {
  GTEST_FLAG_SET(death_test_style, "fast");
  const HTTPServer server([](const ServedRequest&) -> ServedAnswer { return {}; });
  URLSession session;
  ASSERT_EQ(codeOf(session.fetch({.url = server.url()})), 200);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EXIT(std::exit(3), testing::ExitedWithCode(3), "");  // NOLINT(concurrency-mt-unsafe)
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
  EXPECT_EQ(codeOf(session.fetch({.url = server.url()})), 200) << "the parent works on";
}

TEST(NetworkProcess, IsNotEndedByAServerThatStopsReading) {
  struct sigaction before {};
  struct sigaction after {};
  struct sigaction byDefault {};  // which ends the process
  sigaction(SIGPIPE, &byDefault, &before);
  const ScriptedServer server([](Connection& connection) {
    connection.readHead();
    connection.reset();
  });
  URLSession session;
  for (int i = 0; i < 20; ++i) {
    const URLRequest request{
        .url = server.url(), .method = "POST", .body = Data(std::string(4'000'000, 'x'))};
    EXPECT_EQ(codeOf(session.fetch(request)), URLError::networkConnectionLost);
  }
  sigaction(SIGPIPE, &before, &after);
  EXPECT_EQ(after.sa_handler, SIG_DFL) << "the host's signals are its own";
}

}  // namespace
}  // namespace orvo::test
