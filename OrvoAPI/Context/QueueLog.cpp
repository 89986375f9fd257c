#include <OrvoAPI/Base/ImmortalInternal.h>
#include <OrvoAPI/Base/detail/Lock.h>
#include <OrvoAPI/Context/QueueLogInternal.h>
#include <OrvoAPI/Logging/LoggingService.h>
#include <OrvoAPI/Queues/QueueWarningsInternal.h>

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

namespace orvo::detail {
namespace {

struct QueueLoggers {
  Lock lock;
  std::vector<std::weak_ptr<Logger>> loggers ORVO_GUARDED_BY(lock);
};

QueueLoggers& queueLoggers() {
  static auto* const loggers = new (immortalPlace<QueueLoggers>()) QueueLoggers;
  return *loggers;
}

void logQueueWarning(std::string_view category, std::string_view message) {
  std::vector<std::shared_ptr<Logger>> loggers;
  {
    auto& named = queueLoggers();
    const LockGuard guard(named.lock);
    for (const auto& weak : named.loggers) {
      if (auto logger = weak.lock()) loggers.push_back(std::move(logger));
    }
  }
  if (loggers.empty()) loggers.push_back(std::make_shared<LoggingService>());
  for (const auto& logger : loggers) logger->log(message, LogLevel::warning, "queues", category);
}

}  // namespace

void logQueueWarningsTo(const std::shared_ptr<Logger>& logger) {
  setQueueWarningSink(logQueueWarning);
  if (logger == nullptr) return;
  auto& named = queueLoggers();
  const LockGuard guard(named.lock);
  std::erase_if(named.loggers, [](const auto& other) { return other.expired(); });
  const auto isSame = [&](const auto& other) {
    return !other.owner_before(logger) && !logger.owner_before(other);
  };
  if (std::none_of(named.loggers.begin(), named.loggers.end(), isSame)) {
    named.loggers.push_back(logger);
  }
}

}  // namespace orvo::detail
