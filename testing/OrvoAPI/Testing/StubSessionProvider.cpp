#include <OrvoAPI/Testing/StubSessionProvider.h>

namespace orvo {

std::string StubSessionProvider::currentToken() const {
  const std::lock_guard guard(lock_);
  return token_;
}

Future<std::string> StubSessionProvider::retrieveSessionToken() {
  const auto future = retrievals.add();
  std::unique_lock guard(lock_);
  if (!holdsTokens_) {
    auto token = token_;
    guard.unlock();
    future.success(std::move(token));
  }
  return future;
}

Future<bool> StubSessionProvider::updateSession() { return updates.add(); }

void StubSessionProvider::setToken(std::string token) {
  const std::lock_guard guard(lock_);
  token_ = std::move(token);
}

void StubSessionProvider::holdTokens() {
  const std::lock_guard guard(lock_);
  holdsTokens_ = true;
}

}  // namespace orvo
