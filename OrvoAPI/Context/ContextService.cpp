#include <OrvoAPI/Context/ContentRequestInternal.h>
#include <OrvoAPI/Context/ContextService.h>
#include <OrvoAPI/Context/LossReporterInternal.h>
#include <OrvoAPI/Context/QueueLogInternal.h>
#include <OrvoAPI/Context/RequestRecordInternal.h>
#include <OrvoAPI/Context/Response.h>
#include <OrvoAPI/Context/SubjectInternal.h>
#include <OrvoAPI/Context/URLService.h>
#include <OrvoAPI/Logging/LoggingService.h>
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

/// The requests of the library's own.
struct OwnRequests {
  /// What `parse` makes of the document.
  template <class Parse>
  auto fetch(const URLRequest& request, const detail::Subject& subject, Parse parse) const {
    const auto record = begin(subject);
    if (record) record->asks(request);
    if (record) record->willSend();
    const auto answer = send(request);
    if (record) record->awaitAnswer(answer);
    const auto read = [parse = std::move(parse)](const HTTPResult& valid) {
      using Document = decltype(parse(std::declval<const JSONObject&>()));
      const auto json = JSONDataParser::object(valid.body);
      return json.failed() ? Document(Failure{*json.error()}) : parse(*json.value());
    };
    const detail::Watched watched(detail::LossReporter::make(reporter.get(), subject), read);
    auto document = answer.map(Response::validate).map(detail::Explained(subject, watched));
    if (record) record->endWith(document);
    return document;
  }
  [[nodiscard]] detail::RecordRef begin(const detail::Subject& subject) const {
    return reporter != nullptr ? reporter->begin(subject) : detail::RecordRef();
  }

  /// A provider of the app's own may throw.
  [[nodiscard]] Future<HTTPResult> send(const URLRequest& request) const {
    try {
      return network->fetch(request);
    } catch (...) {
      return Future<HTTPResult>::completed(Failure{AnyError::current()});
    }
  }

  std::shared_ptr<const detail::RequestReporter> reporter;
  std::shared_ptr<NetworkDataProvider> network = nullptr;
};

/// The network, or what the app puts before it.
std::shared_ptr<NetworkDataProvider> wrapped(const BootstrapOptions& options,
                                             std::shared_ptr<NetworkDataProvider> network) {
  if (!options.wrapNetwork) return network;
  auto wrapper = options.wrapNetwork(network);
  return wrapper != nullptr ? wrapper : network;
}

/// What is reported of them, and of the context's, goes the same way.
OwnRequests makeRequests(BootstrapOptions& options) {
  auto& context = options.context;
  if (context.logsRequests && context.logger == nullptr) {
    context.logger = std::make_shared<LoggingService>();
  }
  OwnRequests own{.reporter = detail::RequestReporter::make(context, nullptr)};
  if (own.reporter != nullptr) {
    options.session.measuresRequests |= own.reporter->isRecording();
    context.reportQueue = own.reporter->queue();
  }
  return own;
}

Future<std::shared_ptr<Context>> bootstrap(const URLService& urls, Environment environment,
                                           Client client, BootstrapOptions options) {
  detail::logQueueWarningsTo(options.context.logger);
  auto own = makeRequests(options);
  const detail::Subject configuring{"fetchConfiguration", rawValue(client)};
  const auto configurationURL = urls.configuration(client);
  if (configurationURL.failed()) {
    auto failed = Future<std::shared_ptr<Context>>::failed(
        configuring.explain(*configurationURL.error(), detail::kRelativeBase));
    if (const auto record = own.begin(configuring)) record->endWith(failed);
    return failed;
  }
  own.network = wrapped(options, std::make_shared<URLSession>(options.session));
  const auto fetchSession = [own, opening = detail::Subject{"openSession", rawValue(client)},
                             request = bootstrapRequest(urls.session(client))] {
    return own.fetch(request, opening, SessionParser::parse);
  };
  const auto opened = fetchSession();
  const auto configured = own.fetch(bootstrapRequest(*configurationURL.value()), configuring,
                                    [environment](const JSONObject& json) {
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
        return Context::make(parts.second, urls.baseURL, urls.resourceURL, sessionProvider,
                             wrapped(options, network), options.context);
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
  return bootstrap({.baseURL = detail::asBase(baseURL), .resourceURL = detail::asBase(resourceURL)},
                   options.environment, client, options);
}

}  // namespace orvo
