#pragma once

#include <OrvoAPI/Futures/AnyError.h>

#include <string>
#include <variant>

namespace orvo {

/// The failures that belong to no single concern. A value.
class GeneralError {
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

  template <class Case>
  requires std::same_as<typename Case::Enumeration, GeneralError> GeneralError(
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

 private:
  std::variant<underlying, unableToPerformAction, elementNotFound> value_;
};

}  // namespace orvo
