#include <OrvoAPI/Platform/Clock.h>
#include <OrvoAPI/Queues/TimerInternal.h>

#include <time.h>

#include <utility>

namespace orvo {
namespace {

std::chrono::milliseconds read(clockid_t clock) {
  timespec time{};
  clock_gettime(clock, &time);
  return std::chrono::seconds(time.tv_sec) + std::chrono::milliseconds(time.tv_nsec / 1'000'000);
}

class SystemClock final : public Clock {
 public:
  [[nodiscard]] Date now() const override { return Date(read(CLOCK_REALTIME).count()); }
  [[nodiscard]] std::chrono::milliseconds elapsed() const override { return read(CLOCK_BOOTTIME); }
  [[nodiscard]] std::shared_ptr<const void> onWallSet(std::function<void()> task) const override {
    return detail::Timer::shared().watchWallClock(std::move(task));
  }
};

}  // namespace

std::shared_ptr<const void> Clock::onWallSet(std::function<void()> /*task*/) const { return {}; }

std::shared_ptr<const Clock> Clock::system() {
  // Never destroyed: a detached reader may ask for the time while the process exits.
  static const auto* const clock = new SystemClock;
  return {std::shared_ptr<void>(), clock};
}

}  // namespace orvo
