#pragma once

#include <OrvoAPI/Logging/Logger.h>

namespace orvo {

/// Takes the place of a console logger for development builds. Discards every message on purpose:
/// an app's console is not the library's to write to. Safe to use from any thread; holds nothing.
class DebugConsoleLogger final : public Logger {
 public:
  void log(std::string_view, LogLevel = LogLevel::default_, std::string_view = DefaultLogSubsystem,
           std::string_view = DefaultLogCategory) override {}
};

}  // namespace orvo
