#pragma once

#include <OrvoAPI/Logging/Logger.h>
#include <OrvoAPI/Platform/SystemLog.h>

#include <memory>
#include <vector>

namespace orvo {

/// Forwards every message to each of its loggers, in order, on the caller's thread. Thread-safe if
/// its loggers are. Shares its loggers; the list never changes.
class LoggingService final : public Logger {
 public:
  /// With the default loggers.
  LoggingService();
  explicit LoggingService(std::vector<std::shared_ptr<Logger>> loggers);
  ~LoggingService() override;

  /// A `DebugConsoleLogger`, then an `OSLogger` where the machine has a system log.
  [[nodiscard]] static std::vector<std::shared_ptr<Logger>> defaultLoggers(
      const SystemLog::Paths& paths = {});

  [[nodiscard]] const std::vector<std::shared_ptr<Logger>>& loggers() const { return loggers_; }

  void log(std::string_view message, LogLevel level = LogLevel::default_,
           std::string_view subsystem = DefaultLogSubsystem,
           std::string_view category = DefaultLogCategory) override;

 private:
  const std::vector<std::shared_ptr<Logger>> loggers_;
};

}  // namespace orvo
