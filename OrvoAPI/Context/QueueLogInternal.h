#pragma once

#include <OrvoAPI/Logging/Logger.h>

#include <memory>

namespace orvo::detail {

/// Has the logger, as long as it lives, take what there is to say about the process's queues, level
/// warning, subsystem "queues". All that were named take it; a `LoggingService` when none is left,
/// or when only null was named.
void logQueueWarningsTo(const std::shared_ptr<Logger>& logger);

}  // namespace orvo::detail
