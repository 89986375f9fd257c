#pragma once

#include <OrvoAPI/Base/detail/Lock.h>
#include <OrvoAPI/HTTP/URLInterceptor.h>
#include <OrvoAPI/Network/NetworkDataProvider.h>
#include <OrvoAPI/Network/SessionProvider.h>
#include <OrvoAPI/Network/URLSession.h>

#include <memory>
#include <optional>
#include <vector>

namespace orvo {

/// Sends requests through one URL session and adds the session provider's token to redirected ones.
/// Thread-safe. Holds its session provider and its URL session; requests under way outlive it.
///
/// A redirect is followed with the query of the address that redirected, when the new one has none,
/// and with the current token, when the request carried one: to whatever host the server names, so
/// a server that redirects to another host passes the token on. When no token is available the
/// redirect is refused.
class DefaultNetworkProvider final : public NetworkDataProvider {
 public:
  using ProtocolClasses = std::optional<std::vector<std::shared_ptr<URLInterceptor>>>;

  /// A null session provider terminates the process.
  explicit DefaultNetworkProvider(std::shared_ptr<SessionProvider> sessionProvider,
                                  ProtocolClasses protocolClasses = std::nullopt);

  [[nodiscard]] Future<HTTPResult> fetch(const URLRequest& request) override;

  [[nodiscard]] const std::shared_ptr<SessionProvider>& sessionProvider() const {
    return sessionProvider_;
  }
  [[nodiscard]] const ProtocolClasses& protocolClasses() const { return protocolClasses_; }

  /// The session of all fetches, made with the first call: 10 connections to a host, the protocol
  /// classes, and the delegate below.
  [[nodiscard]] std::shared_ptr<URLSession> urlSession();
  /// Puts another session in its place; what is under way stays with the old one.
  void setURLSession(std::shared_ptr<URLSession> session);

  /// The delegate that decides about redirects, for a session of the app's own that is to do the
  /// same.
  [[nodiscard]] const std::shared_ptr<URLSessionDelegate>& sessionDelegate() const {
    return delegate_;
  }

 private:
  const std::shared_ptr<SessionProvider> sessionProvider_;
  const ProtocolClasses protocolClasses_;
  /// An object of its own: the session holds it, and must not hold the provider that holds it.
  const std::shared_ptr<URLSessionDelegate> delegate_;
  detail::Lock lock_;
  std::shared_ptr<URLSession> session_ ORVO_GUARDED_BY(lock_);
};

}  // namespace orvo
