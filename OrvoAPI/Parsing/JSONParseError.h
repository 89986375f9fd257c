#pragma once

#include <OrvoAPI/Futures/Result.h>
#include <OrvoAPI/Futures/detail/ErrorEnumeration.h>
#include <OrvoAPI/Parsing/JSONValue.h>

#include <string>
#include <string_view>
#include <utility>
#include <variant>

namespace orvo {

/// A document that was read but is not what a parser wants. A value.
class JSONParseError : public detail::ErrorEnumeration<JSONParseError> {
 public:
  /// A model's required key is missing or of the wrong kind.
  struct unableToParse {
    using Enumeration = JSONParseError;
    /// The name of the model, such as "Video".
    std::string type;
    /// The failing key, or the value that was given to the parser; it shares its document.
    std::variant<std::string, JSONValue> value;

    /// The failing key, or null when the payload is a value.
    [[nodiscard]] const std::string* key() const { return std::get_if<std::string>(&value); }
    /// Values are equal when their JSON text is.
    friend bool operator==(const unableToParse& lhs, const unableToParse& rhs);
  };
  /// The top level of the document is not of the requested shape.
  struct unexpectedType {
    using Enumeration = JSONParseError;
    friend bool operator==(const unexpectedType&, const unexpectedType&) = default;
  };

  template <detail::CaseOf<JSONParseError> Case>
  JSONParseError(Case value)  // NOLINT(google-explicit-constructor): a case is its enumeration
      : value_(std::move(value)) {}

  /// Case, type and key. A payload that is a value is left out: it may hold a session's token.
  [[nodiscard]] std::string description() const;

  friend bool operator==(const JSONParseError& lhs, const JSONParseError& rhs) {
    return lhs.value_ == rhs.value_;
  }

 private:
  friend detail::ErrorEnumeration<JSONParseError>;
  std::variant<unableToParse, unexpectedType> value_;
};

/// A parser's failure for a required key: `return unableToParse("Video", "title");`
[[nodiscard]] Failure unableToParse(std::string_view type, std::string_view key);

}  // namespace orvo
