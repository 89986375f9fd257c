#pragma once

#include <OrvoAPI/Network/SessionProvider.h>
#include <OrvoAPI/Queues/DispatchQueue.h>

#include <chrono>
#include <memory>
#include <string>

namespace orvo {

/// When and where a session is renewed.
struct SessionRenewalOptions {
  /// How long a token is good for.
  std::chrono::milliseconds lifetime = std::chrono::hours(12);
  /// How long before that the renewal may come at the earliest; at most `lifetime`.
  std::chrono::milliseconds spread = std::chrono::hours(6);
  /// Where the renewals are waited for; the global queue when there is none.
  std::shared_ptr<DispatchQueue> queue = nullptr;
};

/// Renews the session before its token becomes stale, at a random moment of the last hours. Without
/// it, the first fetch after 12 hours waits for a new session; devices that were started together,
/// or that ask together because a programme ends, then open their sessions together, again and
/// again every half a day. What is renewed otherwise, after a 401 for instance, is not renewed a
/// second time. After a failure it tries again, up to `spread` later.
///
/// Safe to use from any thread. Held by shared pointers, and holds the provider; one that is
/// released renews no more.
class SessionRenewal final : public std::enable_shared_from_this<SessionRenewal> {
 public:
  /// To be made when the session has just been opened, with `Context::sessionProvider`.
  [[nodiscard]] static std::shared_ptr<SessionRenewal> make(
      std::shared_ptr<SessionProvider> provider, SessionRenewalOptions options = {});
  SessionRenewal(const SessionRenewal&) = delete;
  SessionRenewal& operator=(const SessionRenewal&) = delete;

 private:
  SessionRenewal(std::shared_ptr<SessionProvider> provider, SessionRenewalOptions options);

  void waitForNext();
  void waitBetween(std::chrono::milliseconds least, std::chrono::milliseconds most,
                   std::string token);
  void renew(const std::string& token);

  const std::shared_ptr<SessionProvider> provider_;
  const SessionRenewalOptions options_;
};

}  // namespace orvo
