#pragma once

#include <OrvoAPI/HTTP/HTTPHeaders.h>
#include <OrvoAPI/HTTP/URLError.h>

#include <optional>

namespace orvo::detail {

/// What is wrong with the lengths that a header announces for its body, read strictly: each a
/// number that fits into 63 bits, and all the same. libcurl takes the digits that a value begins
/// with and the last of several values, and reads to the end of the connection when a number is too
/// large, so that an answer would seem shorter or longer than it is.
[[nodiscard]] std::optional<URLError> faultOfContentLength(const HTTPHeaders& headers);

}  // namespace orvo::detail
