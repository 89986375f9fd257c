#include <OrvoAPI/Network/URLSession.h>
#include <OrvoAPI/Version.h>
#include <gtest/gtest.h>
#include <tests/support/Fetched.h>
#include <tests/support/HTTPServer.h>
#include <tests/support/ScriptedServer.h>
#include <tests/support/Signal.h>

#include <atomic>
#include <set>
#include <string>
#include <vector>

namespace orvo::test {
namespace {

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
  for (const auto& field : {HTTPHeaders::Field{"Authorization", "a\r\nX: y"},
                            {"A", "a\n"},
                            {"A", "a\0b"sv},
                            {"A: b\r\nC", "x"},
                            {"", "x"}}) {
    EXPECT_EQ(codeOf(session.fetch({.url = server.url(), .headers = {field}})), URLError::badURL);
  }
  EXPECT_EQ(codeOf(session.fetch({.url = server.url(), .method = "GET / HTTP/1.1\r\n"})),
            URLError::badURL);
  for (const auto& [text, code] :
       {std::pair("relative", URLError::badURL), std::pair("http:///nohost", URLError::badURL),
        std::pair("http://h:70000/", URLError::badURL),
        std::pair("ftp://127.0.0.1/", URLError::unsupportedURL),
        std::pair("file:///etc/passwd", URLError::unsupportedURL)}) {
    EXPECT_EQ(codeOf(session.fetch({.url = *URL::parse(text)})), code) << text;
  }
  EXPECT_EQ(server.targets(), "");
}

TEST(URLSessionFetch, DecodesAndSkipsInterimResponses) {
  // "hello", by gzip.
  const std::string packed(
      "\x1f\x8b\x08\x00\x00\x00\x00\x00\x00\x03\xcb\x48\xcd\xc9\xc9\x07\x00\x86\xa6\x10\x36\x05"
      "\x00\x00\x00",
      25);
  const ScriptedServer server(
      "HTTP/1.1 103 Early\r\nX: early\r\n\r\nHTTP/1.1 200 OK\r\nContent-Encoding: gzip\r\n"
      "Transfer-Encoding: chunked\r\nY:  final \r\n\r\n19\r\n" +
      packed + "\r\n0\r\nTrailer: t\r\n\r\n");
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

}  // namespace
}  // namespace orvo::test
