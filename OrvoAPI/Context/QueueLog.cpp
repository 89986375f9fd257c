#include <OrvoAPI/Base/ImmortalInternal.h>
#include <OrvoAPI/Base/detail/Lock.h>
#include <OrvoAPI/Context/QueueLogInternal.h>
#include <OrvoAPI/Logging/LoggingService.h>
#include <OrvoAPI/Queues/QueueWarningsInternal.h>

#include <utility>

namespace orvo::detail {
namespace {

struct QueueLogger {
  Lock lock;
  std::weak_ptr<Logger> logger ORVO_GUARDED_BY(lock);
};

QueueLogger& queueLogger() {
  static auto* const logger = new (immortalPlace<QueueLogger>()) QueueLogger;
  return *logger;
}

void logQueueWarning(std::string_view category, std::string_view message) {
  std::shared_ptr<Logger> logger;
  {
    auto& named = queueLogger();
    const LockGuard guard(named.lock);
    logger = named.logger.lock();
  }
  if (logger == nullptr) logger = std::make_shared<LoggingService>();
  logger->log(message, LogLevel::warning, "queues", category);
}

}  // namespace

void logQueueWarningsTo(const std::shared_ptr<Logger>& logger) {
  {
    auto& named = queueLogger();
    std::weak_ptr<Logger> replaced = logger;
    const LockGuard guard(named.lock);
    // Who names none does not take the lines from who has named one.
    if (logger != nullptr || named.logger.expired()) named.logger.swap(replaced);
  }
  setQueueWarningSink(logQueueWarning);
}

}  // namespace orvo::detail
