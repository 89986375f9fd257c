#pragma once

#include <OrvoAPI/Logging/Logger.h>

#include <memory>

namespace orvo::detail {

/// Has the logger take what there is to say about the process's queues, level warning, subsystem
/// "queues", until another is named; a `LoggingService` when it is null or has gone by then.
void logQueueWarningsTo(const std::shared_ptr<Logger>& logger);

}  // namespace orvo::detail
