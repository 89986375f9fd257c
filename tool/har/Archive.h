#pragma once

#include <OrvoAPI/Base/Date.h>
#include <OrvoAPI/Futures/Result.h>
#include <OrvoAPI/HTTP/HTTPURLResponse.h>
#include <OrvoAPI/HTTP/URLRequest.h>
#include <tool/ServiceChoice.h>

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace orvo::tool {

/// A request that was recorded.
struct Exchange {
  URLRequest request;
  /// When it was sent, on both clocks.
  Date date;
  std::chrono::steady_clock::time_point begun;
  /// Nothing when it had not ended when the recording did.
  std::optional<Result<HTTPResult>> result = std::nullopt;
  std::chrono::steady_clock::time_point ended = {};
  /// Bytes of the body if there was no room for it.
  std::size_t leftOut = 0;
};

/// What a recording has to know of its run for the same to be asked for again.
struct RecordedRun {
  ServiceChoice service{};
  Date moment{};
  /// The device's zone, as the variable `TZ` names it.
  std::string timeZone{};
  /// Of the command line.
  std::vector<std::string> words{};
};

/// The exchanges as an HTTP Archive 1.2, disguised: an entry for each request and for each redirect
/// that was followed, and the run as the member `_orvo` of its log.
[[nodiscard]] std::string archiveText(const RecordedRun& run,
                                      const std::vector<Exchange>& exchanges);

}  // namespace orvo::tool
