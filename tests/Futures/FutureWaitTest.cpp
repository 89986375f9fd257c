#include <OrvoAPI/Futures/Promise.h>
#include <OrvoAPI/Testing/ManualQueue.h>
#include <gtest/gtest.h>
#include <tests/support/Signal.h>

#include <chrono>
#include <memory>
#include <optional>
#include <thread>

namespace orvo {
namespace {

using namespace std::chrono_literals;

/// A wait that a test expects to end before its time.
constexpr std::chrono::milliseconds kLong = 60s;

int urlErrorCode(const Result<int>& result) { return result.error()->as<URLError>()->code; }
bool isRefused(const Result<int>& result) {
  const auto* const error = result.failed() ? result.error()->as<GeneralError>() : nullptr;
  return error != nullptr && error->is<GeneralError::unableToPerformAction>();
}

TEST(FutureWait, EndsWithTheResultOfAnotherThread) {
  const Promise<int> promise;
  std::thread other([&] { promise.success(7); });
  EXPECT_EQ(promise.future().wait(std::chrono::milliseconds::max()).force(), 7);
  other.join();
}

TEST(FutureWait, EndsAtItsTimeLimitUnlessAResultIsThere) {
  const Promise<int> promise(std::make_shared<ManualQueue>());
  EXPECT_EQ(urlErrorCode(promise.future().wait(1ms)), URLError::timedOut);
  EXPECT_EQ(urlErrorCode(promise.future().wait(-1ms)), URLError::timedOut);
  promise.success(1);
  EXPECT_EQ(promise.future().wait(0ms).force(), 1) << "no queue has to be run";
}

TEST(FutureWait, IsEndedByACancel) {
  const Promise<int> promise;
  std::thread other([&] { promise.future().cancel(); });
  EXPECT_EQ(urlErrorCode(promise.future().wait(kLong)), URLError::cancelled);
  other.join();
  EXPECT_EQ(urlErrorCode(promise.future().wait(kLong)), URLError::cancelled);
  promise.complete(5);
  EXPECT_EQ(promise.future().wait(kLong).force(), 5);
}

TEST(FutureWait, IsRefusedOnTheLibrarysThreadsAndOnTheOneThatHasClaimedTheMainQueue) {
  const Promise<int> promise;
  const auto settled = Future<int>::succeeded(1);
  for (const std::shared_ptr<DispatchQueue>& queue :
       {DispatchQueue::global(), std::shared_ptr<DispatchQueue>(MainQueue::shared())}) {
    test::Signal refused;
    queue->post([&] {
      if (isRefused(promise.future().wait(kLong))) refused.tell();
    });
    EXPECT_TRUE(refused.wait());
  }
  std::optional claim = MainQueue::shared()->claim();
  EXPECT_TRUE(isRefused(settled.wait(kLong)));
  claim.reset();
  EXPECT_EQ(settled.wait(kLong).force(), 1) << "nobody's claim is in the way";
}

}  // namespace
}  // namespace orvo
