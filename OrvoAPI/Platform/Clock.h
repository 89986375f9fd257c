#pragma once

#include <OrvoAPI/Base/Date.h>

#include <chrono>
#include <functional>
#include <memory>

namespace orvo {

/// Where the library learns the time; implement it to crank time by hand. Called from any thread.
/// Shared by those that read it.
class Clock {
 public:
  virtual ~Clock() = default;

  /// The wall clock, for programme times. It may jump: a box boots in 1970 and is set later.
  [[nodiscard]] virtual Date now() const = 0;

  /// Time since some fixed moment, for ages and delays: it only goes forward, during sleep too.
  [[nodiscard]] virtual std::chrono::milliseconds elapsed() const = 0;

  /// Calls `task`, on any thread, whenever the wall clock has been set, for as long as the returned
  /// value is held and at most a moment longer. The task must return soon. A clock that is never
  /// set returns null.
  [[nodiscard]] virtual std::shared_ptr<const void> onWallSet(std::function<void()> task) const;

  /// The clocks of the system.
  [[nodiscard]] static std::shared_ptr<const Clock> system();
};

}  // namespace orvo
