#pragma once

#include <OrvoAPI/Futures/Future.h>

#include <chrono>
#include <stdexcept>

namespace orvo {

/// How long a test waits for what must come; it is there for a fault to end a test.
inline constexpr std::chrono::seconds kPatience{30};

/// What the future fails with; a success or a pending future fails the test by throwing.
template <class T>
AnyError errorOf(const Future<T>& future) {
  const auto result = future.wait(kPatience);
  return result.error() != nullptr ? *result.error() : throw std::runtime_error("no error");
}

template <class Case, class Enumeration = typename Case::Enumeration>
const Case* caseOf(const AnyError& error) {
  const auto* const whole = error.as<Enumeration>();
  return whole != nullptr ? whole->template as<Case>() : nullptr;
}

}  // namespace orvo
