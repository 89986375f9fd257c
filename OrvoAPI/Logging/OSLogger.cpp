#include <OrvoAPI/Logging/OSLogger.h>

#include <utility>

namespace orvo {
namespace {

SystemLog::Priority priority(LogLevel level) {
  switch (level) {
    case LogLevel::fault:
      return SystemLog::Priority::critical;
    case LogLevel::error:
      return SystemLog::Priority::error;
    case LogLevel::warning:
      return SystemLog::Priority::debug;  // not 4: filters in use expect it there
    case LogLevel::info:
      return SystemLog::Priority::info;
    case LogLevel::default_:
      break;
  }
  return SystemLog::Priority::notice;
}

}  // namespace

OSLogger::OSLogger(std::unique_ptr<const SystemLog> systemLog) : systemLog_(std::move(systemLog)) {}
OSLogger::~OSLogger() = default;

void OSLogger::log(std::string_view message, LogLevel level, std::string_view subsystem,
                   std::string_view category) {
  systemLog_->send(handle(subsystem, category), priority(level), message);
}

// Two pairs whose texts join to the same key share the first one's handle: "subsystem-category" is
// the name by which a handle is known.
const SystemLog::Handle& OSLogger::handle(std::string_view subsystem, std::string_view category) {
  std::string key;
  key.reserve(subsystem.size() + 1 + category.size());
  key.append(subsystem).append(1, '-').append(category);

  const detail::LockGuard guard(lock_);
  const auto found = logs_.find(key);
  if (found != logs_.end()) return found->second;
  // Handles are never removed, so the reference outlives the lock.
  return logs_.emplace(std::move(key), systemLog_->handle(subsystem, category)).first->second;
}

}  // namespace orvo
