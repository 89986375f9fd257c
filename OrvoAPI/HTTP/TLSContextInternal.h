#pragma once

#include <curl/curl.h>

namespace orvo::detail {

/// Sets what libcurl has no setting for in the TLS of the handle's connections: their keys are not
/// written to the file that the environment names for them, unless they may be, and a server cannot
/// choose a Diffie-Hellman group in which the network thread would compute for seconds. Only where
/// libcurl is built with OpenSSL.
void prepareTLS(CURL* handle, bool writesKeyLog);

/// The system's folder of authorities, where OpenSSL finds each by its hash: the first connection
/// need not read all of them then. Null when there is none, or when it does not hold all that are
/// in the system's file. Looked at once, on the network thread.
[[nodiscard]] const char* hashedAuthorityFolder();

}  // namespace orvo::detail
