#pragma once

#include <memory>
#include <string>

namespace orvo {

struct RequestTimeline;

/// A transport failure with the classic URL error code. A value.
struct URLError {
  static constexpr int unknown = -1;
  static constexpr int cancelled = -999;
  static constexpr int badURL = -1000;
  static constexpr int timedOut = -1001;
  static constexpr int unsupportedURL = -1002;
  static constexpr int cannotFindHost = -1003;
  static constexpr int cannotConnectToHost = -1004;
  static constexpr int networkConnectionLost = -1005;
  static constexpr int httpTooManyRedirects = -1007;
  static constexpr int notConnectedToInternet = -1009;
  static constexpr int redirectToNonExistentLocation = -1010;
  static constexpr int badServerResponse = -1011;
  static constexpr int cannotDecodeRawData = -1015;
  static constexpr int dataLengthExceedsMaximum = -1103;
  static constexpr int secureConnectionFailed = -1200;
  static constexpr int serverCertificateHasBadDate = -1201;
  static constexpr int serverCertificateUntrusted = -1202;
  static constexpr int serverCertificateHasUnknownRoot = -1203;
  static constexpr int serverCertificateNotYetValid = -1204;
  static constexpr int clientCertificateRejected = -1205;
  static constexpr int clientCertificateRequired = -1206;

  int code = unknown;
  /// For developers. It never contains a URL, since a stream's address contains the session's
  /// token.
  std::string message = {};
  /// How far the request came (<OrvoAPI/HTTP/RequestTimeline.h>); null unless the session measures
  /// requests. Its redirects contain URLs.
  std::shared_ptr<const RequestTimeline> timeline = nullptr;

  [[nodiscard]] std::string description() const;

  /// Equal by code; the message is only an explanation.
  friend bool operator==(const URLError& lhs, const URLError& rhs) { return lhs.code == rhs.code; }
};

}  // namespace orvo
