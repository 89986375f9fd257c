#include <OrvoAPI/Base/FatalInternal.h>
#include <OrvoAPI/Network/DefaultNetworkProvider.h>

#include <new>
#include <string>
#include <utility>

namespace orvo {
namespace {

constexpr unsigned kMaximumConnectionsPerHost = 10;

class Reauthorization final : public URLSessionDelegate {
 public:
  explicit Reauthorization(std::shared_ptr<SessionProvider> sessionProvider)
      : sessionProvider_(std::move(sessionProvider)) {}

  void willPerformHTTPRedirection(const HTTPURLResponse& response, const URLRequest& newRequest,
                                  const URLRequest& originalRequest,
                                  RedirectCompletion completionHandler) override {
    auto next = newRequest;
    const auto query = response.url.query();
    if (query && !next.url.query()) next.url = next.url.withQuery(*query).value_or(next.url);
    // A request without a token went to a foreign host on purpose: it gets none now either, so
    // that its redirect does not depend on a token.
    if (!originalRequest.headers.contains("Authorization")) {
      return completionHandler(std::move(next));
    }
    sessionProvider_->retrieveSessionToken().onComplete(
        [next = std::move(next),
         complete = std::move(completionHandler)](const Result<std::string>& token) mutable {
          if (token.failed()) return complete(std::nullopt);
          try {
            next.headers.add("Authorization", *token.value());
          } catch (const std::bad_alloc&) {
            return complete(std::nullopt);
          }
          complete(std::move(next));
        });
  }

 private:
  const std::shared_ptr<SessionProvider> sessionProvider_;
};

}  // namespace

DefaultNetworkProvider::DefaultNetworkProvider(std::shared_ptr<SessionProvider> sessionProvider,
                                               ProtocolClasses protocolClasses)
    : sessionProvider_(std::move(sessionProvider)),
      protocolClasses_(std::move(protocolClasses)),
      delegate_(std::make_shared<Reauthorization>(sessionProvider_)) {
  if (sessionProvider_ == nullptr) detail::fatal("DefaultNetworkProvider needs a session provider");
}

Future<HTTPResult> DefaultNetworkProvider::fetch(const URLRequest& request) {
  return urlSession()->fetch(request);
}

std::shared_ptr<URLSession> DefaultNetworkProvider::urlSession() {
  const detail::LockGuard guard(lock_);
  if (session_ == nullptr) {
    URLSessionConfiguration configuration;
    configuration.maximumConnectionsPerHost = kMaximumConnectionsPerHost;
    if (protocolClasses_) configuration.protocolClasses = *protocolClasses_;
    session_ = std::make_shared<URLSession>(std::move(configuration), delegate_);
  }
  return session_;
}

void DefaultNetworkProvider::setURLSession(std::shared_ptr<URLSession> session) {
  const detail::LockGuard guard(lock_);
  session_.swap(session);
}

}  // namespace orvo
