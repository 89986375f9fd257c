#pragma once

#include <OrvoAPI/Futures/Future.h>
#include <OrvoAPI/HTTP/HTTPURLResponse.h>
#include <OrvoAPI/HTTP/URLError.h>
#include <gtest/gtest.h>
#include <tests/support/Token.h>

#include <chrono>
#include <stdexcept>
#include <string>

namespace orvo {

/// How long a test waits for what must come; it is there for a fault to end a test.
inline constexpr std::chrono::seconds kPatience{30};

/// The error, which must not tell the session's token.
inline const AnyError& discreet(const AnyError& error) {
  EXPECT_EQ(error.description().find(kToken), std::string::npos) << error.description();
  return error;
}

/// What the future fails with; a success or a pending future fails the test by throwing.
template <class T>
AnyError errorOf(const Future<T>& future) {
  const auto result = future.wait(kPatience);
  if (result.error() == nullptr) throw std::runtime_error("no error");
  return discreet(*result.error());
}

template <class Case, class Enumeration = typename Case::Enumeration>
const Case* caseOf(const AnyError& error) {
  const auto* const whole = error.as<Enumeration>();
  return whole != nullptr ? whole->template as<Case>() : nullptr;
}

namespace test {

/// The status of the answer, or the negative code of the `URLError`; 0 for any other failure.
inline int codeOf(const Result<HTTPResult>& result) {
  if (const auto* const success = result.value()) return success->response.statusCode;
  const auto* const error = discreet(*result.error()).as<URLError>();
  return error != nullptr ? error->code : 0;
}
inline int codeOf(const Future<HTTPResult>& future) { return codeOf(future.wait(kPatience)); }

/// The answer's body, or what went wrong.
inline std::string bodyOf(const Future<HTTPResult>& future) {
  const auto result = future.wait(kPatience);
  return result.failed() ? discreet(*result.error()).description()
                         : std::string(result.value()->body.view());
}

}  // namespace test
}  // namespace orvo
