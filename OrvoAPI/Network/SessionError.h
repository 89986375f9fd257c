#pragma once

#include <OrvoAPI/Futures/detail/ErrorEnumeration.h>

#include <string>
#include <utility>
#include <variant>

namespace orvo {

/// An answer from the server that an authorised request cannot recover from. A value.
class SessionError : public detail::ErrorEnumeration<SessionError> {
 public:
  /// The HTTP status was 400 or above.
  struct unexpectedStatus {
    using Enumeration = SessionError;
    int status;
    friend bool operator==(const unexpectedStatus&, const unexpectedStatus&) = default;
  };
  /// The token was refused, and so was a new session.
  struct couldNotUpdateSession {
    using Enumeration = SessionError;
    friend bool operator==(const couldNotUpdateSession&, const couldNotUpdateSession&) = default;
  };

  template <detail::CaseOf<SessionError> Case>
  SessionError(Case value)  // NOLINT(google-explicit-constructor): a case is its enumeration
      : value_(std::move(value)) {}

  [[nodiscard]] std::string description() const;

  friend bool operator==(const SessionError& lhs, const SessionError& rhs) {
    return lhs.value_ == rhs.value_;
  }

 private:
  friend detail::ErrorEnumeration<SessionError>;
  std::variant<unexpectedStatus, couldNotUpdateSession> value_;
};

}  // namespace orvo
