#pragma once

#include <OrvoAPI/Futures/detail/ErrorEnumeration.h>

#include <string>
#include <utility>
#include <variant>

namespace orvo {

/// A text that is not a date in the expected format. A value.
class DateFormatError : public detail::ErrorEnumeration<DateFormatError> {
 public:
  /// The text does not match the expected pattern.
  struct stringDoesNotMatchFormat {
    using Enumeration = DateFormatError;
    /// The text as it was tried.
    std::string string;
    /// The date pattern that it was expected to match.
    std::string format;
    friend bool operator==(const stringDoesNotMatchFormat&,
                           const stringDoesNotMatchFormat&) = default;
  };

  template <detail::CaseOf<DateFormatError> Case>
  DateFormatError(Case value)  // NOLINT(google-explicit-constructor): a case is its enumeration
      : value_(std::move(value)) {}

  [[nodiscard]] std::string description() const;

  friend bool operator==(const DateFormatError& lhs, const DateFormatError& rhs) {
    return lhs.value_ == rhs.value_;
  }

 private:
  friend detail::ErrorEnumeration<DateFormatError>;
  std::variant<stringDoesNotMatchFormat> value_;
};

}  // namespace orvo
