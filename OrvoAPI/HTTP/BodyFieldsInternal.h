#pragma once

#include <OrvoAPI/HTTP/HTTPHeaders.h>
#include <OrvoAPI/HTTP/URLError.h>

#include <optional>

namespace orvo::detail {

/// What is wrong with what a header says of its body, where libcurl is less strict than those who
/// may stand between: a `Content-Length` that is no number or contradicts another, or more than one
/// coding, each of which could blow up what the next has to decode without a byte coming out in the
/// end. `codings` counts those of an exchange: libcurl also applies those of interim responses.
[[nodiscard]] std::optional<URLError> faultOfBodyFields(const HTTPHeaders& headers,
                                                        unsigned& codings);

}  // namespace orvo::detail
