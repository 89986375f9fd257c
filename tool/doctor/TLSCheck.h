#pragma once

#include <OrvoAPI/Base/Date.h>
#include <tool/doctor/Finding.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace orvo::tool {

/// What a server's certificate says of itself.
struct CertificateFacts {
  std::string issuer{};
  std::vector<std::string> names{};
  Date validFrom = Date(0);
  Date validTo = Date(0);
};

/// What came of a handshake.
struct Handshake {
  /// `TLSv1.3`; empty when none was done.
  std::string version{};
  std::optional<CertificateFacts> certificate{};
  /// OpenSSL's result of verifying it, X509_V_OK if it can be trusted.
  long verdict = 0;
  /// Why there is none: what people make of it, and what to do.
  std::string error{};
  std::string advice{};
};

/// Shakes hands as the library would, but with any certificate, and says nothing then.
[[nodiscard]] Handshake shakeHands(int socket, const std::string& host,
                                   std::chrono::milliseconds limit);

/// What it means for whoever looks at a clock that says `now`.
[[nodiscard]] Finding tlsFinding(const Handshake& handshake, const std::string& host, Date now);

/// `the device's clock says 1970: set it`, if it says a time before this program was made.
[[nodiscard]] std::string clockAdvice(Date now);

}  // namespace orvo::tool
