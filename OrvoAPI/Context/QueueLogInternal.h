#pragma once

#include <OrvoAPI/Logging/Logger.h>

#include <memory>

namespace orvo::detail {

/// Sends the warnings about the process's queues to the logger as long as it lives, at level
/// warning, subsystem "queues". All loggers that were given receive them; a `LoggingService` when
/// none is left, or when only null was given.
void logQueueWarningsTo(const std::shared_ptr<Logger>& logger);

}  // namespace orvo::detail
