#pragma once

#include <OrvoAPI/Network/SessionProvider.h>
#include <OrvoAPI/Testing/PendingCalls.h>
#include <OrvoAPI/Testing/detail/Locked.h>

#include <memory>
#include <string>
#include <utility>

namespace orvo {

/// Stands in for the session: gives out a token of the test's, at once unless tokens are held, and
/// leaves it to the test how a renewal ends. Thread-safe.
///
///     const auto session = std::make_shared<StubSessionProvider>("first", queue);
///     …  // hand it to what is tested, and have that meet a 401
///     session->setToken("second");
///     session->updates.succeed(0, true);
class StubSessionProvider final : public SessionProvider {
 public:
  explicit StubSessionProvider(
      std::string token = "token",
      std::shared_ptr<DispatchQueue> callbackQueue = DispatchQueue::global())
      : retrievals(callbackQueue), updates(std::move(callbackQueue)), tokens_({std::move(token)}) {}

  [[nodiscard]] std::string currentToken() const override;
  [[nodiscard]] Future<std::string> retrieveSessionToken() override;
  [[nodiscard]] Future<bool> updateSession() override;

  void setToken(std::string token);
  /// From now on `retrieveSessionToken` waits for the test to settle the call.
  void holdTokens();

  /// The calls of `retrieveSessionToken`.
  PendingCalls<std::string> retrievals;
  /// The calls of `updateSession`.
  PendingCalls<bool> updates;

 private:
  struct Tokens {
    std::string current;
    bool held = false;
  };

  detail::Locked<Tokens> tokens_;
};

}  // namespace orvo
