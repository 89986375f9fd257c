#include <OrvoAPI/HTTP/URLError.h>
#include <OrvoAPI/Platform/Clock.h>
#include <tool/ErrorReport.h>
#include <tool/trace/ReportJson.h>

namespace orvo::tool {

namespace {

double seconds(std::chrono::nanoseconds time) {
  return std::chrono::duration<double>(time).count();
}

Date wallTime(std::chrono::steady_clock::time_point time) {
  const auto age = std::chrono::steady_clock::now() - time;
  return Clock::system()->now() - std::chrono::duration_cast<std::chrono::milliseconds>(age);
}

/// The status or the code; what was no matter of the network has neither.
std::string errorType(const RequestReport& report) {
  constexpr int kFirstErrorStatus = 400;
  if (report.status >= kFirstErrorStatus) return std::to_string(report.status);
  const auto* transport = report.error->as<URLError>();
  return transport != nullptr ? std::to_string(transport->code) : "document";
}

/// Null for what is not known.
Json known(std::string_view text) { return text.empty() ? Json() : Json(text); }

}  // namespace

Json reportJson(const RequestReport& report, bool isTimed) {
  const auto& [operation, identifier, method, path, redirects, retries, source, status, error,
               received, decoded, isReused, protocol, begun, total, phases] = report;
  Json times = Json::object();
  for (std::size_t phase = 0; phase < phases.size(); ++phase) {
    times.set(std::string(enumCases<RequestPhase>[phase].name), seconds(phases[phase]));
  }
  // What is under way has no operation yet, and no phases.
  Json json = Json::object(
      {{"operation", known(operation)},
       {"identifier", known(identifier)},
       {"start", toJson(wallTime(begun))},
       {"http.client.request.duration", isTimed ? Json(seconds(total)) : Json()},
       {"phases", isTimed && !operation.empty() ? std::move(times) : Json()},
       {"source", caseName(source)},
       {"http.request.method", known(method)},
       {"url.path", known(path)},
       {"http.response.status_code", status != 0 ? Json(status) : Json()},
       {"http.response.body.size", static_cast<std::int64_t>(received)},
       {"bytesDecoded", static_cast<std::int64_t>(decoded)},
       {"network.protocol.version", known(protocol)},
       {"isConnectionReused", isReused},
       {"redirects", Json::list(redirects, [](const auto& text) { return Json(text); })},
       {"retries", static_cast<std::int64_t>(retries)}});
  if (operation.empty()) json.set("isUnderWay", true);
  if (error) {
    json.set("error.type", errorType(report));
    json.set("error", errorValue(*error));
  }
  return json;
}

}  // namespace orvo::tool
