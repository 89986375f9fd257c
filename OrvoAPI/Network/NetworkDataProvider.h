#pragma once

#include <OrvoAPI/Futures/Future.h>
#include <OrvoAPI/HTTP/HTTPURLResponse.h>
#include <OrvoAPI/HTTP/URLRequest.h>

namespace orvo {

/// Sends requests: the one way to the network. Called from any thread. Shared by those that fetch.
class NetworkDataProvider {
 public:
  virtual ~NetworkDataProvider() = default;

  /// Sends the request as it is given. An answer of any status is a success; only a transport
  /// failure fails the future, with `URLError`. Cancelling the future aborts the transfer.
  [[nodiscard]] virtual Future<HTTPResult> fetch(const URLRequest& request) = 0;
};

}  // namespace orvo
