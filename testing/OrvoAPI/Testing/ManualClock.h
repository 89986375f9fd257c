#pragma once

#include <OrvoAPI/Platform/Clock.h>
#include <OrvoAPI/Testing/detail/Locked.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace orvo {

/// A clock that stands still until a test moves it. Thread-safe. Give it to what takes a `Clock`,
/// and keep a pointer to move it.
///
///     const auto clock = std::make_shared<ManualClock>();
///     Store<Video> store(10, clock);
///     store.store(video, "key");
///     clock->advance(std::chrono::seconds(301));  // the video has expired
class ManualClock final : public Clock {
 public:
  /// Noon on a Monday.
  static constexpr Date kDefaultWall{1'493'640'000'000};  // 2017-05-01T12:00:00.000Z

  explicit ManualClock(Date wall = kDefaultWall,
                       std::chrono::milliseconds elapsed = std::chrono::milliseconds(0))
      : wall_(wall.millisecondsSince1970()), elapsed_(elapsed.count()) {}

  [[nodiscard]] Date now() const override { return Date(wall_); }
  [[nodiscard]] std::chrono::milliseconds elapsed() const override {
    return std::chrono::milliseconds(elapsed_);
  }

  /// Time passes, on both clocks.
  void advance(std::chrono::milliseconds span) {
    wall_ += span.count();
    elapsed_ += span.count();
  }

  /// Sets the wall clock; no time passes. Tasks that wait for that (`onWallSet`) are called within
  /// the call.
  void setWall(Date wall) {
    wall_ = wall.millisecondsSince1970();
    const auto told = watches_.with([](const auto& watches) { return watches; });
    for (const auto& weak : told) {
      if (const auto watch = weak.lock()) (*watch)();
    }
  }
  [[nodiscard]] std::shared_ptr<const void> onWallSet(std::function<void()> task) const override {
    auto watch = std::make_shared<Watch>(std::move(task));
    watches_.with([&](auto& watches) { watches.push_back(watch); });
    return watch;
  }

 private:
  using Watch = const std::function<void()>;

  std::atomic<std::int64_t> wall_;
  std::atomic<std::int64_t> elapsed_;
  mutable detail::Locked<std::vector<std::weak_ptr<Watch>>> watches_;
};

}  // namespace orvo
