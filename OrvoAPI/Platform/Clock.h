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

  /// Time since some fixed moment, for ages and delays: it only goes forward and counts sleep.
  [[nodiscard]] virtual std::chrono::milliseconds elapsed() const = 0;

  /// Has `task` called, on any thread, whenever somebody has set the wall clock, for as long as
  /// what this returns is held and at most a moment longer. The task must return soon. A clock that
  /// nobody sets returns nothing.
  [[nodiscard]] virtual std::shared_ptr<const void> onWallSet(std::function<void()> task) const;

  /// The clocks of the system.
  [[nodiscard]] static std::shared_ptr<const Clock> system();
};

}  // namespace orvo
