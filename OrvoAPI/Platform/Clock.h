#pragma once

#include <OrvoAPI/Base/Date.h>

#include <chrono>
#include <functional>
#include <memory>

namespace orvo {

/// Tells the library the time; implement it to control time in tests. Called from any thread;
/// shared.
class Clock {
 public:
  virtual ~Clock() = default;

  /// The wall clock, for programme times. It may jump: a box boots in 1970 and is set later.
  [[nodiscard]] virtual Date now() const = 0;

  /// Monotonic time since an arbitrary epoch, for ages and delays; it also advances while the
  /// device sleeps.
  [[nodiscard]] virtual std::chrono::milliseconds elapsed() const = 0;

  /// Calls `task`, on any thread, whenever the wall clock has been set, for as long as the returned
  /// value is held and at most a moment longer. The task must return soon. A clock that is never
  /// set returns null.
  [[nodiscard]] virtual std::shared_ptr<const void> onWallSet(std::function<void()> task) const;

  /// The clocks of the system.
  [[nodiscard]] static std::shared_ptr<const Clock> system();
};

}  // namespace orvo
