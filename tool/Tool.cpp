#include <OrvoAPI/Context/Response.h>
#include <OrvoAPI/Context/URLService.h>
#include <OrvoAPI/Futures/GeneralError.h>
#include <OrvoAPI/HTTP/URLError.h>
#include <OrvoAPI/Network/SessionError.h>
#include <OrvoAPI/Network/URLSession.h>
#include <OrvoAPI/Parsing/JSONReaderError.h>
#include <tool/ErrorReport.h>
#include <tool/JsonLines.h>
#include <tool/Text.h>
#include <tool/Tool.h>
#include <tool/TrustedFile.h>

#include <array>

namespace orvo::tool {

namespace {

constexpr int kNotFound = 404;

/// Whether the operation is for what the user has named.
bool takesIdentifier(std::string_view operation) {
  static constexpr std::array<std::string_view, 5> kOperations{
      "fetchVideo", "fetchPage", "fetchContentItem", "fetchItemCollection", "fetchPlaylist"};
  return std::ranges::find(kOperations, operation) != kOperations.end();
}

bool isUnreadable(const AnyError& error) {
  const auto* general = error.as<GeneralError>();
  const auto* wrapper = general != nullptr ? general->as<GeneralError::underlying>() : nullptr;
  return (wrapper != nullptr ? wrapper->error : error).is<JSONReaderError>();
}

std::string documentText(const Json& json, bool forPeople) {
  return (forPeople ? json.indentedText() : json.text()) + "\n";
}

}  // namespace

Tool::Tool(GlobalOptions options)
    : options_(std::move(options)),
      watch_(std::make_shared<NetworkWatch>(
          options_.losses == nullptr
              ? NetworkWatch::Look()
              : [losses = options_.losses](const std::string& path, const Data& body) {
                  losses->addSent(path, body);
                })) {
  if (options_.json) answerInJson();
}

Tool::~Tool() {
  if (observer_ == nullptr) return;
  observer_->close({});
}

void Tool::observe(std::shared_ptr<RequestObserver> observer) {
  observer_ = std::move(observer);
  closing_.emplace([observed = observer_, watch = watch_] { observed->close(watch->underWay()); });
}

void Tool::answerInJson() {
  options_.json = true;
  printConsoleAsJsonLines();
}

Failure Tool::tooLate() {
  return Failure{URLError{URLError::timedOut, "the whole answer did not come in time"}};
}

bool Tool::startService() {
  if (isServiceKnown_) return true;
  if (options_.demo) {
    demo_ = std::make_unique<demo::DemoService>(
        demo::DemoServiceOptions{.programLength = demoProgramLength_});
    if (!demo_->start()) return false;
    options_.api = URL::parse(demo_->baseURL());
    options_.resources = URL::parse(demo_->resourceURL());
  }
  isServiceKnown_ = true;
  if (options_.onService) options_.onService(options_);
  if (options_.verbose) reportService();
  return true;
}

void Tool::reportService() const {
  const URL api = options_.api.value_or(url(options_.environment));
  const URL resources = options_.resources.value_or(resourceURL(options_.environment));
  const std::string text = "API " + withoutUserInfo(api.text()) + ", resources " +
                           withoutUserInfo(resources.text()) + " (" + options_.source +
                           "); client " + std::string(rawValue(options_.client)) + " (" +
                           options_.clientSource + ")";
  if (options_.json) return printJsonLine(Json::object({{"report", text}}));
  printDiagnostic(escaped("orvo: " + text) + "\n");
}

Result<std::shared_ptr<Context>> Tool::context() {
  if (context_) return context_;
  if (!startService())
    return Failure{URLError{URLError::unknown, "the demo service does not start"}};
  isOpening_ = true;
  const auto file = trustedFile();
  const bool isSecure = options_.api.value_or(url(options_.environment)).scheme() == "https";
  // TLS would be set up from it, and that would wait for what never comes.
  if (isSecure && file && options_.bootstrap.session.protocolClasses.empty()) {
    const auto fault = faultOfTrustedFile(*file);
    if (!fault.empty()) return Failure{URLError{URLError::secureConnectionFailed, fault}};
  }
  auto bootstrap = options_.bootstrap;
  bootstrap.environment = options_.environment;
  bootstrap.wrapNetwork = [watch = watch_, wrap = bootstrap.wrapNetwork](auto network) {
    return watch->before(wrap ? wrap(std::move(network)) : std::move(network));
  };
  const Promise<bool> bothEnded;
  if (observer_) {
    const auto count = std::make_shared<int>(0);  // only touched on the queue
    bootstrap.context.onReport = [observer = observer_, count,
                                  bothEnded](const RequestReport& report) {
      observer->take(report);
      if (++*count == 2) bothEnded.success(true);
    };
    bootstrap.context.reportQueue = observer_->queue();
  }
  if (options_.losses) options_.losses->listen(bootstrap.context);
  const auto future =
      options_.api
          ? ContextService::context(*options_.api, *options_.resources, options_.client, bootstrap)
          : ContextService::context(options_.environment, options_.client, bootstrap);
  auto result = wait(future, "opening a session");
  isOpening_ = result.failed();
  // One failure is enough for the result; the other request may end a moment later.
  if (isOpening_ && observer_) (void)bothEnded.future().wait(std::chrono::seconds(1));
  if (const auto* context = result.value()) context_ = *context;
  return result;
}

std::shared_ptr<NetworkDataProvider> Tool::network(std::size_t maximumBodySize) const {
  auto configuration = options_.bootstrap.session;
  configuration.maximumBodySize = maximumBodySize;
  if (observer_) configuration.measuresRequests = true;
  const auto session = std::make_shared<URLSession>(std::move(configuration));
  const auto& wrap = options_.bootstrap.wrapNetwork;
  return watch_->before(wrap ? wrap(session) : session);
}

Result<URL> Tool::apiBase() {
  if (!startService())
    return Failure{URLError{URLError::unknown, "the demo service does not start"}};
  return options_.api.value_or(url(options_.environment));
}

Result<ResourceHost> Tool::resourceHost() {
  if (!startService())
    return Failure{URLError{URLError::unknown, "the demo service does not start"}};
  return ResourceHost{.baseURL = options_.resources.value_or(resourceURL(options_.environment))};
}

int Tool::answer(const Json& json) const {
  print(documentText(json, standardOutput().isTerminal));
  return 0;
}

std::string Tool::place(const AnyError& error) const {
  std::string text;
  if (isOpening_) {
    const URL api = options_.api.value_or(url(options_.environment));
    text.append("no session with ").append(api.host()) += ": ";
  }
  const std::string asked = subject(error);
  return asked.empty() ? text : text + asked + ": ";
}

std::string Tool::reason(const AnyError& error) const {
  std::string text = explanation(error);
  const auto retry = watch_->retryAfter();
  const bool isRefused = error.is<SessionError>() || error.is<Response::Error>();
  if (isRefused && !retry.empty()) text += "; it says to come back " + retry;
  const int status = watch_->oddStatus();
  if (status == 0 || !isUnreadable(error)) return text;
  return text + " (the service answered with status " + std::to_string(status) + ")";
}

std::string Tool::wayOut(const AnyError& error) const {
  if (!isOpening_) {
    const auto* session = error.as<SessionError>();
    const auto* refused =
        session != nullptr ? session->as<SessionError::unexpectedStatus>() : nullptr;
    const bool isUnknown =
        (refused != nullptr && refused->status == kNotFound) || error.is<URLService::Error>();
    const ErrorContext* asked = error.context();
    return isUnknown && asked != nullptr && takesIdentifier(asked->operation)
               ? "\"orvo views\" and \"orvo search\" show identifiers.\n"
               : "";
  }
  if (options_.api) return "\"orvo doctor\" looks at each step of the way to a service.\n";
  return "Name a service with --api URL, ORVO_API or a profile (orvo help profile), or try the "
         "tool with\n--demo, the service inside it.\n";
}

int Tool::fail(const AnyError& error) const {
  // The error comes last; a session that cannot be had ends all.
  if (observer_) isOpening_ ? observer_->close({}) : observer_->flush();
  if (options_.losses != nullptr) options_.losses->print(options_.json, false);
  if (options_.json) {
    printJsonLine(errorJson(error));
  } else {
    const std::string head = styled(standardError(), Style::bad, "orvo:");
    printDiagnostic(head + " " + escaped(place(error) + reason(error)) + "\n" + wayOut(error));
  }
  return 1;
}

}  // namespace orvo::tool
