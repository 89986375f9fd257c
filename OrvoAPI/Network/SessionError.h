#pragma once

#include <concepts>
#include <string>
#include <variant>

namespace orvo {

/// An answer of the server that an authorised request cannot recover from. A value.
class SessionError {
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

  template <class Case>
  requires std::same_as<typename Case::Enumeration, SessionError> SessionError(
      Case value)  // NOLINT(google-explicit-constructor): a case is its enumeration
      : value_(value) {}

  /// The payload when it is this case, else null.
  template <class Case>
  [[nodiscard]] const Case* as() const {
    return std::get_if<Case>(&value_);
  }
  template <class Case>
  [[nodiscard]] bool is() const {
    return as<Case>() != nullptr;
  }

  [[nodiscard]] std::string description() const;

  friend bool operator==(const SessionError&, const SessionError&) = default;

 private:
  std::variant<unexpectedStatus, couldNotUpdateSession> value_;
};

}  // namespace orvo
