#pragma once

#include <OrvoAPI/HTTP/URLError.h>

#include <curl/curl.h>

namespace orvo::detail {

/// The error of a transfer that ended with `code`, which is not success.
[[nodiscard]] URLError urlError(CURL* transfer, CURLcode code);

}  // namespace orvo::detail
