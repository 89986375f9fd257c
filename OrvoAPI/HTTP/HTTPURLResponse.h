#pragma once

#include <OrvoAPI/Base/Data.h>
#include <OrvoAPI/HTTP/HTTPHeaders.h>
#include <OrvoAPI/HTTP/URL.h>

#include <memory>

namespace orvo {

struct RequestTimeline;

/// The head of an HTTP answer. A value; not thread-safe.
struct HTTPURLResponse {
  /// The URL that answered: after redirects, the last one.
  URL url;
  int statusCode = 0;
  HTTPHeaders headers = {};
};

/// An HTTP answer whatever its status: the response and its body, empty when there was none.
struct HTTPResult {
  HTTPURLResponse response;
  Data body = {};
  /// Declared in <OrvoAPI/HTTP/RequestTimeline.h>; null unless the session measures requests.
  std::shared_ptr<const RequestTimeline> timeline = nullptr;
};

}  // namespace orvo
