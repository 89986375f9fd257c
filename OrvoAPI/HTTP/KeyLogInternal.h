#pragma once

#include <curl/curl.h>

namespace orvo::detail {

/// Keeps libcurl from writing the keys of the handle's connections to the file that the environment
/// names for it. Only a libcurl built with OpenSSL can do either.
void forgoKeyLog(CURL* handle);

}  // namespace orvo::detail
