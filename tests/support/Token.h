#pragma once

#include <OrvoAPI/Logging/Logger.h>
#include <tests/support/Test.h>

namespace orvo {

/// Every token of a session that a test uses holds this text, and so does every one of the demo
/// service. A test whose output shows it fails, by a property that it has in ctest.
inline const std::string kToken = "secret-token";

/// Prints what the library logs, for ctest to look at.
class PrintingLogger final : public Logger {
 public:
  void log(std::string_view message, LogLevel, std::string_view subsystem,
           std::string_view category) override {
    std::string line(subsystem);
    line.append(" ").append(category).append(": ").append(message).append("\n");
    std::fputs(line.c_str(), stdout);
  }
};

}  // namespace orvo
