#include <OrvoAPI/Network/URLSession.h>
#include <OrvoAPI/Testing/StubInterceptor.h>
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
  const auto result = session.fetch({.url = server.url("/301//x?q#f")}).wait(kPatience);
  ASSERT_FALSE(result.failed());
  EXPECT_EQ(result.value()->body.view(), "GET /x?q ");
  EXPECT_EQ(result.value()->response.url, server.url("/x?q"));
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
  for (const std::string location : {"http://h/secret-token b", "/%zz", "http:///x", "//"}) {
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

/// Takes everything and keeps it.
struct Keeper final : URLInterceptor {
  bool intercept(const URLRequest&, const std::shared_ptr<InterceptedRequest>& request) override {
    kept = request;
    request->onCancel([this] { cancelled.tell(); });
    taken.tell();
    return true;
  }
  std::shared_ptr<InterceptedRequest> release() { return std::exchange(kept, nullptr); }

  Signal taken;
  Signal cancelled;
  std::shared_ptr<InterceptedRequest> kept;  // read when it was taken
};

/// Answers, and yet lets everything go by.
struct Talker final : URLInterceptor {
  bool intercept(const URLRequest&, const std::shared_ptr<InterceptedRequest>& request) override {
    request->fail({URLError::unknown, "not asked"});
    return false;
  }
};

TEST(URLSessionInterceptor, FirstThatTakesARequestAnswersIt) {
  const HTTPServer server([](const ServedRequest&) -> ServedAnswer { return {.body = "real"}; });
  const auto watching = std::make_shared<StubInterceptor>();
  const auto first = std::make_shared<StubInterceptor>();
  const auto second = std::make_shared<StubInterceptor>();
  first->answer("/a", "once");
  first->answer("/a", "first");
  second->answer("/a", "second");
  second->fail("/b", {URLError::networkConnectionLost, ""});
  URLSession session({.protocolClasses = {watching, std::make_shared<Talker>(), first, second}});
  EXPECT_EQ(bodyOf(session.fetch({.url = server.url("/a")})), "once");
  EXPECT_EQ(codeOf(session.fetch({.url = server.url("/b")})), URLError::networkConnectionLost);
  EXPECT_EQ(bodyOf(session.fetch({.url = server.url("/c")})), "real");
  EXPECT_EQ(bodyOf(session.fetch({.url = *URL::parse("invented://host/a")})), "first");
  EXPECT_EQ(watching->requests().size(), 4U);
  EXPECT_EQ(second->requests().size(), 2U);
  EXPECT_EQ(server.targets(), "/c");
}

TEST(URLSessionInterceptor, AnswersRedirectsAndSeesEachHop) {
  const HTTPServer server([](const ServedRequest& request) -> ServedAnswer {
    if (request.target == "/end") return {.body = "arrived"};
    return {302, "", {{"Location", "/stubbed"}}};
  });
  const auto stub = std::make_shared<StubInterceptor>();
  stub->answer("/stubbed", "", {.statusCode = 307, .headers = {{"Location", "/end"}}});
  URLSession session({.protocolClasses = {stub}});
  EXPECT_EQ(bodyOf(session.fetch({.url = server.url("/start")})), "arrived");
  EXPECT_EQ(stub->requests().size(), 3U);
  EXPECT_EQ(server.targets(), "/start /end");
}

TEST(URLSessionInterceptor, LearnsOfACancelAndMayAnswerLaterButNotNever) {
  const auto keeper = std::make_shared<Keeper>();
  URLSession session({.protocolClasses = {keeper}});
  const auto cancelled = session.fetch({.url = *URL::parse("http://h/")});
  ASSERT_TRUE(keeper->taken.wait());
  cancelled.cancel();
  EXPECT_TRUE(keeper->cancelled.wait());
  keeper->release()->respond({.url = *URL::parse("http://h/"), .statusCode = 200});
  const auto late = session.fetch({.url = *URL::parse("http://h/")});
  ASSERT_TRUE(keeper->taken.wait(2));
  const auto kept = keeper->release();
  kept->respond({.url = *URL::parse("http://h/"), .statusCode = 204});
  kept->fail({URLError::unknown, "too late"});
  EXPECT_EQ(codeOf(late), 204);
  const auto dropped = session.fetch({.url = *URL::parse("http://h/")});
  ASSERT_TRUE(keeper->taken.wait(3));
  keeper->release();
  EXPECT_EQ(codeOf(dropped), URLError::unknown);
  EXPECT_FALSE(cancelled.didComplete()) << "it was answered in vain";
}

}  // namespace
}  // namespace orvo::test
