#include <OrvoAPI/Futures/Promise.h>
#include <OrvoAPI/Network/DefaultNetworkProvider.h>
#include <OrvoAPI/Network/DefaultSessionProvider.h>
#include <OrvoAPI/Testing/ManualClock.h>
#include <OrvoAPI/Testing/ManualQueue.h>
#include <OrvoAPI/Testing/PendingCalls.h>
#include <OrvoAPI/Testing/StubInterceptor.h>
#include <OrvoAPI/Testing/StubSessionProvider.h>
#include <tests/support/HTTPServer.h>
#include <tests/support/Outcome.h>
#include <tests/support/Test.h>

namespace orvo::test {
namespace {

const std::string kOld = kToken + "-old";
const std::string kNew = kToken + "-new";

const std::map<std::string, std::string> kMovedVideos = {{"/videos/x", "/videos/y"},
                                                         {"/videos/x2", "/videos/y?b=2"},
                                                         {"/videos/x3", "/videos/y?"},
                                                         {"/chain", "/videos/x"}};

class DefaultNetworkProviderTest : public testing::Test {
 protected:
  /// Fetches with the token that the session had when the request was made.
  Future<HTTPResult> authorized(std::string_view target) {
    return provider_.fetch({.url = server_.url(target), .headers = {{"Authorization", kOld}}});
  }

  const HTTPServer server_{[](const ServedRequest& request) -> ServedAnswer {
    const auto question = request.target.find('?');
    const auto found = kMovedVideos.find(request.target.substr(0, question));
    if (found == kMovedVideos.end()) return {404, "not found"};
    return {302, "moved", {{"Location", found->second}}};
  }};
  const std::shared_ptr<StubSessionProvider> session_ = std::make_shared<StubSessionProvider>(kNew);
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
              (std::vector<std::string_view>{hop == 0 ? kOld : kNew}));
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
      provider->fetch({.url = server_.url("/videos/x"), .headers = {{"Authorization", kOld}}});
  ASSERT_TRUE(session_->retrievals.waitForCount(1));
  provider.reset();
  session_->retrievals.succeed(0, kNew);
  EXPECT_EQ(codeOf(future), 404);
  EXPECT_EQ(server_.requests()[1].header("Authorization"), kNew);
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
  DefaultNetworkProvider stubbed(session_, {{stub}});
  EXPECT_EQ(bodyOf(stubbed.fetch({.url = server_.url()})), "stubbed");
}

struct Provider {
  std::shared_ptr<ManualClock> clock = std::make_shared<ManualClock>();
  std::shared_ptr<ManualQueue> queue = std::make_shared<ManualQueue>();
  std::shared_ptr<PendingCalls<Session>> fetches = std::make_shared<PendingCalls<Session>>(queue);
  std::shared_ptr<DefaultSessionProvider> provider = DefaultSessionProvider::make(
      1, {.token = kOld, .date = clock->elapsed()}, [calls = fetches] { return calls->add(); },
      DefaultSessionProvider::makeAccessQueue(), clock);
};

TEST(DefaultSessionProvider, ATokenIsFreshForTwelveHoursWhateverTimeoutAndWallClockSay) {
  Provider p;
  p.clock->advance(12h - 1ms);
  p.clock->setWall(Date(4'000'000'000'000));
  EXPECT_EQ(valueOf(p.provider->retrieveSessionToken()), kOld);
  EXPECT_EQ(p.fetches->count(), 0U);
  p.clock->setWall(Date(0));
  p.clock->advance(1ms);
  const auto token = p.provider->retrieveSessionToken();
  ASSERT_EQ(p.fetches->count(), 1U);
  p.fetches->succeed(0, {.token = kNew});
  p.queue->run();
  EXPECT_EQ(valueOf(token), kNew);
  p.clock->advance(12h - 1ms);
  EXPECT_EQ(valueOf(p.provider->retrieveSessionToken()), kNew);
}

TEST(DefaultSessionProvider, EachStaleRetrievalFetchesAndTheLastToFinishDecides) {
  Provider p;
  p.clock->advance(12h);
  const auto first = p.provider->retrieveSessionToken();
  const auto second = p.provider->retrieveSessionToken();
  ASSERT_EQ(p.fetches->count(), 2U);
  p.fetches->succeed(1, {.token = "b"});
  p.queue->run();
  EXPECT_EQ(valueOf(second), "b");
  p.fetches->succeed(0, {.token = "a"});
  p.queue->run();
  EXPECT_EQ(valueOf(first), "a");
  EXPECT_EQ(p.provider->currentToken(), "a");
  p.clock->advance(12h);
  const auto failed = p.provider->retrieveSessionToken();
  p.fetches->fail(2, URLError{URLError::timedOut, ""});
  p.queue->run();
  EXPECT_EQ(errorOf(failed).as<URLError>()->code, URLError::timedOut);
  EXPECT_EQ(p.provider->currentToken(), "a");
}

TEST(DefaultSessionProvider, ARetrievalKeepsItAliveAndAnUpdateDoesNot) {
  Provider p;
  p.clock->advance(12h);
  const std::weak_ptr<DefaultSessionProvider> watched = p.provider;
  const auto token = p.provider->retrieveSessionToken();
  const auto update = p.provider->updateSession();
  p.provider.reset();
  p.fetches->succeed(0, {.token = kNew});
  p.queue->run();
  EXPECT_EQ(valueOf(token), kNew);
  EXPECT_TRUE(watched.expired());
  p.fetches->succeed(1, {.token = "newer"});
  p.queue->run();
  EXPECT_FALSE(update.didComplete());
}

}  // namespace
}  // namespace orvo::test
