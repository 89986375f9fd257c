#include <OrvoAPI/Testing/StubSessionProvider.h>

namespace orvo {

std::string StubSessionProvider::currentToken() const {
  return tokens_.with([](const Tokens& tokens) { return tokens.current; });
}

Future<std::string> StubSessionProvider::retrieveSessionToken() {
  const auto future = retrievals.add();
  auto [token, held] = tokens_.with([](const Tokens& tokens) { return tokens; });
  if (!held) future.success(std::move(token));
  return future;
}

Future<bool> StubSessionProvider::updateSession() { return updates.add(); }

void StubSessionProvider::setToken(std::string token) {
  tokens_.with([&](Tokens& tokens) { tokens.current = std::move(token); });
}

void StubSessionProvider::holdTokens() {
  tokens_.with([](Tokens& tokens) { tokens.held = true; });
}

}  // namespace orvo
