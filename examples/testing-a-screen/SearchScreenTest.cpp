#include "SearchScreen.h"

#include <OrvoAPI/Testing/Fixtures.h>
#include <OrvoAPI/Testing/ManualQueue.h>
#include <OrvoAPI/Testing/StubInterceptor.h>
#include <OrvoAPI/Testing/StubNetworkDataProvider.h>
#include <OrvoAPI/Testing/StubSessionProvider.h>
#include <gtest/gtest.h>

namespace {

using namespace std::chrono_literals;
using Rows = std::vector<std::string>;

const orvo::URL kApi = *orvo::URL::parse("https://api.example/v3/");
const orvo::URL kResources = *orvo::URL::parse("https://img.example/");

/// The screen with a network, a session, time and a user that the test plays.
class SearchScreenTest : public testing::Test {
 protected:
  /// Types, waits as long as it takes for the screen to ask, and sees it ask.
  void search(std::string text) {
    screen->type(std::move(text));
    queue->advance(SearchScreen::kRest);
    ASSERT_TRUE(network->fetches.waitForCount(++searches));
  }
  /// Delivers what was answered to the screen.
  void arrive() {
    ASSERT_TRUE(queue->waitForJob());
    EXPECT_EQ(queue->run(), 1U);
  }

  const std::shared_ptr<orvo::ManualQueue> queue = std::make_shared<orvo::ManualQueue>();
  const std::shared_ptr<orvo::StubNetworkDataProvider> network =
      std::make_shared<orvo::StubNetworkDataProvider>();
  const std::shared_ptr<orvo::StubSessionProvider> session =
      std::make_shared<orvo::StubSessionProvider>("token");
  std::shared_ptr<SearchScreen> screen = std::make_shared<SearchScreen>(
      orvo::Context::make(orvo::fixtures::configuration(), kApi, kResources, session, network),
      queue);
  std::size_t searches = 0;
};

// Time is cranked: the test takes no 300 milliseconds.
TEST_F(SearchScreenTest, AsksOnceTheTypingRests) {
  screen->type("t");
  queue->advance(299ms);
  screen->type("th");
  EXPECT_EQ(queue->advance(299ms), 1U);  // the rest after "t", which was none
  EXPECT_EQ(network->fetches.count(), 0U);
  queue->advance(1ms);
  ASSERT_TRUE(network->fetches.waitForCount(1));
  EXPECT_EQ(network->request(0).url.text(), "https://api.example/v3/search/suggest?q=th");
}

// The answers come in the wrong order; the older one must not replace the newer.
TEST_F(SearchScreenTest, ShowsTheAnswerToTheTextOfNow) {
  search("th");
  search("the");
  network->answer(1, 200, R"(["The Long Thaw"])");
  arrive();
  EXPECT_EQ(screen->rows(), Rows{"The Long Thaw"});
  network->answer(0, 200, R"(["Thirteen", "The Long Thaw"])");
  arrive();
  EXPECT_EQ(screen->rows(), Rows{"The Long Thaw"});
}

TEST_F(SearchScreenTest, SaysThatTheServiceIsAwayUntilItIsBack) {
  search("th");
  network->fetches.fail(0, orvo::URLError{orvo::URLError::notConnectedToInternet, "offline"});
  arrive();
  EXPECT_EQ(screen->message(), "The service cannot be reached.");
  search("the");
  network->answer(1, 200, "[]");
  arrive();
  EXPECT_EQ(screen->message(), "Nothing found.");
}

TEST_F(SearchScreenTest, GoesWhenItIsLeftAlthoughAnAnswerIsUnderWay) {
  search("th");
  const std::weak_ptr<SearchScreen> left = std::exchange(screen, nullptr);
  EXPECT_TRUE(left.expired());
  network->answer(0, 200, R"(["The Long Thaw"])");
  arrive();  // there is no screen any more
}

TEST_F(SearchScreenTest, IsNotCalledAnyMoreWhenItIsLeftWithAnAnswerInTheQueue) {
  search("th");
  network->answer(0, 200, R"(["The Long Thaw"])");
  ASSERT_TRUE(queue->waitForJob());
  screen.reset();
  EXPECT_EQ(queue->run(), 1U);
}

// The whole library, bootstrap and token included, except the network.
TEST(SearchScreenWithAnswersFromFiles, ShowsWhatTheServiceSuggests) {
  const auto stub = std::make_shared<orvo::StubInterceptor>();
  stub->answerFromFile("/v3/session", ANSWERS "/session.json");
  stub->answerFromFile("/v3/configuration/tvos/v1", ANSWERS "/configuration.json");
  stub->answerFromFile("/v3/search/suggest?q=th", ANSWERS "/suggestions.json");
  stub->answerOthers("no such thing");
  const auto context = orvo::ContextService::context(kApi, kResources, orvo::Client::appleTV,
                                                     {.session = {.protocolClasses = {stub}}})
                           .wait(10s)
                           .force();

  const auto queue = std::make_shared<orvo::ManualQueue>();
  const auto screen = std::make_shared<SearchScreen>(context, queue);
  screen->type("th");
  queue->advance(SearchScreen::kRest);
  // Nothing holds the answer back: it may have come while the queue ran.
  while (screen->rows().empty() && queue->waitForJob()) queue->run();
  EXPECT_EQ(screen->rows(), (Rows{"The Long Thaw", "The Light at Hartsease"}));
  EXPECT_EQ(stub->requests().back().headers.value("Authorization"), "token from a file");
}

}  // namespace
