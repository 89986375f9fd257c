#pragma once

#include <OrvoAPI/Futures/Result.h>
#include <OrvoAPI/Parsing/JSONValue.h>

#include <string>

namespace orvo {

/// An API session. A value.
struct Session {
  /// Opaque; the value of the Authorization header, as it stands.
  std::string token;

  friend bool operator==(const Session&, const Session&) = default;
};

/// Reads a session. Stateless; may be called from any thread.
struct SessionParser {
  /// Fails with `JSONParseError::unableToParse`, whose value is the whole document.
  [[nodiscard]] static Result<Session> parse(const JSONObject& json);
};

}  // namespace orvo
