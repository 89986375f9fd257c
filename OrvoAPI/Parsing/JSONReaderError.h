#pragma once

#include <string>

namespace orvo {

/// What the JSON reader itself refuses, before any shape or key is asked for. A value.
struct JSONReaderError {
  /// Why the body was refused.
  enum class Code {
    /// Not JSON: a syntax error, or something after the end.
    malformed,
    /// No bytes, or nothing but white space.
    empty,
    /// The bytes are not UTF-8.
    invalidEncoding,
    /// A string with a bad escape, half of a surrogate pair or a raw control character, or without
    /// its end.
    invalidString,
    /// A number that is malformed or beyond a double.
    invalidNumber,
    /// Nested deeper than 1,024 levels.
    tooDeep,
    /// More bytes than the reader can address (4 GiB).
    tooLarge,
    /// The memory for the document was refused.
    outOfMemory,
  };

  Code code = Code::malformed;
  /// For people; it holds nothing of the body.
  std::string message;

  [[nodiscard]] std::string description() const;

  /// Equal by code; the message is only an explanation.
  friend bool operator==(const JSONReaderError& lhs, const JSONReaderError& rhs) {
    return lhs.code == rhs.code;
  }
};

}  // namespace orvo
