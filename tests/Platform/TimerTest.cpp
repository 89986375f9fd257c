#include <OrvoAPI/Platform/Clock.h>
#include <OrvoAPI/Platform/SerialQueue.h>
#include <gtest/gtest.h>
#include <tests/support/Signal.h>

#include <chrono>
#include <thread>
#include <vector>

namespace orvo {
namespace {

using namespace std::chrono_literals;

TEST(DelayedJobs, ComeInTheOrderOfTheirTimesAndNotTooEarly) {
  const auto queue = SerialQueue::make("test");
  const auto clock = Clock::system();
  const auto begun = clock->elapsed();
  std::vector<std::pair<int, bool>> ran;
  test::Signal done;
  const auto job = [&](std::chrono::milliseconds delay) {
    return [&, delay] {
      ran.emplace_back(delay.count(), clock->elapsed() - begun >= delay);
      done.tell();
    };
  };
  queue->postAfter(std::chrono::milliseconds::max(), [] { ADD_FAILURE(); });
  for (const auto delay : {30ms, 10ms, 20ms, 10ms, 0ms}) queue->postAfter(delay, job(delay));
  ASSERT_TRUE(done.wait(5));
  using Ran = decltype(ran);
  EXPECT_EQ(ran, (Ran{{0, true}, {10, true}, {10, true}, {20, true}, {30, true}}));
}

TEST(DelayedJobs, KeepTheirQueueUntilThen) {
  test::Signal done;
  auto queue = SerialQueue::make("test");
  const std::weak_ptr probe = queue;
  queue->postAfter(1ms, [&] { done.tell(); });
  queue.reset();
  EXPECT_TRUE(done.wait());
  while (!probe.expired()) std::this_thread::yield();
}

}  // namespace
}  // namespace orvo
