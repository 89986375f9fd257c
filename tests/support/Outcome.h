#pragma once

#include <OrvoAPI/Futures/Future.h>
#include <OrvoAPI/HTTP/HTTPURLResponse.h>
#include <OrvoAPI/HTTP/URLError.h>
#include <OrvoAPI/Logging/Logger.h>
#include <tests/support/Test.h>

namespace orvo {

/// Every token of a session that a test uses holds this text, and so does every one of the demo
/// service. A test whose output shows it fails, by a property that it has in ctest.
inline const std::string kToken = "secret-token";

/// Prints what the library logs, for ctest to look at.
class PrintingLogger final : public Logger {
 public:
  void log(std::string_view message, LogLevel, std::string_view subsystem,
           std::string_view category) override {
    std::string line(subsystem);
    line.append(" ").append(category).append(": ").append(message).append("\n");
    std::fputs(line.c_str(), stdout);
  }
};

/// The result. None at all ends the test: it must not pass for a time-out of the library's.
template <class T>
Result<T> resultOf(const Future<T>& future) {
  const auto result = future.wait(kPatience);
  if (future.didComplete() || future.isCancelled()) return result;
  throw std::runtime_error("a future that is still pending after " +
                           std::to_string(kPatience.count()) + " s");
}

/// The error, which must not tell the session's token.
inline const AnyError& discreet(const AnyError& error) {
  EXPECT_EQ(error.description().find(kToken), std::string::npos) << error.description();
  return error;
}

/// The value; an error ends the test.
template <class T>
T valueOf(const Future<T>& future) {
  auto result = resultOf(future);
  if (result.failed()) throw std::runtime_error(discreet(*result.error()).description());
  return *std::move(result.value());
}

/// What the future fails with; a success ends the test.
template <class T>
AnyError errorOf(const Future<T>& future) {
  const auto result = resultOf(future);
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
inline int codeOf(const Future<HTTPResult>& future) { return codeOf(resultOf(future)); }

/// The answer's body, or what went wrong.
inline std::string bodyOf(const Future<HTTPResult>& future) {
  const auto result = resultOf(future);
  return result.failed() ? discreet(*result.error()).description()
                         : std::string(result.value()->body.view());
}

}  // namespace test
}  // namespace orvo
