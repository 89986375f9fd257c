#include <OrvoAPI/Futures/Promise.h>
#include <OrvoAPI/Queues/MainQueue.h>
#include <OrvoAPI/Queues/SerialQueue.h>
#include <OrvoAPI/Testing/ManualQueue.h>
#include <tests/support/Test.h>

namespace orvo {
namespace {

/// What a callback shows its value on.
struct Screen : std::enable_shared_from_this<Screen> {
  void show(int value) { shown.push_back(value); }
  std::vector<int> shown;
};

class FutureOwner : public testing::Test {
 protected:
  const std::shared_ptr<ManualQueue> queue_ = std::make_shared<ManualQueue>();
  const Promise<int> promise_{queue_};
  const Future<int> future_ = promise_.future();
  /// In a block that weak pointers do not keep: whoever reads it when it has gone is noticed.
  std::shared_ptr<Screen> screen_{new Screen};
};

// The fault that owners are for: cancelling takes back no callback that is posted, and it would
// find its screen gone.
TEST_F(FutureOwner, KeepsACallbackThatIsPostedToAClaimedMainQueueFromADeadScreen) {
  const auto main = MainQueue::shared();
  auto claim = main->claim();
  auto* const screen = screen_.get();
  future_
      .onComplete(main, screen_->weak_from_this(),
                  [screen](const Result<int>& result) { screen->show(*result.value()); })
      .onSuccess(main, std::weak_ptr(screen_), [screen](int value) { screen->show(value); });
  promise_.success(1);
  future_.cancel();
  screen_.reset();
  EXPECT_EQ(claim->drain(), 2U) << "they were posted";
}

TEST_F(FutureOwner, LetsEveryKindOfCallbackRunWhileItLives) {
  const auto weak = screen_->weak_from_this();
  const auto show = [this](int value) { screen_->show(value); };
  future_.onComplete(queue_, weak, [&](const Result<int>&) { show(1); })
      .onComplete(weak, [&](const Result<int>&) { show(2); })
      .onSuccess(queue_, weak, show)
      .onSuccess(weak, [&](int) { show(3); })
      .onCancel(queue_, weak, [&](bool) { show(4); })
      .onCancel(weak, [&](bool) { show(5); });
  const Promise<int> failing(queue_);
  failing.future()
      .onFailure(queue_, weak, [&](const AnyError&) { show(6); })
      .onFailure(weak, [&](const AnyError&) { show(7); });
  promise_.success(0);
  queue_->run();
  failing.failure(std::runtime_error("failed"));
  queue_->run();
  future_.cancel();
  EXPECT_EQ(screen_->shown, (std::vector{1, 2, 0, 3, 6, 7, 4, 5}));
}

TEST_F(FutureOwner, KeepsEveryKindOfCallbackFromRunningOnceItHasGone) {
  const auto fault = [](const auto&) { ADD_FAILURE(); };
  const auto weak = screen_->weak_from_this();
  future_.onComplete(weak, fault).onSuccess(weak, fault).onFailure(weak, fault);
  future_.onCancel(weak, fault);
  screen_.reset();
  promise_.success(0);
  future_.cancel();
  future_.onCancel(queue_, weak, fault);
  EXPECT_EQ(queue_->run(), 4U);
}

TEST_F(FutureOwner, IsHeldForTheCallOnlyAlsoWhenItIsGivenAsASharedPointer) {
  std::weak_ptr<Screen> probe = screen_;
  future_.onSuccess(queue_, screen_, [&](int value) {
    screen_.reset();
    ASSERT_FALSE(probe.expired()) << "the call holds it";
    probe.lock()->show(value);
  });
  EXPECT_EQ(screen_.use_count(), 1);
  promise_.success(1);
  queue_->run();
  EXPECT_TRUE(probe.expired());
}

TEST_F(FutureOwner, ThatIsAQueueIsTheQueue) {
  int seen = 0;
  future_.onSuccess(queue_, [&](int value) { seen = value; });
  const Promise<int> other(SerialQueue::make("other"));
  other.future().onSuccess(queue_, std::weak_ptr<void>(screen_), [&](int value) { seen += value; });
  promise_.success(1);
  other.success(2);
  EXPECT_TRUE(queue_->waitForJob());
  EXPECT_EQ(queue_->run(), 2U);
  EXPECT_EQ(seen, 3);
}

TEST(FutureOwnerRace, AnOwnerThatGoesWhileItsCallbacksRunIsFoundWholeOrNotAtAll) {
  struct Owner {
    ~Owner() { value = 0; }
    int value = 1;
  };
  constexpr int kOwnerRounds = 300;
  std::atomic<int> wrong = 0;
  std::shared_ptr<Owner> owner;
  std::optional<Promise<int>> promise;
  test::Signal ended;
  test::race(
      kOwnerRounds,
      [&](int) {
        owner = std::make_shared<Owner>();
        promise.emplace();
        for (int i = 0; i < 4; ++i) {
          promise->future().onSuccess(
              owner, [&wrong, own = owner.get()](int) { wrong += own->value != 1; });
        }
        promise->future().onSuccess([&](int) { ended.tell(); });
      },
      [&](int racer, int) {
        if (racer == 0) promise->success(1);
        if (racer == 1) owner.reset();
      });
  EXPECT_TRUE(ended.wait(kOwnerRounds));
  EXPECT_EQ(wrong, 0);
}

}  // namespace
}  // namespace orvo
