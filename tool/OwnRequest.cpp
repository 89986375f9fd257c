#include <OrvoAPI/HTTP/RequestTimeline.h>
#include <OrvoAPI/HTTP/URLError.h>
#include <tool/OwnRequest.h>
#include <tool/RequestObserver.h>
#include <tool/Secrets.h>

#include <algorithm>

namespace orvo::tool {

namespace {

using Time = std::chrono::steady_clock::time_point;
using Stage = RequestTimeline::Stage;

/// Splits what lies between the call and its end into the phases of the last hop.
void measure(RequestReport& report, const RequestTimeline& timeline, Time ended) {
  constexpr auto kRedirects = static_cast<std::size_t>(RequestPhase::redirects);
  Time from = report.begun;
  std::size_t phase = kRedirects;
  for (std::size_t stage = 0; stage <= RequestTimeline::kStages; ++stage) {
    const Time reached = stage < RequestTimeline::kStages ? timeline.last.times[stage] : ended;
    // Until the first hop begins, nothing was redirected.
    const bool waits = phase == kRedirects && timeline.redirects.empty();
    const Time to = std::clamp(reached, from, ended);
    report.phases[phase + (waits ? 1 : 0)] += to - from;
    from = to;
    ++phase;
  }
}

RequestReport reportOf(const OwnRequest& own, const URLRequest& request,
                       const Result<HTTPResult>& result, Time begun) {
  const Time ended = std::chrono::steady_clock::now();
  RequestReport report{.operation = own.operation,
                       .identifier = own.identifier,
                       .method = request.method,
                       .path = own.path.empty() ? std::string(request.url.path()) : own.path,
                       .source = RequestReport::Source::network,
                       .begun = begun,
                       .total = ended - begun};
  std::shared_ptr<const RequestTimeline> timeline;
  if (const auto* answer = result.value()) {
    report.status = answer->response.statusCode;
    report.bytesDecoded = answer->body.size();
    timeline = answer->timeline;
  } else {
    const auto* transport = result.error()->as<URLError>();
    report.error =
        transport != nullptr ? URLError{transport->code, transport->message} : *result.error();
    if (transport != nullptr) timeline = transport->timeline;
  }
  if (timeline == nullptr) {
    report.phases[static_cast<std::size_t>(RequestPhase::wait)] = report.total;
    return report;
  }
  // Their addresses may tell a token, and whose they are is not known here.
  report.redirects.assign(timeline->redirects.size(), std::string(kHiddenText));
  report.bytesReceived = timeline->last.bytesReceived;
  report.isConnectionReused = timeline->last.isConnectionReused;
  report.protocol = timeline->last.protocol;
  measure(report, *timeline, ended);
  return report;
}

/// An identifier of the service's may be its token.
void hide(RequestReport& report, const std::string& token) {
  KnownSecrets known;
  known.add(token, "");
  for (std::string* text : {&report.identifier, &report.path}) {
    if (known.hiddenIn(*text) != *text) *text = kHiddenText;
  }
}

}  // namespace

Result<HTTPResult> fetch(Tool& tool, NetworkDataProvider& network, const URLRequest& request,
                         const OwnRequest& own, const std::string& label) {
  const Time begun = std::chrono::steady_clock::now();
  auto result = tool.wait(network.fetch(request), label);
  if (const auto& observer = tool.observer()) {
    RequestReport report = reportOf(own, request, result, begun);
    if (const auto* context = tool.openedContext()) {
      hide(report, context->sessionProvider()->currentToken());
    }
    observer->queue()->sync([&] { observer->take(report); });
  }
  if (const AnyError* error = result.error()) {
    return Failure{error->withContext({std::string(own.operation), own.identifier})};
  }
  return result;
}

}  // namespace orvo::tool
