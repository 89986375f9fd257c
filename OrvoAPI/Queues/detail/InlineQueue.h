#pragma once

#include <OrvoAPI/Queues/DispatchQueue.h>

#include <memory>

namespace orvo::detail {

/// Runs each job within `post`, on the thread that completes a future: what is done there is done
/// before any callback that was registered later is posted. Only for jobs of the library's own,
/// which neither block nor run foreign code. Lives as long as the process.
[[nodiscard]] std::shared_ptr<DispatchQueue> inlineQueue();

}  // namespace orvo::detail
