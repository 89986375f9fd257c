#include <OrvoAPI/Network/DefaultNetworkProvider.h>
#include <OrvoAPI/Testing/StubInterceptor.h>
#include <OrvoAPI/Testing/StubSessionProvider.h>
#include <gtest/gtest.h>
#include <tests/support/Fetched.h>
#include <tests/support/HTTPServer.h>
#include <tests/support/Race.h>

#include <array>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace orvo::test {
namespace {

const std::map<std::string, std::string> kRedirects = {{"/videos/x", "/videos/y"},
                                                       {"/videos/x2", "/videos/y?b=2"},
                                                       {"/videos/x3", "/videos/y?"},
                                                       {"/chain", "/videos/x"}};

class DefaultNetworkProviderTest : public testing::Test {
 protected:
  /// Fetches with the token that the session had when the request was made.
  Future<HTTPResult> authorized(std::string_view target) {
    return provider_.fetch({.url = server_.url(target), .headers = {{"Authorization", "old"}}});
  }

  const HTTPServer server_{[](const ServedRequest& request) -> ServedAnswer {
    const auto question = request.target.find('?');
    const auto found = kRedirects.find(request.target.substr(0, question));
    if (found == kRedirects.end()) return {404, "not found"};
    return {302, "moved", {{"Location", found->second}}};
  }};
  const std::shared_ptr<StubSessionProvider> session_ =
      std::make_shared<StubSessionProvider>("new");
  DefaultNetworkProvider provider_{session_};
};

TEST_F(DefaultNetworkProviderTest, CarriesTheQueryOverAndSendsOneTokenOnEachHop) {
  EXPECT_EQ(codeOf(authorized("/chain?a=1%20&a")), 404);
  EXPECT_EQ(server_.targets(), "/chain?a=1%20&a /videos/x?a=1%20&a /videos/y?a=1%20&a");
  EXPECT_EQ(codeOf(authorized("/videos/x2?a=1")), 404);
  EXPECT_EQ(codeOf(authorized("/videos/x3?a=1")), 404);
  const auto requests = server_.requests();
  EXPECT_EQ(requests[4].target, "/videos/y?b=2");
  EXPECT_EQ(requests[6].target, "/videos/y?") << "an empty query is one";
  for (const int hop : {0, 1, 2}) {
    EXPECT_EQ(requests[static_cast<std::size_t>(hop)].headers.values("Authorization"),
              std::vector<std::string_view>{hop == 0 ? "old" : "new"});
  }
}

TEST_F(DefaultNetworkProviderTest, FollowsNoRedirectWithoutATokenThatCanBeSent) {
  session_->setToken("a\r\nX: y");
  EXPECT_EQ(codeOf(authorized("/videos/x")), URLError::badURL);
  session_->holdTokens();
  const auto refused = authorized("/videos/x");
  ASSERT_TRUE(session_->retrievals.waitForCount(2));
  session_->retrievals.fail(1, URLError{URLError::timedOut, ""});
  EXPECT_EQ(codeOf(refused), 302);
  EXPECT_EQ(bodyOf(refused), "moved");
  EXPECT_EQ(server_.targets(), "/videos/x /videos/x");
}

TEST_F(DefaultNetworkProviderTest, AsksForNoTokenWhereTheRequestCarriedNone) {
  session_->holdTokens();  // never given out
  EXPECT_EQ(codeOf(provider_.fetch({.url = server_.url("/videos/x?a=1")})), 404);
  EXPECT_EQ(session_->retrievals.count(), 0U);
  EXPECT_EQ(server_.targets(), "/videos/x?a=1 /videos/y?a=1");
  EXPECT_EQ(server_.requests()[1].header("Authorization"), "(none)");
}

TEST_F(DefaultNetworkProviderTest, FinishesARedirectWhenItIsGone) {
  session_->holdTokens();
  auto provider = std::make_unique<DefaultNetworkProvider>(session_);
  const auto future =
      provider->fetch({.url = server_.url("/videos/x"), .headers = {{"Authorization", "old"}}});
  ASSERT_TRUE(session_->retrievals.waitForCount(1));
  provider.reset();
  session_->retrievals.succeed(0, "new");
  EXPECT_EQ(codeOf(future), 404);
  EXPECT_EQ(server_.requests()[1].header("Authorization"), "new");
}

TEST_F(DefaultNetworkProviderTest, MakesOneSessionForAllThreads) {
  std::array<std::shared_ptr<URLSession>, kRacers> sessions;
  const auto make = [&](int racer, int) {
    sessions.at(static_cast<std::size_t>(racer)) = provider_.urlSession();
  };
  race(
      1, [](int) {}, make);
  for (const auto& session : sessions) EXPECT_EQ(session, sessions[0]);
  const auto stub = std::make_shared<StubInterceptor>();
  stub->answerOthers("stubbed");
  provider_.setURLSession(std::make_shared<URLSession>(
      URLSessionConfiguration{.protocolClasses = {stub}}, provider_.sessionDelegate()));
  EXPECT_EQ(bodyOf(provider_.fetch({.url = server_.url()})), "stubbed");
}

}  // namespace
}  // namespace orvo::test
