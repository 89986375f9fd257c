#include <OrvoAPI/Futures/Promise.h>
#include <OrvoAPI/Network/DefaultSessionProvider.h>
#include <OrvoAPI/Platform/URLError.h>
#include <OrvoAPI/Testing/ManualClock.h>
#include <OrvoAPI/Testing/ManualQueue.h>
#include <OrvoAPI/Testing/PendingCalls.h>
#include <gtest/gtest.h>

#include <memory>

#include "tests/support/Fetched.h"

namespace orvo {
namespace {

using namespace std::chrono_literals;

struct Provider {
  std::shared_ptr<ManualClock> clock = std::make_shared<ManualClock>();
  std::shared_ptr<ManualQueue> queue = std::make_shared<ManualQueue>();
  std::shared_ptr<PendingCalls<Session>> fetches = std::make_shared<PendingCalls<Session>>(queue);
  std::shared_ptr<DefaultSessionProvider> provider = DefaultSessionProvider::make(
      1, {.token = "old", .date = clock->elapsed()}, [calls = fetches] { return calls->add(); },
      DefaultSessionProvider::makeAccessQueue(), clock);
};

TEST(DefaultSessionProvider, ATokenIsFreshForTwelveHoursWhateverTimeoutAndWallClockSay) {
  Provider p;
  p.clock->advance(12h - 1ms);
  p.clock->setWall(Date(4'000'000'000'000));
  EXPECT_EQ(p.provider->retrieveSessionToken().wait(kPatience).force(), "old");
  EXPECT_EQ(p.fetches->count(), 0U);
  p.clock->setWall(Date(0));
  p.clock->advance(1ms);
  const auto token = p.provider->retrieveSessionToken();
  ASSERT_EQ(p.fetches->count(), 1U);
  p.fetches->succeed(0, {.token = "new"});
  p.queue->run();
  EXPECT_EQ(token.wait(kPatience).force(), "new");
  p.clock->advance(12h - 1ms);
  EXPECT_EQ(p.provider->retrieveSessionToken().wait(kPatience).force(), "new");
}

TEST(DefaultSessionProvider, EachStaleRetrievalFetchesAndTheLastToFinishDecides) {
  Provider p;
  p.clock->advance(12h);
  const auto first = p.provider->retrieveSessionToken();
  const auto second = p.provider->retrieveSessionToken();
  ASSERT_EQ(p.fetches->count(), 2U);
  p.fetches->succeed(1, {.token = "b"});
  p.queue->run();
  EXPECT_EQ(second.wait(kPatience).force(), "b");
  p.fetches->succeed(0, {.token = "a"});
  p.queue->run();
  EXPECT_EQ(first.wait(kPatience).force(), "a");
  EXPECT_EQ(p.provider->currentToken(), "a");
}

TEST(DefaultSessionProvider, ARetrievalKeepsItAliveAndAnUpdateDoesNot) {
  Provider p;
  p.clock->advance(12h);
  const std::weak_ptr<DefaultSessionProvider> watched = p.provider;
  const auto token = p.provider->retrieveSessionToken();
  const auto update = p.provider->updateSession();
  p.provider.reset();
  p.fetches->succeed(0, {.token = "new"});
  p.queue->run();
  EXPECT_EQ(token.wait(kPatience).force(), "new");
  EXPECT_TRUE(watched.expired());
  p.fetches->succeed(1, {.token = "newer"});
  p.queue->run();
  EXPECT_FALSE(update.didComplete());
}

}  // namespace
}  // namespace orvo
