#pragma once

#include <OrvoAPI/HTTP/HTTPURLResponse.h>
#include <OrvoAPI/HTTP/URLError.h>
#include <OrvoAPI/HTTP/URLRequest.h>

#include <functional>
#include <memory>

namespace orvo {

/// A request that an interceptor handles: it answers now or later, from any thread. Thread-safe.
/// The first answer counts; dropped unanswered, the request fails with `URLError` -1.
class InterceptedRequest {
 public:
  virtual ~InterceptedRequest() = default;

  /// Answers as a server would: a redirecting response with a Location is followed, or not, like
  /// one from the network.
  virtual void respond(HTTPURLResponse response, Data body = {}) = 0;
  virtual void fail(URLError error) = 0;

  /// Calls `task` on the session's queue when the request is cancelled, or runs out of time, before
  /// it was answered; at most one task is kept.
  virtual void onCancel(std::function<void()> task) = 0;
};

/// Sees requests before they go to the network, and may answer them: to stub, to observe, to serve
/// other schemes. A session asks its interceptors in order, for each request and again for each
/// redirect that it follows, on its serial queue. Shared by the sessions that it is given to, which
/// may call it concurrently.
class URLInterceptor {
 public:
  virtual ~URLInterceptor() = default;

  /// Returns true to take the request: neither a later interceptor nor the network sees it, and it
  /// is answered through `intercepted`. False lets it go by; an answer given before is then
  /// ignored. Must not block.
  virtual bool intercept(const URLRequest& request,
                         const std::shared_ptr<InterceptedRequest>& intercepted) = 0;
};

}  // namespace orvo
