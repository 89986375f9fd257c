#pragma once

#include <OrvoAPI/HTTP/HTTPURLResponse.h>
#include <OrvoAPI/HTTP/URLRequest.h>

#include <functional>
#include <optional>

namespace orvo {

/// Decides about a URL session's redirects. Called on the session's serial queue; must not block.
/// The session holds it.
class URLSessionDelegate {
 public:
  /// Takes the request to follow the redirect with, or nothing to refuse it. May be called from any
  /// thread, now or later; the first call counts. Dropped uncalled it refuses.
  using RedirectCompletion = std::function<void(std::optional<URLRequest>)>;

  virtual ~URLSessionDelegate() = default;

  /// A redirect is about to be followed. `newRequest` is what would be sent: without a fragment and
  /// the header fields Authorization, Host and (to another host) Cookie. `originalRequest` is what
  /// the caller sent, before all redirects. A refused redirect's response is the answer.
  virtual void willPerformHTTPRedirection(const HTTPURLResponse& response,
                                          const URLRequest& newRequest,
                                          const URLRequest& originalRequest,
                                          RedirectCompletion completionHandler) = 0;
};

}  // namespace orvo
