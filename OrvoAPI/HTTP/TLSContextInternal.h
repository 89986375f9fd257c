#pragma once

#include <curl/curl.h>

namespace orvo::detail {

/// Sets what libcurl has no setting for in the TLS of the handle's connections: their keys are not
/// written to the file that the environment names for them, unless they may be, and a server cannot
/// choose a Diffie-Hellman group in which the network thread would compute for seconds. Only where
/// libcurl is built with OpenSSL.
void prepareTLS(CURL* handle, bool writesKeyLog);

}  // namespace orvo::detail
