#include <OrvoAPI/Network/URLSession.h>
#include <gtest/gtest.h>
#include <tests/support/HTTPServer.h>
#include <tests/support/Outcome.h>
#include <tests/support/ScriptedServer.h>
#include <tests/support/Signal.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace orvo::test {
namespace {

using namespace std::chrono_literals;

/// Redirects as the path says: "/302/there" answers 302 with "Location: there".
ServedAnswer redirectByPath(const ServedRequest& request) {
  const auto& target = request.target;
  const auto slash = target.find('/', 1);
  if (slash == std::string::npos || target[1] != '3') {
    return {.body = request.method + " " + target + " " + request.body};
  }
  return {std::stoi(target.substr(1)), "moved", {{"Location", target.substr(slash + 1)}}};
}

using Completion = URLSessionDelegate::RedirectCompletion;

/// Gives the word to a function.
struct Delegate final : URLSessionDelegate {
  using Decide = std::function<void(URLRequest, const Completion&)>;
  explicit Delegate(Decide decision) : decide(std::move(decision)) {}
  void willPerformHTTPRedirection(const HTTPURLResponse&, const URLRequest& newRequest,
                                  const URLRequest&, Completion completionHandler) override {
    decide(newRequest, completionHandler);
  }
  const Decide decide;
};

TEST(URLSessionRedirect, GoesWhereTheLocationPoints) {
  const HTTPServer server(redirectByPath);
  URLSession session;
  for (const std::string status : {"301", "302", "303", "307", "308"}) {
    const auto result =
        session.fetch({.url = server.url("/" + status + "//x?q#f")}).wait(kPatience);
    ASSERT_FALSE(result.failed());
    EXPECT_EQ(result.value()->body.view(), "GET /x?q ");
    EXPECT_EQ(result.value()->response.url, server.url("/x?q"));
  }
  EXPECT_EQ(bodyOf(session.fetch({.url = server.url("/302/../there")})), "GET /there ")
      << "a relative Location";
}

TEST(URLSessionRedirect, LeavesOtherAnswersAlone) {
  const HTTPServer server([](const ServedRequest& request) -> ServedAnswer {
    if (request.target == "/304") return {304, "", {{"Location", "/x"}}};
    if (request.target == "/nowhere") return {302, "no Location"};
    return {302, "elsewhere", {{"Location", "ftp://127.0.0.1/"}}};
  });
  URLSession session;
  EXPECT_EQ(codeOf(session.fetch({.url = server.url("/304")})), 304);
  EXPECT_EQ(bodyOf(session.fetch({.url = server.url("/nowhere")})), "no Location");
  EXPECT_EQ(bodyOf(session.fetch({.url = server.url("/ftp")})), "elsewhere");
}

TEST(URLSessionRedirect, FailsWhereTheLocationIsNoURL) {
  for (const std::string location : {"http://h/a b", "/%zz", "http:///x", "//"}) {
    const HTTPServer astray([&](const ServedRequest&) -> ServedAnswer {
      return {302, "", {{"Location", location}}};
    });
    EXPECT_EQ(codeOf(URLSession().fetch({.url = astray.url()})),
              URLError::redirectToNonExistentLocation)
        << location;
  }
}

TEST(URLSessionRedirect, GivesUpAfterTwenty) {
  const HTTPServer counting([](const ServedRequest& request) -> ServedAnswer {
    const int left = std::stoi(request.target.substr(1));
    if (left == 0) return {.body = "arrived"};
    return {302, "", {{"Location", "/" + std::to_string(left - 1)}}};
  });
  URLSession session;
  EXPECT_EQ(bodyOf(session.fetch({.url = counting.url("/20")})), "arrived");
  EXPECT_EQ(codeOf(session.fetch({.url = counting.url("/21")})), URLError::httpTooManyRedirects);
}

TEST(URLSessionRedirect, KeepsOfTheRequestWhatTheStatusAllows) {
  const HTTPServer server(redirectByPath);
  URLSession session;
  const auto post = [&](const std::string& path) {
    return bodyOf(session.fetch({.url = server.url(path),
                                 .method = "POST",
                                 .headers = {{"Authorization", "secret"}, {"X-Kept", "1"}},
                                 .body = Data("b")}));
  };
  EXPECT_EQ(post("/302//x"), "GET /x ");
  EXPECT_EQ(post("/303//x"), "GET /x ");
  EXPECT_EQ(post("/307//x"), "POST /x b");
  EXPECT_EQ(post("/308//x"), "POST /x b");
  const auto requests = server.requests();
  EXPECT_EQ(requests[0].header("Authorization"), "secret");
  EXPECT_EQ(requests[1].header("Authorization"), "(none)");
  EXPECT_EQ(requests[1].header("X-Kept"), "1");
}

TEST(URLSessionRedirectDelegate, RefusesByWordBySilenceAndByAnotherScheme) {
  const HTTPServer server(redirectByPath);
  const Delegate::Decide decisions[] = {[](auto next, auto& complete) {
                                          complete(std::nullopt);
                                          complete(next);
                                        },
                                        [](auto, auto&) {},
                                        [](URLRequest next, auto& complete) {
                                          next.url = *URL::parse("ftp://127.0.0.1/");
                                          complete(next);
                                        }};
  for (const auto& decide : decisions) {
    URLSession refusing({}, std::make_shared<Delegate>(decide));
    const auto result = refusing.fetch({.url = server.url("/302//x")}).wait(kPatience);
    EXPECT_EQ(codeOf(result), 302);
    EXPECT_EQ(result.value()->body.view(), "moved");
  }
  EXPECT_EQ(server.targets(), "/302//x /302//x /302//x");
}

TEST(URLSessionRedirectDelegate, MayTakeLongerThanTheTimeLimitButNotThanTheSession) {
  constexpr auto kLimit = 500ms;
  const HTTPServer server(redirectByPath);
  Signal asked;
  std::pair<std::optional<URLRequest>, Completion> pending;
  URLSession session({}, std::make_shared<Delegate>([&](URLRequest next, auto& complete) {
                       pending = {std::move(next), complete};
                       asked.tell();
                     }));
  const auto slow = session.fetch({.url = server.url("/302//x"), .timeoutInterval = kLimit});
  ASSERT_TRUE(asked.wait());
  // Another fetch measures the time: it runs into a longer limit.
  const ScriptedServer silent([](Connection& connection) { connection.waitForClose(); });
  EXPECT_EQ(codeOf(URLSession().fetch({.url = silent.url(), .timeoutInterval = 2 * kLimit})),
            URLError::timedOut);
  EXPECT_FALSE(slow.didComplete());
  pending.second(pending.first);
  EXPECT_EQ(codeOf(slow), 200);
  const auto undecided = session.fetch({.url = server.url("/302//x")});
  ASSERT_TRUE(asked.wait(2));
  session.invalidateAndCancel();
  EXPECT_EQ(codeOf(undecided), URLError::cancelled);
}

}  // namespace
}  // namespace orvo::test
