#pragma once

#include <compare>
#include <concepts>
#include <string>
#include <utility>
#include <variant>

namespace orvo {

/// A text that is no date of the expected format. A value.
class DateFormatError {
 public:
  struct stringDoesNotMatchFormat {
    using Enumeration = DateFormatError;
    /// The text as it was tried.
    std::string string;
    /// The date pattern that it was expected to match.
    std::string format;
    friend bool operator==(const stringDoesNotMatchFormat&,
                           const stringDoesNotMatchFormat&) = default;
  };

  template <class Case>
  requires std::same_as<typename Case::Enumeration, DateFormatError> DateFormatError(
      Case value)  // NOLINT(google-explicit-constructor): a case is its enumeration
      : value_(std::move(value)) {}

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

  friend bool operator==(const DateFormatError&, const DateFormatError&) = default;

 private:
  std::variant<stringDoesNotMatchFormat> value_;
};

}  // namespace orvo
