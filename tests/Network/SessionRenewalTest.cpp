#include <OrvoAPI/Network/SessionRenewal.h>
#include <OrvoAPI/Testing/ManualQueue.h>
#include <OrvoAPI/Testing/StubSessionProvider.h>
#include <tests/support/Test.h>

namespace orvo {
namespace {

/// A session that is renewed between the ninth and the twelfth hour.
struct Renewed {
  std::shared_ptr<ManualQueue> queue = std::make_shared<ManualQueue>();
  std::shared_ptr<StubSessionProvider> session =
      std::make_shared<StubSessionProvider>("first", queue);
  std::shared_ptr<SessionRenewal> renewal =
      SessionRenewal::make(session, {.spread = 3h, .queue = queue});
};

TEST(SessionRenewal, RenewsAtARandomMomentBeforeTheTokenIsStale) {
  std::set<std::int64_t> minutes;
  for (int device = 0; device < 200; ++device) {
    Renewed one;
    one.queue->advanceToNext();
    ASSERT_EQ(one.session->updates.count(), 1U);
    const auto first = one.queue->clock().elapsed();
    ASSERT_TRUE(first >= 9h && first <= 12h) << first.count();
    minutes.insert(first / 1min);
    one.session->setToken("second");
    one.session->updates.succeed(0, true);
    one.queue->run();
    one.queue->advance(9h - 1ms);
    EXPECT_EQ(one.session->updates.count(), 1U);
    one.queue->advance(3h + 1ms);
    EXPECT_EQ(one.session->updates.count(), 2U);
  }
  EXPECT_GT(minutes.size(), 60U) << "of 180 minutes";
}

TEST(SessionRenewal, LeavesASessionAloneThatWasRenewedMeanwhile) {
  Renewed one;
  one.session->setToken("of a fetch");
  one.queue->advanceToNext();
  EXPECT_EQ(one.session->updates.count(), 0U);
  one.queue->advance(12h);
  EXPECT_EQ(one.session->updates.count(), 1U);
}

TEST(SessionRenewal, TriesAgainWithinTheSpreadAndStopsWhenReleased) {
  Renewed one;
  one.queue->advanceToNext();
  one.session->updates.fail(0, AnyError(std::runtime_error("down")));
  one.queue->run();
  one.queue->advance(3h);
  ASSERT_EQ(one.session->updates.count(), 2U);
  one.session->updates.succeed(1, false);
  one.queue->run();
  one.queue->advance(3h);
  ASSERT_EQ(one.session->updates.count(), 3U);
  one.renewal.reset();
  one.session->updates.succeed(2, true);
  one.queue->advance(24h);
  EXPECT_EQ(one.session->updates.count(), 3U);
}

}  // namespace
}  // namespace orvo
