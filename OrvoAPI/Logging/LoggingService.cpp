#include <OrvoAPI/Logging/LoggingService.h>

#include <OrvoAPI/Logging/DebugConsoleLogger.h>
#include <OrvoAPI/Logging/OSLogger.h>

#include <utility>

namespace orvo {

LoggingService::LoggingService() : LoggingService(defaultLoggers()) {}
LoggingService::LoggingService(std::vector<std::shared_ptr<Logger>> loggers)
    : loggers_(std::move(loggers)) {}
LoggingService::~LoggingService() = default;

std::vector<std::shared_ptr<Logger>> LoggingService::defaultLoggers(const SystemLog::Paths& paths) {
  std::vector<std::shared_ptr<Logger>> loggers{std::make_shared<DebugConsoleLogger>()};
  if (auto systemLog = SystemLog::open(paths)) {
    loggers.push_back(std::make_shared<OSLogger>(std::move(systemLog)));
  }
  return loggers;
}

void LoggingService::log(std::string_view message, LogLevel level, std::string_view subsystem,
                         std::string_view category) {
  for (const auto& logger : loggers_) logger->log(message, level, subsystem, category);
}

}  // namespace orvo
