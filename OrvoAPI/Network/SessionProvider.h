#pragma once

#include <OrvoAPI/Futures/Future.h>

#include <string>

namespace orvo {

/// Provides the session's token. Called from any thread; shared.
class SessionProvider {
 public:
  virtual ~SessionProvider() = default;

  /// The token of the current session, without waiting for a fresh one.
  [[nodiscard]] virtual std::string currentToken() const = 0;
  /// A token that is fresh enough to use; opens a new session first when there is none.
  [[nodiscard]] virtual Future<std::string> retrieveSessionToken() = 0;
  /// Opens a new session now. True once its token is in place, false when the server would not give
  /// one.
  [[nodiscard]] virtual Future<bool> updateSession() = 0;
};

}  // namespace orvo
