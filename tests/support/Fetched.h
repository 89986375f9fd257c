#pragma once

#include <OrvoAPI/Futures/Future.h>
#include <OrvoAPI/Platform/HTTPURLResponse.h>
#include <OrvoAPI/Platform/URLError.h>
#include <tests/support/Outcome.h>

#include <string>

namespace orvo::test {

/// The status of the answer, or the negative code of the `URLError`; 0 for any other failure.
inline int codeOf(const Result<HTTPResult>& result) {
  if (const auto* const success = result.value()) return success->response.statusCode;
  const auto* const error = result.error()->as<URLError>();
  return error != nullptr ? error->code : 0;
}
inline int codeOf(const Future<HTTPResult>& future) { return codeOf(future.wait(kPatience)); }

/// The answer's body, or what went wrong.
inline std::string bodyOf(const Future<HTTPResult>& future) {
  const auto result = future.wait(kPatience);
  return result.failed() ? result.error()->description() : std::string(result.value()->body.view());
}

}  // namespace orvo::test
