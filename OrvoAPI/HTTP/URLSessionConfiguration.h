#pragma once

#include <OrvoAPI/HTTP/URLInterceptor.h>

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace orvo {

/// The settings of a URL session. Every session is ephemeral: cookies in memory only, no cache, no
/// stored credentials. A value.
struct URLSessionConfiguration {
  /// Far more than the service sends, and little enough for devices with little memory.
  static constexpr std::size_t kDefaultMaximumBodySize = std::size_t{16} << 20;

  /// Interceptors, asked in this order before a request goes to the network.
  std::vector<std::shared_ptr<URLInterceptor>> protocolClasses = {};
  /// Connections to one host that the session uses at a time; requests beyond them wait. HTTP/2
  /// carries that many requests on one connection, or 16 if that is more.
  unsigned maximumConnectionsPerHost = 10;
  /// Bytes of a body, decoded, beyond which an answer fails with `URLError` -1103.
  std::size_t maximumBodySize = kDefaultMaximumBodySize;
  /// Bytes of a response's header fields, beyond which it fails the same way.
  std::size_t maximumHeaderSize = std::size_t{64} << 10;
  /// A file of PEM certificates to trust instead of the system's; else the one that the environment
  /// variable SSL_CERT_FILE names, if it is set.
  std::optional<std::string> certificateAuthorityFile = std::nullopt;
  /// Lets libcurl append the keys of TLS connections to the file that the environment variable
  /// SSLKEYLOGFILE names, for debugging. On a connection that another session has opened, that
  /// session's choice holds.
  bool writesKeyLog = false;
  /// Adds a `RequestTimeline` to each result and each transport error. The bootstrap sets it for a
  /// context that reports its requests.
  bool measuresRequests = false;
};

}  // namespace orvo
