#pragma once

#include <OrvoAPI/Queues/detail/QueuePatience.h>

#include <string_view>

namespace orvo::detail {

/// Receives warnings for the app's developers about how they use the queues. Called on a worker.
using QueueWarningSink = void (*)(std::string_view category, std::string_view message);

void setQueueWarningSink(QueueWarningSink sink) noexcept;

/// Has a worker hand the text, which lives as long as the process, to the sink. False when there is
/// none yet, or no memory. From any thread.
bool warnOfQueue(std::string_view category, std::string_view message) noexcept;

[[nodiscard]] QueuePatience queuePatience() noexcept;

}  // namespace orvo::detail
