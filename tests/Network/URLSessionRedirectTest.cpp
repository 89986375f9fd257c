#include <OrvoAPI/Network/URLSession.h>
#include <gtest/gtest.h>
#include <tests/support/Fetched.h>
#include <tests/support/HTTPServer.h>
#include <tests/support/Signal.h>

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>

namespace orvo::test {
namespace {

/// Redirects as the path says: "/302/there" answers 302 with "Location: there".
ServedAnswer redirectByPath(const ServedRequest& request) {
  const auto& target = request.target;
  const auto slash = target.find('/', 1);
  if (slash == std::string::npos || target[1] != '3') {
    return {.body = request.method + " " + target + " " + request.body};
  }
  return {std::stoi(target.substr(1)), "moved", {{"Location", target.substr(slash + 1)}}};
}

/// Gives the word to a function.
class Delegate final : public URLSessionDelegate {
 public:
  using Decide = std::function<void(const HTTPURLResponse&, URLRequest, const URLRequest&,
                                    const RedirectCompletion&)>;
  explicit Delegate(Decide decide) : decide_(std::move(decide)) {}
  void willPerformHTTPRedirection(const HTTPURLResponse& response, const URLRequest& newRequest,
                                  const URLRequest& originalRequest,
                                  RedirectCompletion completionHandler) override {
    decide_(response, newRequest, originalRequest, completionHandler);
  }

 private:
  const Decide decide_;
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
    const HTTPServer server([&](const ServedRequest&) -> ServedAnswer {
      return {302, "", {{"Location", location}}};
    });
    URLSession session;
    EXPECT_EQ(codeOf(session.fetch({.url = server.url()})), URLError::redirectToNonExistentLocation)
        << location;
  }
}

TEST(URLSessionRedirect, GivesUpAfterTwenty) {
  const HTTPServer server([](const ServedRequest& request) -> ServedAnswer {
    const int left = std::stoi(request.target.substr(1));
    if (left == 0) return {.body = "arrived"};
    return {302, "", {{"Location", "/" + std::to_string(left - 1)}}};
  });
  URLSession session;
  EXPECT_EQ(bodyOf(session.fetch({.url = server.url("/20")})), "arrived");
  EXPECT_EQ(codeOf(session.fetch({.url = server.url("/21")})), URLError::httpTooManyRedirects);
}

TEST(URLSessionRedirect, KeepsMethodAndBodyAsTheStatusDemands) {
  const HTTPServer server(redirectByPath);
  URLSession session;
  const auto post = [&](const std::string& path) {
    return bodyOf(session.fetch({.url = server.url(path), .method = "POST", .body = Data("b")}));
  };
  EXPECT_EQ(post("/302//x"), "GET /x ");
  EXPECT_EQ(post("/303//x"), "GET /x ");
  EXPECT_EQ(post("/307//x"), "POST /x b");
  EXPECT_EQ(post("/308//x"), "POST /x b");
}

TEST(URLSessionRedirect, LeavesAuthorizationBehind) {
  const HTTPServer server(redirectByPath);
  URLSession session;
  const URLRequest request{.url = server.url("/302//x"),
                           .headers = {{"Authorization", "secret"}, {"X-Kept", "1"}}};
  EXPECT_EQ(codeOf(session.fetch(request)), 200);
  const auto requests = server.requests();
  EXPECT_EQ(requests[0].header("Authorization"), "secret");
  EXPECT_EQ(requests[1].header("Authorization"), "(none)");
  EXPECT_EQ(requests[1].header("X-Kept"), "1");
}

TEST(URLSessionRedirectDelegate, MayChangeTheRequestLaterAndFromAnyThread) {
  const HTTPServer server(redirectByPath);
  std::thread later;
  const auto delegate = std::make_shared<Delegate>(
      [&](const auto& response, URLRequest next, const auto& original, const auto& complete) {
        EXPECT_EQ(response.statusCode, 302);
        EXPECT_EQ(next.url.path(), "/x");
        EXPECT_EQ(original.headers.value("Authorization"), "old");
        later = std::thread([next = std::move(next), complete]() mutable {
          next.headers.add("Authorization", "new");
          complete(next);
          complete(std::nullopt);
        });
      });
  URLSession session({}, delegate);
  EXPECT_EQ(
      bodyOf(session.fetch({.url = server.url("/302//x"), .headers = {{"Authorization", "old"}}})),
      "GET /x ");
  later.join();
  EXPECT_EQ(server.requests()[1].headers.values("Authorization").size(), 1U);
  EXPECT_EQ(server.requests()[1].header("Authorization"), "new");
}

TEST(URLSessionRedirectDelegate, RefusesByWordAndBySilence) {
  const HTTPServer server(redirectByPath);
  URLSession refusing({}, std::make_shared<Delegate>(
                              [](auto&, auto, auto&, auto& complete) { complete(std::nullopt); }));
  URLSession forgetful({}, std::make_shared<Delegate>([](auto&, auto, auto&, auto&) {}));
  for (auto* const session : {&refusing, &forgetful}) {
    const auto result = session->fetch({.url = server.url("/302//x")}).wait(kPatience);
    EXPECT_EQ(codeOf(result), 302);
    EXPECT_EQ(result.value()->body.view(), "moved");
  }
  EXPECT_EQ(server.targets(), "/302//x /302//x");
}

TEST(URLSessionRedirectDelegate, CannotChooseAnotherScheme) {
  const HTTPServer server(redirectByPath);
  URLSession session({},
                     std::make_shared<Delegate>([](auto&, URLRequest next, auto&, auto& complete) {
                       next.url = *URL::parse("ftp://127.0.0.1/");
                       complete(next);
                     }));
  EXPECT_EQ(codeOf(session.fetch({.url = server.url("/302//x")})), 302);
}

TEST(URLSessionRedirectDelegate, MayTakeLongerThanTheTimeLimit) {
  const HTTPServer server(redirectByPath);
  Signal asked;
  std::mutex mutex;
  std::pair<std::optional<URLRequest>, URLSessionDelegate::RedirectCompletion> pending;
  URLSession session({},
                     std::make_shared<Delegate>([&](auto&, URLRequest next, auto&, auto& complete) {
                       const std::lock_guard guard(mutex);
                       pending = {std::move(next), complete};
                       asked.tell();
                     }));
  const auto limit = std::chrono::milliseconds(150);
  const auto slow = session.fetch({.url = server.url("/302//x"), .timeoutInterval = limit});
  ASSERT_TRUE(asked.wait());
  // Another fetch measures the time: it runs into the same limit.
  const HTTPServer silent([&](const ServedRequest&) -> ServedAnswer {
    std::this_thread::sleep_for(3 * limit);
    return {};
  });
  URLSession other;
  EXPECT_EQ(codeOf(other.fetch({.url = silent.url(), .timeoutInterval = 2 * limit})),
            URLError::timedOut);
  EXPECT_FALSE(slow.didComplete());
  const std::lock_guard guard(mutex);
  pending.second(pending.first);
  EXPECT_EQ(codeOf(slow), 200);
}

}  // namespace
}  // namespace orvo::test
