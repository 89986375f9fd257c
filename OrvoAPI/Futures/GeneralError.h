#pragma once

#include <OrvoAPI/Futures/AnyError.h>
#include <OrvoAPI/Futures/detail/ErrorEnumeration.h>

#include <string>
#include <utility>
#include <variant>

namespace orvo {

/// Failures that are not specific to one part of the library. A value.
class GeneralError : public detail::ErrorEnumeration<GeneralError> {
 public:
  /// A transform given to `Future::map` failed with this error.
  struct underlying {
    using Enumeration = GeneralError;
    AnyError error;
  };
  /// The action cannot be carried out here, such as a blocking wait on a thread that must not
  /// block.
  struct unableToPerformAction {
    using Enumeration = GeneralError;
  };
  /// `Future::validate` rejected a value.
  struct elementNotFound {
    using Enumeration = GeneralError;
  };

  template <detail::CaseOf<GeneralError> Case>
  GeneralError(Case value)  // NOLINT(google-explicit-constructor): a case is its enumeration
      : value_(std::move(value)) {}

  [[nodiscard]] std::string description() const;

 private:
  friend detail::ErrorEnumeration<GeneralError>;
  std::variant<underlying, unableToPerformAction, elementNotFound> value_;
};

}  // namespace orvo
