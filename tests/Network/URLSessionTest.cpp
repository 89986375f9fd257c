#include <OrvoAPI/Network/DefaultNetworkProvider.h>
#include <OrvoAPI/Network/URLSession.h>
#include <OrvoAPI/Testing/StubSessionProvider.h>
#include <OrvoAPI/Version.h>
#include <tests/support/HTTPServer.h>
#include <tests/support/Outcome.h>
#include <tests/support/ScriptedServer.h>
#include <tests/support/Test.h>
#include <tests/support/Zone.h>
#include <time.h>

namespace orvo::test {
namespace {

ServedAnswer echo(const ServedRequest& request) {
  return {.body = request.method + " " + request.target + " " + request.body,
          .headers = {{"Set-Cookie", "id=7; Path=/"}}};
}

/// Larger than the buffer that a body begins in, with no two parts alike.
const std::string kLarge = [] {
  std::string text;
  for (int i = 0; i < 20'000; ++i) text += std::to_string(i) + " ";
  return text;
}();

TEST(URLSessionFetch, DeliversAnyStatusWithItsBodyAndHeaders) {
  const HTTPServer server([](const ServedRequest& request) -> ServedAnswer {
    if (request.target == "/empty") return {};
    if (request.target == "/large") return {.body = kLarge};
    return {404, "not here", {{"X-One", "1"}, {"x-two", ""}}};
  });
  URLSession session;
  const auto missing = resultOf(session.fetch({.url = server.url("/x?a=1#here")}));
  ASSERT_FALSE(missing.failed());
  EXPECT_EQ(missing.value()->response.statusCode, 404);
  EXPECT_EQ(missing.value()->response.url, server.url("/x?a=1#here"));
  EXPECT_EQ(missing.value()->response.headers.value("x-one"), "1");
  EXPECT_EQ(missing.value()->response.headers.value("X-TWO"), "");
  EXPECT_EQ(missing.value()->body.view(), "not here");
  EXPECT_EQ(bodyOf(session.fetch({.url = server.url("/empty"), .timeoutInterval = 0ms})), "");
  EXPECT_TRUE(bodyOf(session.fetch({.url = server.url("/large")})) == kLarge);
  EXPECT_EQ(server.targets(), "/x?a=1 /empty /large");
  // Of no announced length, and exactly as long as a buffer.
  const ScriptedServer unannounced("HTTP/1.0 200 OK\r\n\r\n" + kLarge.substr(0, 4096));
  EXPECT_TRUE(bodyOf(session.fetch({.url = unannounced.url()})) == kLarge.substr(0, 4096));
}

TEST(URLSessionFetch, SendsTheRequestAsItIsGiven) {
  const HTTPServer server(echo);
  URLSession session;
  EXPECT_EQ(bodyOf(session.fetch({.url = server.url("/a/../b"), .headers = {{"A", "1"}}})),
            "GET /a/../b ");
  EXPECT_EQ(bodyOf(session.fetch({.url = server.url("/p"),
                                  .method = "POST",
                                  .headers = {{"X", "1"}, {"x", "2"}},
                                  .body = Data("posted")})),
            "POST /p posted");
  EXPECT_EQ(bodyOf(session.fetch({.url = server.url("/d"), .method = "DELETE"})), "DELETE /d ");
  EXPECT_EQ(bodyOf(session.fetch({.url = server.url("/h"), .method = "HEAD"})), "");
  EXPECT_EQ(bodyOf(session.fetch({.url = server.url("/g")})), "GET /g ");
  EXPECT_EQ(bodyOf(session.fetch({.url = server.url("/i"), .headers = {{"A", "2"}}})), "GET /i ");

  const auto requests = server.requests();
  ASSERT_EQ(requests.size(), 6U);
  EXPECT_EQ(requests[0].header("A"), "1");
  EXPECT_EQ(requests[0].header("User-Agent"), "OrvoAPI/" ORVO_API_VERSION_STRING);
  EXPECT_EQ(requests[1].headers.values("X").size(), 2U);
  EXPECT_EQ(requests[1].header("Expect"), "(none)");
  EXPECT_EQ(requests[1].header("Content-Type"), "(none)");
  EXPECT_EQ(requests[4].header("A"), "(none)");
  EXPECT_EQ(requests[4].header("X"), "(none)");
  EXPECT_EQ(requests[5].header("A"), "2");
}

TEST(URLSessionFetch, SendsAFieldWithoutAValue) {
  const ScriptedServer server([](Connection& connection) {
    const bool sent = connection.readHead().find("\r\nAuthorization:\r\n") != std::string::npos;
    connection.send(sent ? "HTTP/1.0 200 OK\r\n\r\n" : "HTTP/1.0 400 Bad\r\n\r\n");
  });
  const URLRequest request{.url = server.url(), .headers = {{"Authorization", ""}}};
  EXPECT_EQ(codeOf(URLSession().fetch(request)), 200);
}

TEST(URLSessionFetch, AsksRemoteCachesToStepAsideOnlyWhenToldTo) {
  const HTTPServer server(echo);
  URLSession session;
  for (const auto& [policy, sent] :
       {std::pair(CachePolicy::reloadIgnoringLocalAndRemoteCacheData, "no-cache"),
        std::pair(CachePolicy::reloadIgnoringLocalCacheData, "(none)"),
        std::pair(CachePolicy::useProtocolCachePolicy, "(none)")}) {
    EXPECT_EQ(codeOf(session.fetch({.url = server.url(), .cachePolicy = policy})), 200);
    EXPECT_EQ(server.requests().back().header("Cache-Control"), sent);
    EXPECT_EQ(server.requests().back().header("Pragma"), sent);
  }
}

TEST(URLSessionFetch, RefusesRequestsThatWouldBeOthersOnTheWire) {
  using namespace std::string_view_literals;
  const HTTPServer server(echo);
  URLSession session;
  for (const auto& field : {HTTPHeaders::Field{"Authorization", "secret-token\r\nX: y"},
                            {"A", "a\n"},
                            {"A", "a\0b"sv},
                            {"A: b\r\nC", "x"},
                            {"A b", "x"},
                            {"", "x"}}) {
    EXPECT_EQ(codeOf(session.fetch({.url = server.url(), .headers = {field}})), URLError::badURL);
  }
  EXPECT_EQ(codeOf(session.fetch({.url = server.url(), .method = "GET / HTTP/1.1\r\n"})),
            URLError::badURL);
  for (const auto& [text, code] :
       {std::pair("relative", URLError::badURL),
        std::pair("http:///secret-token", URLError::badURL),
        std::pair("http://h:70000/", URLError::badURL),
        std::pair("ftp://127.0.0.1/secret-token", URLError::unsupportedURL),
        std::pair("file:///etc/passwd", URLError::unsupportedURL)}) {
    EXPECT_EQ(codeOf(session.fetch({.url = *URL::parse(text)})), code) << text;
  }
  EXPECT_EQ(server.targets(), "");
}

/// "hello", by gzip.
const std::string kPacked(
    "\x1f\x8b\x08\x00\x00\x00\x00\x00\x00\x03\xcb\x48\xcd\xc9\xc9\x07\x00\x86\xa6\x10\x36\x05"
    "\x00\x00\x00",
    25);

TEST(URLSessionFetch, DecodesAndSkipsInterimResponses) {
  const ScriptedServer server(
      "HTTP/1.1 103 Early\r\nX: early\r\n\r\nHTTP/1.1 200 OK\r\nContent-Encoding: gzip\r\n"
      "Transfer-Encoding: chunked\r\nY:  final \r\n\r\n19\r\n" +
      kPacked + "\r\n0\r\nTrailer: t\r\n\r\n");
  URLSession session;
  const auto result = valueOf(session.fetch({.url = server.url()}));
  EXPECT_EQ(result.body.view(), "hello");
  EXPECT_EQ(result.response.headers,
            (HTTPHeaders{
                {"Content-Encoding", "gzip"}, {"Transfer-Encoding", "chunked"}, {"Y", "final"}}));
}

TEST(URLSessionCookies, StayWithinTheSession) {
  Signal arrived;
  const HTTPServer server([&](const ServedRequest& request) -> ServedAnswer {
    arrived.tell();
    EXPECT_TRUE(request.target == "/" || arrived.wait(3)) << "two are under way at once";
    return echo(request);
  });
  URLSession first;
  URLSession second;
  EXPECT_EQ(codeOf(first.fetch({.url = server.url()})), 200);
  const auto one = first.fetch({.url = server.url("/both")});
  const auto other = first.fetch({.url = server.url("/both")});
  EXPECT_EQ(codeOf(one) + codeOf(other), 400);
  EXPECT_EQ(codeOf(second.fetch({.url = server.url()})), 200);
  std::string cookies;
  for (const auto& request : server.requests()) cookies += request.header("Cookie") + " ";
  EXPECT_EQ(cookies, "(none) id=7 id=7 (none) ");
}

TEST(URLSessionCookies, OfAHostThatSetsTooManyGo) {
  constexpr int kAnswers = 5;  // as much as a session keeps, and more
  std::string fields;
  for (int i = 0; i < 15; ++i) {
    fields += "Set-Cookie: " + std::to_string(i) + "-%=" + std::string(4000, 'x') + "\r\n";
  }
  int answers = 0;
  std::string heard;
  const ScriptedServer greedy([&](Connection& connection) {
    for (heard = connection.readHead(); !heard.empty(); heard = connection.readHead()) {
      auto numbered = fields;
      std::ranges::replace(numbered, '%', static_cast<char>('a' + answers++));
      connection.send("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n" + numbered + "\r\n");
      if (answers > kAnswers) break;
    }
  });
  const HTTPServer modest(echo);
  auto local = modest.url().text();
  local.replace(local.find("127.0.0.1"), std::string_view("127.0.0.1").size(), "localhost");
  const auto url = *URL::parse(local);
  URLSession session;
  EXPECT_EQ(codeOf(session.fetch({.url = url})), 200);
  for (int i = 0; i < kAnswers; ++i) {
    EXPECT_EQ(codeOf(session.fetch({.url = greedy.url()})), 200);
    EXPECT_EQ(heard.find("Cookie: ") != std::string::npos, i > 0);
  }
  EXPECT_EQ(codeOf(session.fetch({.url = greedy.url()})), 200);
  EXPECT_EQ(heard.find("Cookie: "), std::string::npos);
  EXPECT_EQ(codeOf(session.fetch({.url = url})), 200);
  EXPECT_EQ(modest.requests().back().header("Cookie"), "id=7") << "others keep theirs";
}

TEST(URLSessionConnections, AreAtMostTenToAHostForEachSession) {
  Signal arrived;
  Signal released;
  const HTTPServer server([&](const ServedRequest&) -> ServedAnswer {
    arrived.tell();
    EXPECT_TRUE(released.wait());
    return {};
  });
  URLSession session;
  DefaultNetworkProvider provider(std::make_shared<StubSessionProvider>());
  std::vector<Future<HTTPResult>> fetches;
  for (int i = 0; i < 20; ++i) {
    fetches.push_back(session.fetch({.url = server.url()}));
    fetches.push_back(provider.fetch({.url = server.url()}));
  }
  EXPECT_TRUE(arrived.wait(20));
  released.tell();
  for (const auto& fetch : fetches) EXPECT_EQ(codeOf(fetch), 200);
  std::set<int> ports;
  for (const auto& request : server.requests()) ports.insert(request.clientPort);
  EXPECT_EQ(ports.size(), 20U);
}

// Beyond 16 hosts a session forgets those that are not in use.
TEST(URLSessionConnections, AreCountedForEachPortOfAHostAsLongAsTheyAreUsed) {
  Signal asked;
  Signal released;
  const std::string answer = "HTTP/1.0 204 None\r\n\r\n";
  const auto script = [&](Connection& connection) {
    connection.readHead();
    asked.tell();
    if (released.wait()) connection.send(answer);
  };
  URLSession session({.maximumConnectionsPerHost = 1});
  std::vector<std::unique_ptr<ScriptedServer>> servers;
  std::vector<Future<HTTPResult>> fetches;
  for (int i = 0; i < 20; ++i) {
    servers.push_back(std::make_unique<ScriptedServer>(script));
    for (int j = 0; j < 2; ++j) fetches.push_back(session.fetch({.url = servers.back()->url()}));
  }
  EXPECT_TRUE(asked.wait(20));
  const ScriptedServer prompt(answer);
  const auto first = session.fetch({.url = prompt.url()}),
             second = session.fetch({.url = prompt.url()});
  EXPECT_EQ(codeOf(first) + codeOf(second), 408) << "one host's ends, and it has another one";
  released.tell();
  for (const auto& fetch : fetches) EXPECT_EQ(codeOf(fetch), 204);
}

TEST(URLSessionConnections, AreWaitedForWithoutATimeLimit) {
  const ScriptedServer server([](Connection& connection) {
    while (!connection.readHead().empty()) {
      connection.trickle("HTTP/1.1 200 OK\r\nContent-Length: 8\r\n\r\n", 0ms);
      connection.trickle("trickled", 25ms);
    }
  });
  URLSession session({.maximumConnectionsPerHost = 1});
  std::vector<Future<HTTPResult>> fetches;
  for (int i = 0; i < 4; ++i) {
    fetches.push_back(session.fetch({.url = server.url(), .timeoutInterval = 400ms}));
  }
  for (const auto& fetch : fetches) EXPECT_EQ(bodyOf(fetch), "trickled");
  EXPECT_EQ(server.connections(), 1);
}

using Clock = std::chrono::steady_clock;

constexpr auto kIdleLimit = 300ms;

/// The code of a fetch from the server with a short time limit.
int impatient(const ScriptedServer& server) {
  URLSession session;
  return codeOf(session.fetch({.url = server.url(), .timeoutInterval = kIdleLimit}));
}

/// The code of the server's answer, in a session with this configuration.
int codeOfAnswer(const std::string& answer, const URLSessionConfiguration& configuration = {}) {
  const ScriptedServer server(answer);
  const ScriptedServer other("HTTP/1.0 204 None\r\nX: y\r\n\r\n");
  URLSession session(configuration);
  const int code = codeOf(session.fetch({.url = server.url("/" + kToken)}));
  EXPECT_EQ(codeOf(session.fetch({.url = other.url()})), 204) << "after " << answer.substr(0, 99);
  EXPECT_EQ(codeOf(session.fetch({.url = server.url()})), code)
      << "again: " << answer.substr(0, 99);
  return code;
}

TEST(URLSessionFault, HasTheCodeOfWhatWentWrong) {
  const std::string ok = "HTTP/1.1 200 OK\r\n";
  for (const auto& [answer, code] : std::vector<std::pair<std::string, int>>{
           {"", URLError::networkConnectionLost},
           {"HTTP/1.1 103 Early Hints\r\n\r\n", URLError::networkConnectionLost},
           {ok + "X: half a he", URLError::networkConnectionLost},
           {ok + "Content-Length: 5\r\n\r\nhel", URLError::networkConnectionLost},
           {ok + "Transfer-Encoding: chunked\r\n\r\n5\r\nhel", URLError::networkConnectionLost},
           {"HTTP/2 9013\r\n\r\n", URLError::badServerResponse},
           {"<html>an answer without a head</html>", URLError::badServerResponse},
           {ok + "Content-Encoding: wishful\r\n\r\nx", URLError::cannotDecodeRawData}}) {
    EXPECT_EQ(codeOfAnswer(answer), code) << answer;
  }
}

TEST(URLSessionFault, OfOneAnswerReachesNoEarlierOne) {
  std::atomic<int> answers{0};
  const ScriptedServer server([&](Connection& connection) {
    connection.readHead();
    connection.send(answers++ == 0 ? "HTTP/1.1 200 OK\r\nX-Last: x\r\nContent-Length: 0\r\n\r\n"
                                   : "HTTP/1.1 200 OK\r\n folded: y\r\nContent-Length: 0\r\n\r\n");
  });
  URLSession session;
  EXPECT_EQ(codeOf(session.fetch({.url = server.url()})), 200);
  EXPECT_EQ(codeOf(session.fetch({.url = server.url()})), URLError::badServerResponse)
      << "a header cannot begin in the middle of a field";
}

TEST(URLSessionFault, TellsWhyThereIsNoConnection) {
  URLSession session;
  for (const auto& [host, code] : {std::pair("127.0.0.1:1", URLError::cannotConnectToHost),
                                   std::pair("nowhere.invalid", URLError::cannotFindHost)}) {
    const auto url = *URL::parse("http://" + std::string(host) + "/" + kToken);
    EXPECT_EQ(codeOf(session.fetch({.url = url, .headers = {{"Authorization", kToken}}})), code);
  }
}

TEST(URLSessionTimeout, ComesSoonAfterTheServerFallsSilentAndCostsNoWork) {
  const ScriptedServer closing([](Connection& connection) {
    connection.readHead();
    connection.send("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n");
  });
  URLSession other;
  EXPECT_EQ(codeOf(other.fetch({.url = closing.url()})), 200);  // its connection goes unused
  const std::string burst = "HTTP/1.1 200 OK\r\nContent-Length: 2000000\r\n\r\n";
  for (const std::string& said : {std::string(), burst + std::string(1'000'000, 'x')}) {
    Signal left;
    const ScriptedServer server([&](Connection& connection) {
      connection.readHead();
      connection.send(said);
      const auto before = processorTime();
      connection.waitForClose();
      EXPECT_LT(processorTime() - before, kIdleLimit / 8) << "somebody was busy with the silence";
      left.tell();
    });
    const auto start = Clock::now();
    EXPECT_EQ(impatient(server), URLError::timedOut);
    const auto elapsed = Clock::now() - start;
    EXPECT_GE(elapsed, kIdleLimit);
    EXPECT_LT(elapsed, kIdleLimit + 1s);
    EXPECT_TRUE(left.wait());
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
  EXPECT_GT(Clock::now() - start, kIdleLimit + kIdleLimit) << "the server was too fast to tell";
}

TEST(URLSessionBound, StopsABodyOfOneByteTooMany) {
  const auto codeFor = [](const std::string& fieldsAndBody, std::size_t bound = 1000) {
    return codeOfAnswer("HTTP/1.1 200 OK\r\n" + fieldsAndBody, {.maximumBodySize = bound});
  };
  constexpr int kTooLong = URLError::dataLengthExceedsMaximum;
  EXPECT_EQ(codeFor("Content-Length: 1000\r\n\r\n" + std::string(1000, 'x')), 200);
  EXPECT_EQ(codeFor("\r\n" + std::string(1000, 'x')), 200);
  EXPECT_EQ(codeFor("\r\n" + std::string(1001, 'x')), kTooLong);
  EXPECT_EQ(codeFor("Content-Length: 1001\r\n\r\nx"), kTooLong);
  const auto packed = "Content-Encoding: gzip\r\n\r\n" + kPacked;
  EXPECT_EQ(codeFor(packed, 5), 200) << "it is the decoded size that counts";
  EXPECT_EQ(codeFor(packed, 4), kTooLong);
}

TEST(URLSessionBound, StopsAHeaderOfOneByteTooMany) {
  constexpr int kTooLong = URLError::dataLengthExceedsMaximum;
  constexpr std::size_t kDefault = 65'536;
  // With an interim response, and one field that fills the rest.
  const auto head = [](std::size_t size) {
    const std::string rest = "HTTP/1.1 103 Early\r\n\r\nHTTP/1.1 200 OK\r\nX: \r\n\r\n";
    return std::string(rest).insert(rest.size() - 4, size - rest.size(), 'x');
  };
  EXPECT_EQ(codeOfAnswer(head(kDefault)), 200);
  EXPECT_EQ(codeOfAnswer(head(kDefault + 1)), kTooLong);
  EXPECT_EQ(codeOfAnswer(head(kDefault + 1), {.maximumHeaderSize = kDefault + 1}), 200);
  EXPECT_EQ(codeOfAnswer("HTTP/1.1 200 OK\r\n" + std::string(10'000'000, 'x')), kTooLong)
      << "a line without an end";
}

}  // namespace
}  // namespace orvo::test
