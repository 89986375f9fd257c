#pragma once

#include <OrvoAPI/Base/detail/Lock.h>
#include <OrvoAPI/Logging/Logger.h>
#include <OrvoAPI/Platform/SystemLog.h>

#include <functional>
#include <map>
#include <memory>
#include <string>

namespace orvo {

/// Writes messages to the system log, where level, subsystem and category stay apart. Thread-safe,
/// never blocks. Owns its connection and one handle for each subsystem and category, kept as long
/// as it lives.
///
/// Priorities: fault 2 (critical), error 3, default 5 (notice), info 6, warning 7 (debug).
class OSLogger final : public Logger {
 public:
  explicit OSLogger(std::unique_ptr<const SystemLog> systemLog);
  ~OSLogger() override;

  void log(std::string_view message, LogLevel level = LogLevel::default_,
           std::string_view subsystem = DefaultLogSubsystem,
           std::string_view category = DefaultLogCategory) override;

 private:
  const SystemLog::Handle& handle(std::string_view subsystem, std::string_view category);

  const std::unique_ptr<const SystemLog> systemLog_;
  detail::Lock lock_;
  std::map<std::string, SystemLog::Handle, std::less<>> logs_ ORVO_GUARDED_BY(lock_);
};

}  // namespace orvo
