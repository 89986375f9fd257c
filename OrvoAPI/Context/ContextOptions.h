#pragma once

#include <OrvoAPI/Logging/Logger.h>
#include <OrvoAPI/Platform/Clock.h>
#include <OrvoAPI/Queues/DispatchQueue.h>

#include <functional>
#include <memory>

namespace orvo {

struct DocumentLoss;
struct RequestReport;

/// Optional settings of a context. A value.
struct ContextOptions {
  /// Receives the library's diagnostics; a `LoggingService` when null.
  std::shared_ptr<Logger> logger = nullptr;
  /// Measures the age of cached values and tokens; the system's clocks when null.
  std::shared_ptr<const Clock> clock = nullptr;
  /// Pixels per point of the display, for the sizes of images.
  double displayScale = 1;
  /// Called with a report (<OrvoAPI/Context/RequestReport.h>) of each fetch that ends, also from
  /// the cache, with an error or cancelled, and of each request that opens a session or loads the
  /// configuration. It neither delays nor changes the fetch. Exceptions that it throws are ignored;
  /// a report for which memory is refused is skipped.
  std::function<void(const RequestReport&)> onReport = nullptr;
  /// Logs a line for each such report, at level info, or warning for a failure; subsystem
  /// "network", category "requests".
  bool logsRequests = false;
  /// Called with each loss (<OrvoAPI/Parsing/DocumentLoss.h>) of a fetched document: what cannot be
  /// used, or the member for which the document fails. It is called before the fetch's report and
  /// under the same rules. A document with losses costs the time to locate them. Values from the
  /// cache report none again.
  std::function<void(const DocumentLoss&)> onLoss = nullptr;
  /// The queue on which these observers and the logger are called. When null: the global queue, one
  /// report after another for all contexts, so that an observer that never returns holds up all
  /// others. Whatever ends a fetch posts to it, also the release of its last future.
  std::shared_ptr<DispatchQueue> reportQueue = nullptr;
};

}  // namespace orvo
