#pragma once

#include <OrvoAPI/HTTP/URLSessionConfiguration.h>
#include <OrvoAPI/Network/NetworkDataProvider.h>
#include <OrvoAPI/Network/URLSessionDelegate.h>

#include <memory>

namespace orvo {

namespace detail {
class URLSessionCore;
}

/// Fetches over HTTP/1.1 and 2, with cookies of its own and on connections that it shares with the
/// sessions that trust the same authorities. Thread-safe. Destroying it cancels nothing: requests
/// in flight keep what they need, and the last one ends the session.
///
/// Redirects (301, 302, 303, 307, 308 with a Location) are followed, with the delegate's consent,
/// up to 20 times; never from https to http, nor to another scheme: then the redirect itself is the
/// answer. The proxy that the environment names is used. Interceptors and the delegate are asked on
/// a serial queue of the session's own.
///
/// In a child process that was forked, without exec(), from one in which the library's threads run,
/// every fetch fails at once with `URLError` -1.
class URLSession final : public NetworkDataProvider {
 public:
  explicit URLSession(URLSessionConfiguration configuration = {},
                      std::shared_ptr<URLSessionDelegate> delegate = nullptr);
  ~URLSession() override;
  URLSession(const URLSession&) = delete;
  URLSession& operator=(const URLSession&) = delete;

  [[nodiscard]] Future<HTTPResult> fetch(const URLRequest& request) override;

  /// Fails all requests in flight, and all later ones, with `URLError` -999.
  void invalidateAndCancel();

  /// For apps that learn that the device's network or address has changed: no session sends a new
  /// request on a connection that is older than this call, and names are resolved anew. Requests in
  /// flight continue. Without this call a broken path is detected by the first request that times
  /// out, or after the device has slept.
  static void networkChanged();

 private:
  const std::shared_ptr<detail::URLSessionCore> core_;
};

}  // namespace orvo
