#pragma once

#include <algorithm>
#include <chrono>
#include <optional>

namespace orvo::tool {

/// When to load the guide again, for a monitor that stays idle after a failure: five seconds after
/// the end of the latest programme, and from then on after pauses that grow while nothing comes.
/// Times are those of a clock that only goes forward. Used by one thread.
class Patience {
 public:
  using Time = std::chrono::milliseconds;

  /// A load begins: it ends by itself, by a time-out if need be.
  void loading() {
    due_.reset();
    waits_ = true;
  }
  /// It has ended; an update should follow, unless it has come already.
  void loaded(Time now) {
    if (!waits_) return;
    due_ = now + pause_;
    pause_ = std::min<Time>(2 * pause_, kLongestPause);
  }
  void updated(Time now, Time untilProgramEnd) {
    waits_ = false;
    pause_ = kShortestPause;
    due_ = now + std::max(untilProgramEnd, Time(0)) + kShortestPause;
  }

  /// Nothing while a load is under way.
  [[nodiscard]] std::optional<Time> due() const { return due_; }

 private:
  static constexpr std::chrono::seconds kShortestPause{5};
  static constexpr std::chrono::minutes kLongestPause{5};

  std::optional<Time> due_;
  Time pause_ = kShortestPause;
  bool waits_ = false;
};

}  // namespace orvo::tool
