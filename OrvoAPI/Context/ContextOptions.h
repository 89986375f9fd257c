#pragma once

#include <OrvoAPI/Logging/Logger.h>
#include <OrvoAPI/Platform/Clock.h>
#include <OrvoAPI/Queues/DispatchQueue.h>

#include <functional>
#include <memory>

namespace orvo {

struct DocumentLoss;
struct RequestReport;

/// What a context may be given besides what it needs.
struct ContextOptions {
  /// Takes the library's diagnostics; a `LoggingService` when there is none.
  std::shared_ptr<Logger> logger = nullptr;
  /// Where caches and tokens learn their age; the system's clocks when there is none.
  std::shared_ptr<const Clock> clock = nullptr;
  /// Pixels per point of the display, for the sizes of images.
  double displayScale = 1;
  /// Is handed a report, of <OrvoAPI/Context/RequestReport.h>, of each fetch that ends: with a
  /// value from the cache, with an error or cancelled too; and of each request that opens a session
  /// or loads the configuration. It neither delays nor changes what it is told about; what it
  /// throws is dropped, and so is a report that there is no memory for.
  std::function<void(const RequestReport&)> onReport = nullptr;
  /// Has the logger take a line for each such report, with level info, or warning for a failure;
  /// subsystem "network", category "requests".
  bool logsRequests = false;
  /// Is handed each loss, of <OrvoAPI/Parsing/DocumentLoss.h>, of a document that was fetched: what
  /// cannot be used, or the member it fails for; before the fetch's report, and as that is: it
  /// changes nothing, and what it throws is dropped. A document with losses takes the time to find
  /// their places in it. A value from the cache loses nothing again.
  std::function<void(const DocumentLoss&)> onLoss = nullptr;
  /// Where the observers and the logger are called then; when there is none, on the global queue,
  /// one report after another, of all contexts, so that one that never returns keeps back all
  /// others. Posted to by whatever ends a fetch, also by letting go of its last future.
  std::shared_ptr<DispatchQueue> reportQueue = nullptr;
};

}  // namespace orvo
