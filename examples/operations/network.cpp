// Between the app and the network: requests of the app's own, sessions, interceptors, redirects.
#include <OrvoAPI/Testing/Fixtures.h>
#include <OrvoAPI/Testing/PendingCalls.h>

#include "Example.h"

namespace {

/// Shows NetworkDataProvider::fetch(request).
Outcome requestOfTheApp(const App& app) {
  const auto session = std::make_shared<orvo::URLSession>();  // without the service's token
  return session->fetch({.url = *orvo::URL::parse("session", app.api)})
      .map([session](const orvo::HTTPResult& answer) {
        show("status " + std::to_string(answer.response.statusCode));
        return answer.response.statusCode != 0;  // of any status: only the transport can fail
      });
}

/// Shows SessionProvider::retrieveSessionToken(); SessionProvider::updateSession().
Outcome tokens(const App& app) {
  const auto provider = app.context->sessionProvider();
  return provider->retrieveSessionToken().flatMap([provider](const std::string& token) {
    // Never log it. Where the app has learned that it is refused, a new one is a call away.
    if (!token.empty()) return provider->updateSession();
    return orvo::Future<bool>::succeeded(false);
  });
}

/// Shows DefaultSessionProvider::make(timeout, current, sessionFetch, accessQueue, clock).
Outcome ownSessionProvider(const App& app) {
  const auto provider = orvo::DefaultSessionProvider::make(
      12 * 60 * 60, {.token = "first", .date = app.context->clock()->elapsed()},
      [] { return orvo::Future<orvo::Session>::succeeded({.token = "second"}); });
  return provider->updateSession().map(
      [provider](bool updated) { return updated && provider->currentToken() == "second"; });
}

/// Shows InterceptedRequest::onCancel(task).
class SlowAnswer final : public orvo::URLInterceptor {
 public:
  bool intercept(const orvo::URLRequest& request,
                 const std::shared_ptr<orvo::InterceptedRequest>& intercepted) override {
    if (request.url.path() != "/slow") return false;  // on to the network
    // Answered later with `respond` or `fail`, unless it is cancelled first.
    intercepted->onCancel([given = given] { given.success(true); });
    held_ = intercepted;
    return true;
  }
  orvo::Promise<bool> given;

 private:
  std::shared_ptr<orvo::InterceptedRequest> held_;
};

Outcome interceptor(const App&) {
  const auto slow = std::make_shared<SlowAnswer>();
  const auto session =
      std::make_shared<orvo::URLSession>(orvo::URLSessionConfiguration{.protocolClasses = {slow}});
  return session
      ->fetch({.url = *orvo::URL::parse("http://host.invalid/slow"),
               .totalTimeoutInterval = std::chrono::milliseconds(20)})
      .successResult()  // false: it has run out of time
      .flatMap([session, slow](bool) { return slow->given.future(); });
}

/// Shows URLSessionDelegate::willPerformHTTPRedirection(response, newRequest, originalRequest,
/// completionHandler).
class SameHostOnly final : public orvo::URLSessionDelegate {
 public:
  void willPerformHTTPRedirection(const orvo::HTTPURLResponse&, const orvo::URLRequest& newRequest,
                                  const orvo::URLRequest& originalRequest,
                                  RedirectCompletion completionHandler) override {
    const bool isAllowed = newRequest.url.host() == originalRequest.url.host();
    completionHandler(isAllowed ? std::optional(newRequest) : std::nullopt);
  }
};

/// Answers everything with a redirect to another host.
class Elsewhere final : public orvo::URLInterceptor {
 public:
  bool intercept(const orvo::URLRequest& request,
                 const std::shared_ptr<orvo::InterceptedRequest>& intercepted) override {
    intercepted->respond({.url = request.url,
                          .statusCode = 302,
                          .headers = {{"Location", "http://other.invalid/"}}});
    return true;
  }
};

Outcome redirects(const App&) {
  const auto session = std::make_shared<orvo::URLSession>(
      orvo::URLSessionConfiguration{.protocolClasses = {std::make_shared<Elsewhere>()}},
      std::make_shared<SameHostOnly>());
  return session->fetch({.url = *orvo::URL::parse("http://host.invalid/")})
      .map([session](const auto& answer) { return answer.response.statusCode == 302; });
}

/// Shows PendingCalls::add().
class Playback {
 public:
  /// An operation of the app's, of which a test is to decide how it ends.
  orvo::Future<bool> start() { return starts.add(); }
  orvo::PendingCalls<bool> starts{orvo::DispatchQueue::global()};
};

Outcome ownStub(const App&) {
  Playback playback;
  const auto started = playback.start();
  playback.starts.succeed(0, true);
  return started;
}

}  // namespace

std::vector<Example> networkExamples() {
  return {{"requestOfTheApp", requestOfTheApp},
          {"tokens", tokens},
          {"ownSessionProvider", ownSessionProvider},
          {"interceptor", interceptor},
          {"redirects", redirects},
          {"ownStub", ownStub}};
}
