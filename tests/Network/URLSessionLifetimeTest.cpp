#include <OrvoAPI/Network/URLSession.h>
#include <gtest/gtest.h>
#include <tests/support/Fetched.h>
#include <tests/support/HTTPServer.h>
#include <tests/support/ScriptedServer.h>
#include <tests/support/Signal.h>

#include <memory>
#include <thread>
#include <vector>

namespace orvo::test {
namespace {

/// Tells when a request has come, and when its client has gone.
struct Silence {
  Signal asked;
  Signal left;
  const ScriptedServer server{[this](Connection& connection) {
    connection.readHead();
    asked.tell();
    connection.waitForClose();
    left.tell();
  }};
};

TEST(URLSessionCancel, AbortsTheTransferAndLetsThoseThatWaitGoToo) {
  Silence silence;
  URLSession session({.maximumConnectionsPerHost = 1});
  const auto first = session.fetch({.url = silence.server.url()});
  const auto waiting = session.fetch({.url = silence.server.url()});
  const auto last = session.fetch({.url = silence.server.url()});
  ASSERT_TRUE(silence.asked.wait());
  waiting.cancel();
  first.cancel();
  ASSERT_TRUE(silence.asked.wait(2));
  last.cancel();
  EXPECT_TRUE(silence.left.wait(2));
  EXPECT_EQ(silence.server.connections(), 2);
  EXPECT_FALSE(first.didComplete() || waiting.didComplete() || last.didComplete());
}

TEST(URLSessionCancel, RacesWithTheAnswer) {
  const HTTPServer server([](const ServedRequest& request) -> ServedAnswer {
    if (request.target == "/moved") return {302, "", {{"Location", "/"}}};
    return {};
  });
  URLSession session;
  for (int i = 0; i < 50; ++i) {
    std::vector<Future<HTTPResult>> fetches;
    for (int j = 0; j < 4; ++j) fetches.push_back(session.fetch({.url = server.url("/moved")}));
    std::thread cancelling([&] { fetches[1].cancel(); });
    fetches[2].cancel();
    EXPECT_EQ(codeOf(fetches[0]), 200);
    EXPECT_EQ(codeOf(fetches[3]), 200);
    cancelling.join();
  }
}

TEST(URLSessionDropped, FinishesWhatIsUnderWay) {
  Signal released;
  const HTTPServer server([&](const ServedRequest& request) -> ServedAnswer {
    EXPECT_TRUE(released.wait());
    if (request.target == "/") return {302, "", {{"Location", "/end"}}};
    return {.body = "arrived"};
  });
  std::vector<Future<HTTPResult>> fetches;
  {
    URLSession session;
    for (int i = 0; i < 15; ++i) fetches.push_back(session.fetch({.url = server.url()}));
  }
  released.tell();
  for (const auto& fetch : fetches) EXPECT_EQ(bodyOf(fetch), "arrived");
}

TEST(URLSessionDropped, ClosesItsConnectionsInTheEnd) {
  Signal left;
  const ScriptedServer server([&](Connection& connection) {
    connection.readHead();
    connection.send("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n");
    connection.waitForClose();
    left.tell();
  });
  EXPECT_EQ(codeOf(URLSession().fetch({.url = server.url()})), 200);
  EXPECT_TRUE(left.wait());
}

TEST(URLSessionInvalidate, FailsWhatIsUnderWayAndWhatComesLater) {
  Silence silence;
  URLSession session({.maximumConnectionsPerHost = 1});
  const auto first = session.fetch({.url = silence.server.url()});
  const auto waiting = session.fetch({.url = silence.server.url()});
  ASSERT_TRUE(silence.asked.wait());
  session.invalidateAndCancel();
  EXPECT_EQ(codeOf(first), URLError::cancelled);
  EXPECT_EQ(codeOf(waiting), URLError::cancelled);
  EXPECT_EQ(codeOf(session.fetch({.url = silence.server.url()})), URLError::cancelled);
  EXPECT_TRUE(first.didComplete()) << "it was the session that was cancelled, not the future";
}

TEST(URLSessionFlood, EndsAllOfTenThousandFetches) {
  const HTTPServer server([](const ServedRequest&) -> ServedAnswer { return {}; });
  URLSession session;
  std::vector<Future<HTTPResult>> fetches;
  for (int i = 0; i < 10'000; ++i) fetches.push_back(session.fetch({.url = server.url()}));
  for (std::size_t i = 1; i < fetches.size(); i += 2) fetches[i].cancel();
  for (std::size_t i = 0; i < fetches.size(); i += 2) ASSERT_EQ(codeOf(fetches[i]), 200);
}

}  // namespace
}  // namespace orvo::test
