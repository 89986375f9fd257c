#pragma once

#include <OrvoAPI/Platform/Date.h>

#include <chrono>
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

  /// The clocks of the system.
  [[nodiscard]] static std::shared_ptr<const Clock> system();
};

}  // namespace orvo
