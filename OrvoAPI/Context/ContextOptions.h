#pragma once

#include <OrvoAPI/Logging/Logger.h>
#include <OrvoAPI/Platform/Clock.h>

#include <memory>

namespace orvo {

/// What a context may be given besides what it needs.
struct ContextOptions {
  /// Takes the library's diagnostics; a `LoggingService` when there is none.
  std::shared_ptr<Logger> logger = nullptr;
  /// Where caches and tokens learn their age; the system's clocks when there is none.
  std::shared_ptr<const Clock> clock = nullptr;
  /// Pixels per point of the display, for the sizes of images.
  double displayScale = 1;
};

}  // namespace orvo
