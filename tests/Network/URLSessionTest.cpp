#include <OrvoAPI/Network/URLSession.h>
#include <OrvoAPI/Version.h>
#include <gtest/gtest.h>
#include <openssl/ssl.h>
#include <tests/support/HTTPServer.h>
#include <tests/support/Outcome.h>
#include <tests/support/ScriptedServer.h>
#include <tests/support/Signal.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace orvo::test {
namespace {

using namespace std::chrono_literals;

ServedAnswer echo(const ServedRequest& request) {
  return {.body = request.method + " " + request.target + " " + request.body,
          .headers = {{"Set-Cookie", "id=7; Path=/"}}};
}

TEST(URLSessionFetch, DeliversAnyStatusWithItsBodyAndHeaders) {
  const HTTPServer server([](const ServedRequest& request) -> ServedAnswer {
    if (request.target == "/empty") return {};
    return {404, "not here", {{"X-One", "1"}, {"x-two", ""}}};
  });
  URLSession session;
  const auto missing = session.fetch({.url = server.url("/x?a=1#here")}).wait(kPatience);
  ASSERT_FALSE(missing.failed());
  EXPECT_EQ(missing.value()->response.statusCode, 404);
  EXPECT_EQ(missing.value()->response.url, server.url("/x?a=1#here"));
  EXPECT_EQ(missing.value()->response.headers.value("x-one"), "1");
  EXPECT_EQ(missing.value()->response.headers.value("X-TWO"), "");
  EXPECT_EQ(missing.value()->body.view(), "not here");
  EXPECT_EQ(bodyOf(session.fetch({.url = server.url("/empty")})), "");
  EXPECT_EQ(server.targets(), "/x?a=1 /empty");
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

  const auto requests = server.requests();
  ASSERT_EQ(requests.size(), 5U);
  EXPECT_EQ(requests[0].header("A"), "1");
  EXPECT_EQ(requests[0].header("User-Agent"), "OrvoAPI/" ORVO_API_VERSION_STRING);
  EXPECT_EQ(requests[1].headers.values("X").size(), 2U);
  EXPECT_EQ(requests[1].header("Expect"), "(none)");
  EXPECT_EQ(requests[4].header("A"), "(none)");
  EXPECT_EQ(requests[4].header("X"), "(none)");
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
  const auto result = session.fetch({.url = server.url()}).wait(kPatience);
  ASSERT_FALSE(result.failed());
  EXPECT_EQ(result.value()->body.view(), "hello");
  EXPECT_EQ(result.value()->response.headers,
            (HTTPHeaders{
                {"Content-Encoding", "gzip"}, {"Transfer-Encoding", "chunked"}, {"Y", "final"}}));
}

TEST(URLSessionCookies, StayWithinTheSession) {
  const HTTPServer server(echo);
  URLSession first;
  URLSession second;
  for (auto* const session : {&first, &first, &second}) {
    EXPECT_EQ(codeOf(session->fetch({.url = server.url()})), 200);
    const bool known = server.requests().size() == 2;
    EXPECT_EQ(server.requests().back().header("Cookie"), known ? "id=7" : "(none)");
  }
}

TEST(URLSessionConnections, AreAtMostTenToAHost) {
  Signal arrived;
  Signal released;
  const HTTPServer server([&](const ServedRequest&) -> ServedAnswer {
    arrived.tell();
    EXPECT_TRUE(released.wait());
    return {};
  });
  URLSession session;
  std::vector<Future<HTTPResult>> fetches;
  for (int i = 0; i < 40; ++i) {
    fetches.push_back(session.fetch({.url = server.url()}));
  }
  EXPECT_TRUE(arrived.wait(10));
  released.tell();
  for (const auto& fetch : fetches) EXPECT_EQ(codeOf(fetch), 200);
  std::set<int> ports;
  for (const auto& request : server.requests()) ports.insert(request.clientPort);
  EXPECT_EQ(ports.size(), 10U);
}

TEST(URLSessionConnections, AreWaitedForWithoutATimeLimit) {
  using namespace std::chrono_literals;
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
    EXPECT_EQ(codeOf(session.fetch({.url = server.url("/" + kToken)})), code) << answer;
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

/// The code of the server's answer, in a session that is made so.
int codeOfAnswer(const std::string& answer, const URLSessionConfiguration& configuration = {}) {
  const ScriptedServer server(answer);
  URLSession session(configuration);
  return codeOf(session.fetch({.url = server.url()}));
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

class URLSessionTLS : public testing::Test {
 protected:
  /// What came of a request with a token, and what the server heard of it.
  struct Exchange {
    int code = 0;
    std::string heard;
  };
  Exchange with(const std::function<std::string(Connection&)>& hear) {
    Exchange exchange;
    const ScriptedServer server([&](Connection& connection) { exchange.heard = hear(connection); });
    URLSession session({.certificateAuthorityFile = authority_.file()});
    const auto url = "https://127.0.0.1:" + std::to_string(server.port()) + "/private";
    exchange.code =
        codeOf(session.fetch({.url = *URL::parse(url), .headers = {{"Authorization", kToken}}}));
    return exchange;
  }
  Exchange with(const Certificate& certificate, int newestVersion = TLS1_3_VERSION) {
    return with([&](Connection& connection) {
      return answerSecurely(connection, certificate, newestVersion);
    });
  }

  const CertificateAuthority authority_;
};

TEST_F(URLSessionTLS, TellsNothingToWhomItDoesNotTrust) {
  const CertificateAuthority stranger;
  for (const int version : {TLS1_2_VERSION, TLS1_3_VERSION}) {
    const auto trusted = with(authority_.issue(), version);
    EXPECT_EQ(trusted.code, 200);
    EXPECT_NE(trusted.heard.find(kToken), std::string::npos) << "the server is no witness";
    for (const auto& [certificate, code] :
         {std::pair(authority_.issue({.validTo = -1h}), URLError::serverCertificateHasBadDate),
          std::pair(authority_.issue({.validFrom = 1h, .validTo = 2h}),
                    URLError::serverCertificateNotYetValid),
          std::pair(authority_.issue({.selfSigned = true}), URLError::serverCertificateUntrusted),
          std::pair(authority_.issue({.address = "127.0.0.2"}),
                    URLError::serverCertificateUntrusted),
          std::pair(stranger.issue(), URLError::serverCertificateHasUnknownRoot)}) {
      const auto refused = with(certificate, version);
      EXPECT_EQ(refused.code, code);
      EXPECT_EQ(refused.heard, "") << code;
    }
  }
  const auto old = with(authority_.issue(), TLS1_1_VERSION);
  EXPECT_EQ(old.code, URLError::secureConnectionFailed);
  EXPECT_EQ(old.heard, "");
}

TEST_F(URLSessionTLS, TellsNothingWhereNoHandshakeIsDone) {
  using namespace std::string_literals;
  // Takes a version that was not offered.
  const auto hello =
      "\x16\x03\x02\x00\x2a\x02\x00\x00\x26\x03\x02"s + std::string(32, 'r') + "\x00\xc0\x13\x00"s;
  for (const auto& said : {""s, "220 hello\r\n"s, hello, hello.substr(0, 20),
                           "\x15\x03\x01\x00\x02\x02\x46"s /* no such version */}) {
    const auto failed = with([&](Connection& connection) {
      connection.send(said);
      connection.finish();
      return connection.waitForClose();
    });
    EXPECT_EQ(failed.code, URLError::secureConnectionFailed) << said;
    EXPECT_EQ(failed.heard.front(), '\x16') << "a handshake begins so";
    EXPECT_EQ(failed.heard.find(kToken), std::string::npos);
    EXPECT_EQ(failed.heard.find("/private"), std::string::npos);
  }
}

TEST_F(URLSessionTLS, KeepsItsConnectionsAndRefusesADowngrade) {
  const ScriptedServer plain([](Connection& connection) { connection.waitForClose(); });
  const HTTPServer server(
      [&](const ServedRequest& request) -> ServedAnswer {
        if (request.target != "/down") return {};
        return {302, "stay", {{"Location", plain.url().text()}}};
      },
      authority_.issue());
  URLSession session({.certificateAuthorityFile = authority_.file()});
  EXPECT_EQ(codeOf(session.fetch({.url = server.url("/")})), 200);
  const URLRequest down{.url = server.url("/down"), .headers = {{"Authorization", kToken}}};
  EXPECT_EQ(bodyOf(session.fetch(down)), "stay");
  const auto requests = server.requests();
  EXPECT_EQ(requests[0].clientPort, requests[1].clientPort);
  EXPECT_EQ(plain.connections(), 0);
}

}  // namespace
}  // namespace orvo::test
