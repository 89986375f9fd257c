#pragma once

#include <concepts>
#include <variant>

namespace orvo::detail {

/// A case of the enumeration `Error`, which it names.
template <class Case, class Error>
concept CaseOf = std::same_as<typename Case::Enumeration, Error>;

/// What errors with cases share: `Error` derives from it, befriends it, and holds a variant of its
/// cases in `value_`.
template <class Error>
class ErrorEnumeration {
 public:
  /// The payload when it is this case, else null.
  template <CaseOf<Error> Case>
  [[nodiscard]] const Case* as() const {
    return std::get_if<Case>(&static_cast<const Error*>(this)->value_);
  }
  template <CaseOf<Error> Case>
  [[nodiscard]] bool is() const {
    return as<Case>() != nullptr;
  }

 private:
  friend Error;
  ErrorEnumeration() = default;
};

}  // namespace orvo::detail
