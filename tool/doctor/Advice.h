#pragma once

#include <OrvoAPI/Base/Date.h>
#include <OrvoAPI/Futures/AnyError.h>
#include <OrvoAPI/HTTP/HTTPURLResponse.h>

#include <optional>
#include <string>

namespace orvo::tool {

/// What to do about a request that failed.
[[nodiscard]] std::string adviceFor(const AnyError& error);

[[nodiscard]] std::string adviceForStatus(int status);
/// What to do about a proxy that answers instead of the service.
[[nodiscard]] std::string adviceForProxy();

/// What is wrong with an answer, and what to do.
struct Complaint {
  std::string detail;
  std::string advice;
};

/// Nothing when it may be the service's: neither a refusal nor a page for people. `isProxied`:
/// whether the environment names a proxy; `asked`: the host that the request was for.
[[nodiscard]] std::optional<Complaint> complaintAbout(const HTTPResult& answer, bool isProxied,
                                                      std::string_view asked);

/// When the answer was made, as its field Date says.
[[nodiscard]] std::optional<Date> dateOf(const HTTPURLResponse& response);

}  // namespace orvo::tool
