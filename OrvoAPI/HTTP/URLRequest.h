#pragma once

#include <OrvoAPI/Base/Data.h>
#include <OrvoAPI/HTTP/HTTPHeaders.h>
#include <OrvoAPI/HTTP/URL.h>

#include <chrono>
#include <string>

namespace orvo {

/// What a request says about caches. There is no HTTP cache on the device, so only the last one
/// changes what is sent.
enum class CachePolicy {
  useProtocolCachePolicy,
  reloadIgnoringLocalCacheData,
  /// Also asks caches on the network to revalidate (`Cache-Control: no-cache`, `Pragma`).
  reloadIgnoringLocalAndRemoteCacheData,
};

/// One HTTP request. A value; not thread-safe.
struct URLRequest {
  /// Absolute, http or https; a fragment is not sent.
  URL url;
  std::string method = "GET";
  /// A carriage return, line feed or NUL in a field fails the request with `URLError` -1000.
  HTTPHeaders headers = {};
  Data body = {};
  CachePolicy cachePolicy = CachePolicy::useProtocolCachePolicy;
  /// The idle timeout: connecting, and then each byte of a header or a body, sent or received,
  /// restarts it. A response's header has to be complete within four times that. Waiting for a free
  /// connection or for a decision about a redirect does not count. Zero: no limit. The default is
  /// 60 seconds.
  std::chrono::milliseconds timeoutInterval{60'000};
  /// The deadline for the whole request, including the wait for a free connection, interceptors,
  /// decisions about redirects, and the redirects themselves (what a delegate writes here is
  /// ignored). After it the request fails with `URLError` -1001. Zero: no limit. The default is 10
  /// minutes.
  std::chrono::milliseconds totalTimeoutInterval{600'000};
};

}  // namespace orvo
