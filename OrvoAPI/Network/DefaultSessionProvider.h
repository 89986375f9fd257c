#pragma once

#include <OrvoAPI/Network/Session.h>
#include <OrvoAPI/Network/SessionProvider.h>
#include <OrvoAPI/Platform/Clock.h>
#include <OrvoAPI/Queues/SerialQueue.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>

namespace orvo {

/// Keeps the current token and fetches a new one when it has become stale, exactly 12 hours after
/// it was obtained here. Thread-safe. An update under way does not keep it alive: its outcome is
/// then dropped. One that a retrieval waits for does.
///
/// Fetches are not shared: each call that finds the token stale starts one, and the last to finish
/// decides which token is current.
class DefaultSessionProvider final : public SessionProvider,
                                     public std::enable_shared_from_this<DefaultSessionProvider> {
 public:
  /// The token in use, and when it was obtained, by `Clock::elapsed`.
  struct Current {
    std::string token;
    std::chrono::milliseconds date;
  };
  using SessionFetch = std::function<Future<Session>()>;

  /// `accessQueue` serialises what reads and writes the current token.
  [[nodiscard]] static std::shared_ptr<DefaultSessionProvider> make(
      double timeout, Current current, SessionFetch sessionFetch,
      std::shared_ptr<SerialQueue> accessQueue = makeAccessQueue(),
      std::shared_ptr<const Clock> clock = Clock::system());
  /// A queue with the label of session providers.
  [[nodiscard]] static std::shared_ptr<SerialQueue> makeAccessQueue();

  [[nodiscard]] std::string currentToken() const override;
  [[nodiscard]] Future<std::string> retrieveSessionToken() override;
  [[nodiscard]] Future<bool> updateSession() override;

  /// The lifetime of a token in seconds, as stated at construction. For information: freshness is
  /// decided by the fixed 12 hours, which callers that set another value have come to rely on.
  [[nodiscard]] double timeout() const { return timeout_; }

 private:
  DefaultSessionProvider(double timeout, Current current, SessionFetch sessionFetch,
                         std::shared_ptr<SerialQueue> accessQueue,
                         std::shared_ptr<const Clock> clock);
  [[nodiscard]] Current current() const;

  const double timeout_;
  const std::shared_ptr<SerialQueue> accessQueue_;
  const std::shared_ptr<const Clock> clock_;
  const SessionFetch sessionFetch_;
  Current current_;  // only touched on accessQueue_
};

}  // namespace orvo
