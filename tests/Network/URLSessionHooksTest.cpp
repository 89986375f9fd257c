#include <OrvoAPI/Network/URLSession.h>
#include <OrvoAPI/Testing/StubInterceptor.h>
#include <tests/support/HTTPServer.h>
#include <tests/support/Outcome.h>
#include <tests/support/ScriptedServer.h>
#include <tests/support/Test.h>

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

using Completion = URLSessionDelegate::RedirectCompletion;

/// Leaves the decision to a function.
struct Delegate final : URLSessionDelegate {
  using Decide = std::function<void(URLRequest, const Completion&)>;
  explicit Delegate(Decide decision) : decide(std::move(decision)) {}
  void willPerformHTTPRedirection(const HTTPURLResponse&, const URLRequest& newRequest,
                                  const URLRequest& originalRequest,
                                  Completion completionHandler) override {
    originals.insert(originalRequest.url.text());
    decide(newRequest, completionHandler);
  }
  const Decide decide;
  std::set<std::string> originals;  // on the session's queue
};

struct Redirect {
  std::string method;
  int status;
  std::string location;  // none when empty
  std::string outcome;   // the code, and the request that followed or the body
};

const std::vector<Redirect> kRedirects{{"GET", 301, "/x?q#f", "200 GET /x?q "},
                                       {"GET", 302, "x/../there", "200 GET /there "},
                                       {"POST", 301, "/x", "200 GET /x "},
                                       {"POST", 302, "/x", "200 GET /x "},
                                       {"PUT", 302, "/x", "200 PUT /x b"},
                                       {"PUT", 303, "/x", "200 GET /x "},
                                       {"HEAD", 303, "/x", "200 HEAD /x "},
                                       {"POST", 307, "/x", "200 POST /x b"},
                                       {"POST", 308, "/x", "200 POST /x b"},
                                       {"GET", 304, "/x", "304 "},
                                       {"GET", 302, "", "302 moved"},
                                       {"GET", 302, "ftp://127.0.0.1/", "302 moved"},
                                       {"GET", 302, "http://h/secret-token b", "-1010 "},
                                       {"GET", 302, "/%zz", "-1010 "},
                                       {"GET", 302, "http:///x", "-1010 "},
                                       {"GET", 302, "//", "-1010 "}};

TEST(URLSessionRedirect, IsFollowedAsStatusAndLocationAllow) {
  for (const Redirect& redirect : kRedirects) {
    const HTTPServer server([&redirect](const ServedRequest& request) -> ServedAnswer {
      if (request.target != "/") return {};
      if (redirect.location.empty()) return {redirect.status, "moved"};
      return {redirect.status, "moved", {{"Location", redirect.location}}};
    });
    const Data body(redirect.method.starts_with("P") ? "b" : "");
    const auto result = resultOf(
        URLSession().fetch({.url = server.url(), .method = redirect.method, .body = body}));
    const auto last = server.requests().back();
    auto seen = std::to_string(codeOf(result)) + " ";
    if (last.target != "/") seen += last.method + " " + last.target + " " + last.body;
    if (const auto* const answer = result.value()) {
      seen += answer->body.view();
      EXPECT_EQ(answer->response.url, server.url(last.target)) << redirect.location;
    }
    EXPECT_EQ(seen, redirect.outcome)
        << redirect.method << " " << redirect.status << " " << redirect.location;
  }
}

TEST(URLSessionRedirect, KeepsTheFieldsThatAreMeantForAnyHost) {
  const HTTPServer server(redirectByPath);
  URLSession session;
  const auto foreign = "http://localhost:" + std::to_string(*server.url().port());
  for (const auto& [path, followed] :
       {std::pair<std::string, bool>("/302//x", true), {"/307/" + foreign + "/x", false}}) {
    const URLRequest request{.url = server.url(path),
                             .method = "POST",
                             .headers = {{"Authorization", "secret"},
                                         {"Host", "mine.example"},
                                         {"Cookie", "mine=1"},
                                         {"Content-Type", "text/x"},
                                         {"X-Kept", "1"}},
                             .body = Data("b")};
    EXPECT_EQ(codeOf(session.fetch(request)), 200);
    const auto requests = server.requests();
    EXPECT_EQ(requests[requests.size() - 2].header("Authorization"), "secret");
    const auto& last = requests.back();
    EXPECT_EQ(last.header("Authorization"), "(none)");
    EXPECT_NE(last.header("Host"), "mine.example");
    EXPECT_EQ(last.header("Cookie"), followed ? "mine=1" : "(none)") << "to " << path;
    EXPECT_EQ(last.header("Content-Type"), followed ? "(none)" : "text/x") << "a GET has no body";
    EXPECT_EQ(last.header("X-Kept"), "1");
  }
}

