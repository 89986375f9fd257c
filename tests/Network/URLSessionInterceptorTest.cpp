#include <OrvoAPI/Network/URLSession.h>
#include <OrvoAPI/Testing/StubInterceptor.h>
#include <gtest/gtest.h>
#include <tests/support/HTTPServer.h>
#include <tests/support/Outcome.h>
#include <tests/support/Signal.h>

#include <memory>
#include <string>
#include <utility>

namespace orvo::test {
namespace {

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

TEST(URLSessionInterceptor, FirstThatTakesARequestAnswersIt) {
  const HTTPServer server([](const ServedRequest&) -> ServedAnswer { return {.body = "real"}; });
  const auto watching = std::make_shared<StubInterceptor>();
  const auto first = std::make_shared<StubInterceptor>();
  const auto second = std::make_shared<StubInterceptor>();
  first->answer("/a", "once");
  first->answer("/a", "first");
  second->answer("/a", "second");
  second->fail("/b", {URLError::networkConnectionLost, ""});
  URLSession session({.protocolClasses = {watching, first, second}});
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
