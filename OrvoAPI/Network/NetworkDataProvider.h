#pragma once

#include <OrvoAPI/Futures/Future.h>
#include <OrvoAPI/HTTP/HTTPURLResponse.h>
#include <OrvoAPI/HTTP/URLRequest.h>

namespace orvo {

/// Sends requests: all of a context's network traffic goes through it. Called from any thread;
/// shared.
class NetworkDataProvider {
 public:
  virtual ~NetworkDataProvider() = default;

  /// Sends the request as it is given. An answer of any status is a success; only a transport
  /// failure fails the future, with `URLError`. Cancelling the future aborts the transfer.
  [[nodiscard]] virtual Future<HTTPResult> fetch(const URLRequest& request) = 0;
};

}  // namespace orvo
