// How an app begins: a context, and what it may be given.
#include <OrvoAPI/Testing/Fixtures.h>
#include <OrvoAPI/Testing/StubInterceptor.h>

#include <atomic>

#include "Example.h"

namespace {

/// Shows ContextService::context(baseURL, resourceURL, client, options).
Outcome openDeployment(const App& app) {
  const auto kept = std::make_shared<std::shared_ptr<orvo::Context>>();  // in an app, a member
  return orvo::ContextService::context(app.api, app.resources, orvo::Client::appleTV)
      .onSuccess(mainQueue(),
                 [kept](const std::shared_ptr<orvo::Context>& context) {
                   *kept = context;  // the app owns it
                   for (const auto& view : context->systemViews()) show(view.label);
                 })
      .onFailure(mainQueue(), [](const orvo::AnyError& error) { show(error.description()); })
      .map(mainQueue(), [kept](const auto&) { return *kept != nullptr; });
}

/// Shows ContextService::context(environment, client, options).
Outcome openEnvironment(const App&) {
  // An interceptor answers in place of the hosts that the library was built with.
  const auto stub = std::make_shared<orvo::StubInterceptor>();
  stub->answer("/v3/session", orvo::fixtures::kSession);
  stub->answer("/v3/configuration/tvos/v1", orvo::fixtures::kConfiguration);
  return orvo::ContextService::context(orvo::Environment::staging, orvo::Client::appleTV,
                                       {.session = {.protocolClasses = {stub}}})
      .map(
          [](const auto& context) { return context->environment() == orvo::Environment::staging; });
}

/// Shows ContextOptions::onReport.
Outcome observeRequests(const App& app) {
  const auto reports = std::make_shared<std::atomic<int>>(0);
  const orvo::ContextOptions options{.onReport = [reports](const orvo::RequestReport& report) {
    ++*reports;
    show(std::string(report.operation) + " took " +
         std::to_string(report.total / std::chrono::milliseconds(1)) + " ms");
  }};
  return orvo::ContextService::context(app.api, app.resources, orvo::Client::appleTV,
                                       {.context = options})
      .flatMap([](const auto& context) { return context->fetchVideo("film-long-thaw"); })
      .map([reports](const auto&) { return *reports >= 2; });  // session and configuration
}

/// Shows ContextOptions::onLoss.
Outcome hearWhatWasLeftOut(const App& app) {
  const orvo::Promise<bool> told;
  const orvo::ContextOptions options{.onLoss = [told](const orvo::DocumentLoss& loss) {
    show(loss.document + " " + loss.identifier + ": " + loss.path);
    told.success(true);
  }};
  orvo::ContextService::context(app.api, app.resources, orvo::Client::appleTV, {.context = options})
      .flatMap([](const auto& context) { return context->fetchItemCollection("live-events"); })
      .onFailure([told](const orvo::AnyError& error) { told.failure(error); });
  return told.future();
}

/// Passes requests on, and counts them.
class Meter final : public orvo::NetworkDataProvider {
 public:
  explicit Meter(std::shared_ptr<orvo::NetworkDataProvider> network)
      : network_(std::move(network)) {}
  orvo::Future<orvo::HTTPResult> fetch(const orvo::URLRequest& request) override {
    ++requests;
    return network_->fetch(request);  // the same future: a cancel still reaches the network
  }
  static inline std::atomic<int> requests = 0;

 private:
  const std::shared_ptr<orvo::NetworkDataProvider> network_;
};

/// Shows BootstrapOptions::wrapNetwork.
Outcome standBeforeTheNetwork(const App& app) {
  const orvo::BootstrapOptions options{
      .wrapNetwork = [](auto network) { return std::make_shared<Meter>(std::move(network)); }};
  return orvo::ContextService::context(app.api, app.resources, orvo::Client::appleTV, options)
      .map([](const auto&) { return Meter::requests == 2; });  // session and configuration
}

}  // namespace

std::vector<Example> bootstrapExamples() {
  return {{"openDeployment", openDeployment},
          {"openEnvironment", openEnvironment},
          {"observeRequests", observeRequests},
          {"hearWhatWasLeftOut", hearWhatWasLeftOut},
          {"standBeforeTheNetwork", standBeforeTheNetwork}};
}
