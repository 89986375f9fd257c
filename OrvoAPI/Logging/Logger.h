#pragma once

#include <OrvoAPI/Logging/LogLevel.h>

#include <string_view>

namespace orvo {

/// The subsystem and the category of a message that names none.
inline constexpr std::string_view DefaultLogSubsystem = "General";
inline constexpr std::string_view DefaultLogCategory = "General";

/// Receives the library's diagnostics; implement it to send them elsewhere. `log` is called from
/// any thread, also concurrently, and should return soon. Shared by those that log.
class Logger {
 public:
  virtual ~Logger() = default;

  /// Logs one message; never fails. The texts are only valid during the call.
  virtual void log(std::string_view message, LogLevel level = LogLevel::default_,
                   std::string_view subsystem = DefaultLogSubsystem,
                   std::string_view category = DefaultLogCategory) = 0;
};

}  // namespace orvo
