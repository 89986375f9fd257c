#include <OrvoAPI/Context/ContentRequestInternal.h>
#include <OrvoAPI/Context/Context.h>
#include <OrvoAPI/Context/FetchScopeStateInternal.h>
#include <OrvoAPI/Context/QueueLogInternal.h>
#include <OrvoAPI/Context/RequestPipelineInternal.h>
#include <OrvoAPI/Logging/LoggingService.h>
#include <OrvoAPI/Storage/AppStore.h>

#include <array>
#include <utility>

namespace orvo {
namespace {

constexpr std::array<std::string_view, 3> kSystemViewOrder{"discover", "calendar", "channels"};

}  // namespace

std::shared_ptr<Context> Context::make(Configuration configuration, URL baseURL, URL resourceURL,
                                       std::shared_ptr<SessionProvider> sessionProvider,
                                       std::shared_ptr<NetworkDataProvider> networkProvider,
                                       ContextOptions options) {
  detail::logQueueWarningsTo(options.logger);
  if (options.logger == nullptr) options.logger = std::make_shared<LoggingService>();
  if (options.clock == nullptr) options.clock = Clock::system();
  return std::shared_ptr<Context>(
      new Context(std::move(configuration), detail::asBase(baseURL), detail::asBase(resourceURL),
                  std::move(sessionProvider), std::move(networkProvider), std::move(options)));
}

Context::Context(Configuration configuration, URL baseURL, URL resourceURL,
                 std::shared_ptr<SessionProvider> sessionProvider,
                 std::shared_ptr<NetworkDataProvider> networkProvider, ContextOptions options)
    : configuration_(std::make_shared<const Configuration>(std::move(configuration))),
      urlService_{.baseURL = std::move(baseURL), .resourceURL = resourceURL},
      resourceHost_{.baseURL = std::move(resourceURL), .displayScale = options.displayScale},
      logger_(options.logger),
      clock_(options.clock),
      reporter_(detail::RequestReporter::make(options, sessionProvider)),
      pipeline_(std::make_shared<detail::RequestPipeline>(std::move(sessionProvider),
                                                          std::move(networkProvider))),
      store_(std::make_shared<AppStore>(clock_)),
      appValues_(std::make_shared<KeyedStore<std::any>>()) {}

Context::Context(const Context& whole, std::shared_ptr<detail::FetchScopeState> scope)
    : configuration_(whole.configuration_),
      urlService_(whole.urlService_),
      resourceHost_(whole.resourceHost_),
      logger_(whole.logger_),
      clock_(whole.clock_),
      reporter_(whole.reporter_),
      pipeline_(std::make_shared<detail::RequestPipeline>(
          whole.sessionProvider(),
          std::make_shared<detail::ScopedNetwork>(scope, whole.networkDataProvider()), scope)),
      store_(whole.store_),
      appValues_(whole.appValues_) {}

const std::shared_ptr<detail::FetchScopeState>& Context::scope() const {
  return pipeline_->scope();
}

Context::~Context() = default;

const std::shared_ptr<SessionProvider>& Context::sessionProvider() const {
  return pipeline_->sessionProvider();
}

const std::shared_ptr<NetworkDataProvider>& Context::networkDataProvider() const {
  return pipeline_->networkDataProvider();
}

AppStore& Context::store() const { return *store_; }

KeyedStore<std::any>& Context::appValues() const { return *appValues_; }

std::vector<SystemView> Context::systemViews() const {
  std::vector<SystemView> views;
  for (const auto name : kSystemViewOrder) {
    for (const auto& view : configuration_->systemViews) {
      if (view.name != name) continue;
      views.push_back({view.name, view.label, view.id, systemViewCapability(view.id, view.label)});
    }
  }
  return views;
}

URL Context::videoURL(std::string_view videoID) const {
  const auto relative = urlService_.videoURL(std::string(videoID));
  return constants().hlsBaseURL.appendingPathComponent(
      relative(sessionProvider()->currentToken()).text());
}

}  // namespace orvo
