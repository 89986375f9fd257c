#pragma once

#include <OrvoAPI/Logging/Logger.h>

namespace orvo {

/// Stands where development builds might have a console logger. It deliberately discards every
/// message: an app's console does not belong to the library. Thread-safe; holds nothing.
class DebugConsoleLogger final : public Logger {
 public:
  void log(std::string_view, LogLevel = LogLevel::default_, std::string_view = DefaultLogSubsystem,
           std::string_view = DefaultLogCategory) override {}
};

}  // namespace orvo