TEST(URLSessionRedirect, GivesUpAfterTwenty) {
  const HTTPServer counting([](const ServedRequest& request) -> ServedAnswer {
    const int left = std::stoi(request.target.substr(1));
    if (left == 0) return {.body = "arrived"};
    return {302, "", {{"Location", "/" + std::to_string(left - 1)}}};
  });
  Completion earlier = [](const auto&) {};
  const auto delegate = std::make_shared<Delegate>([&](auto next, auto& complete) {
    earlier(std::nullopt);  // the word on that redirect was given
    earlier = complete;
    complete(next);
  });
  URLSession session({}, delegate);
  EXPECT_EQ(bodyOf(session.fetch({.url = counting.url("/20")})), "arrived");
  EXPECT_EQ(codeOf(session.fetch({.url = counting.url("/21")})), URLError::httpTooManyRedirects);
  EXPECT_EQ(delegate->originals, (std::set{counting.url("/20").text(), counting.url("/21").text()}))
      << "what the caller sent";
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
    const auto result = resultOf(refusing.fetch({.url = server.url("/302//x")}));
    EXPECT_EQ(codeOf(result), 302);
    EXPECT_EQ(result.value()->body.view(), "moved");
  }
  EXPECT_EQ(server.targets(), "/302//x /302//x /302//x");
}

TEST(URLSessionRedirectDelegate, MayTakeLongerThanTheTimeLimitButNotThanTheSession) {
  constexpr auto kRedirectLimit = 500ms;
  const HTTPServer server(redirectByPath);
  Signal asked;
  std::pair<std::optional<URLRequest>, Completion> pending;
  URLSession session({}, std::make_shared<Delegate>([&](URLRequest next, auto& complete) {
                       pending = {std::move(next), complete};
                       asked.tell();
                     }));
  const auto slow =
      session.fetch({.url = server.url("/302//x"), .timeoutInterval = kRedirectLimit});
  ASSERT_TRUE(asked.wait());
  // Another fetch measures the time: it runs into a longer limit.
  const ScriptedServer silent([](Connection& connection) { connection.waitForClose(); });
  EXPECT_EQ(
      codeOf(URLSession().fetch({.url = silent.url(), .timeoutInterval = 2 * kRedirectLimit})),
      URLError::timedOut);
  EXPECT_FALSE(slow.didComplete());
  pending.first->url = server.url("/x#f");
  pending.second(pending.first);
  EXPECT_EQ(valueOf(slow).response.url, server.url("/x"));
  const auto undecided = session.fetch({.url = server.url("/302//x")});
  ASSERT_TRUE(asked.wait(2));
  session.invalidateAndCancel();
  EXPECT_EQ(codeOf(undecided), URLError::cancelled);
}

/// Takes everything and keeps it.
struct Keeper final : URLInterceptor {
  bool intercept(const URLRequest&, const std::shared_ptr<InterceptedRequest>& request) override {
    kept.push_back(request);
    request->onCancel([this] { cancelled.tell(); });
    taken.tell();
    return true;
  }
  std::shared_ptr<InterceptedRequest> release() { return std::exchange(kept, {}).back(); }

  Signal taken;
  Signal cancelled;
  std::vector<std::shared_ptr<InterceptedRequest>> kept;  // read when they were taken
};

/// Answers, and yet lets every request go by.
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
  keeper->kept.back()->onCancel([&] { keeper->cancelled.tell(); });
  EXPECT_TRUE(keeper->cancelled.wait(2)) << "a task that comes too late is called all the same";
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

TEST(URLSessionInterceptor, HasNoLongerThanTheWholeMayTake) {
  constexpr auto kWhole = 300ms;
  const auto keeper = std::make_shared<Keeper>();
  URLSession session({.protocolClasses = {keeper}});
  const auto url = *URL::parse("http://nowhere.invalid/");
  const auto later = session.fetch({.url = url, .totalTimeoutInterval = 2 * kWhole});
  const auto soon = session.fetch({.url = url, .totalTimeoutInterval = kWhole});
  const auto last = session.fetch({.url = url, .totalTimeoutInterval = 3 * kWhole});
  ASSERT_TRUE(keeper->taken.wait(3));
  EXPECT_EQ(codeOf(soon), URLError::timedOut);
  EXPECT_FALSE(later.didComplete());
  keeper->kept[1]->respond({.url = url, .statusCode = 200});
  EXPECT_EQ(codeOf(later), URLError::timedOut);
  EXPECT_EQ(codeOf(last), URLError::timedOut);
  EXPECT_EQ(codeOf(soon), URLError::timedOut) << "it was answered too late";
  EXPECT_TRUE(keeper->cancelled.wait(3));
  keeper->kept.clear();
}

}  // namespace
}  // namespace orvo::test
