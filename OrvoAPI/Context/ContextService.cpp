#include <OrvoAPI/Context/ContextService.h>
#include <OrvoAPI/Context/Response.h>
#include <OrvoAPI/Context/URLService.h>
#include <OrvoAPI/Network/DefaultNetworkProvider.h>
#include <OrvoAPI/Network/DefaultSessionProvider.h>
#include <OrvoAPI/Network/Session.h>
#include <OrvoAPI/Network/URLSession.h>
#include <OrvoAPI/Parsing/JSONDataParser.h>

#include <utility>

namespace orvo {
namespace {

using namespace std::chrono_literals;

constexpr auto kBootstrapTimeout = 10s;
/// What a session provider is told; a token is good for 12 hours.
constexpr double kSessionTimeout = 43200;

URLRequest bootstrapRequest(URL url) {
  return {.url = std::move(url),
          .cachePolicy = CachePolicy::reloadIgnoringLocalAndRemoteCacheData,
          .timeoutInterval = kBootstrapTimeout};
}

Future<JSONObject> document(const Future<HTTPResult>& answer) {
  return answer.map(Response::validate).map([](const HTTPResult& valid) {
    return JSONDataParser::object(valid.body);
  });
}

Future<std::shared_ptr<Context>> bootstrap(const URLService& urls, Environment environment,
                                           Client client, const BootstrapOptions& options) {
  const auto configurationURL = urls.configuration(client);
  if (configurationURL.failed()) {
    return Future<std::shared_ptr<Context>>::failed(*configurationURL.error());
  }
  const auto session = std::make_shared<URLSession>(options.session);
  const auto fetchSession = [session, request = bootstrapRequest(urls.session(client))] {
    return document(session->fetch(request)).map(SessionParser::parse);
  };
  const auto opened = fetchSession();
  const auto configured = document(session->fetch(bootstrapRequest(*configurationURL.value())))
                              .map([environment](const JSONObject& json) {
                                return ConfigurationParser::parse(json, environment);
                              });
  return opened.zip(configured)
      .map([fetchSession, urls, options](const std::pair<Session, Configuration>& parts) {
        const auto clock = options.context.clock ? options.context.clock : Clock::system();
        const auto sessionProvider = DefaultSessionProvider::make(
            kSessionTimeout, {.token = parts.first.token, .date = clock->elapsed()}, fetchSession,
            DefaultSessionProvider::makeAccessQueue(), clock);
        const auto network = std::make_shared<DefaultNetworkProvider>(
            sessionProvider, options.session.protocolClasses);
        // A session made with all that the app asked for, not with its protocol classes only.
        network->setURLSession(
            std::make_shared<URLSession>(options.session, network->sessionDelegate()));
        return Context::make(parts.second, urls.baseURL, urls.resourceURL, sessionProvider, network,
                             options.context);
      });
}

}  // namespace

Future<std::shared_ptr<Context>> ContextService::context(Environment environment, Client client,
                                                         const BootstrapOptions& options) {
  return bootstrap({.baseURL = url(environment), .resourceURL = resourceURL(environment)},
                   environment, client, options);
}

Future<std::shared_ptr<Context>> ContextService::context(const URL& baseURL, const URL& resourceURL,
                                                         Client client,
                                                         const BootstrapOptions& options) {
  return bootstrap({.baseURL = baseURL, .resourceURL = resourceURL}, options.environment, client,
                   options);
}

}  // namespace orvo
