#include <OrvoAPI/Context/Response.h>
#include <OrvoAPI/Futures/GeneralError.h>
#include <OrvoAPI/HTTP/URLError.h>
#include <OrvoAPI/Network/SessionError.h>
#include <tool/NetworkWatch.h>
#include <tool/Text.h>
#include <tool/doctor/Advice.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <ctime>

namespace orvo::tool {

namespace {

const char* adviceForCode(int code) {
  switch (code) {
    case URLError::cannotFindHost:
      return "no such name: check the address, and the device's name servers";
    case URLError::cannotConnectToHost:
      return "nothing listens there, or a firewall refuses: check the port";
    case URLError::notConnectedToInternet:
      return "the device has no network: connect it";
    case URLError::timedOut:
      return "the service answers too slowly, or not at all: look at its load, and at the way to "
             "it; --patience gives it longer";
    case URLError::networkConnectionLost:
      return "the server, or a proxy on the way, cuts its answers off: look into its log";
    case URLError::httpTooManyRedirects:
      return "the server redirects in a circle: its configuration needs mending";
    case URLError::badServerResponse:
      return "what answers does not speak HTTP: check the port";
    case URLError::cannotDecodeRawData:
      return "the answer is not compressed as it says: a fault of the server, or of a proxy";
    case URLError::dataLengthExceedsMaximum:
      return "the answer has no end: this is not the service, or it is broken";
    case URLError::secureConnectionFailed:
      return "TLS cannot be agreed on: look into the server's log";
    case URLError::serverCertificateHasBadDate:
    case URLError::serverCertificateNotYetValid:
      return "the certificate is out of date, or the device's clock is wrong";
    case URLError::serverCertificateUntrusted:
    case URLError::serverCertificateHasUnknownRoot:
      return "the certificate cannot be trusted: somebody else may answer";
    default:
      return "";
  }
}

}  // namespace

std::string adviceForStatus(int status) {
  if (status == 401 || status == 403) return "the service refuses this device or this address";
  if (status == 404 || status == 410) return "there is no such thing: check the base URL";
  if (status == 407) return "the proxy wants a name and a password: put them into its address";
  if (status == 429) return "too many requests come from here: wait, then ask less often";
  if (status == 511) return "the network wants a login: open any page in a browser";
  if (status >= 500) return "the service is out of order: try again later, or tell who runs it";
  return "the service does not want the request: orvo get shows what it says";
}

namespace {

bool isPageForPeople(const HTTPResult& answer) {
  const std::string_view kind = answer.response.headers.value("Content-Type").value_or("");
  const std::string_view body = answer.body.view();
  const std::size_t first = body.find_first_not_of(" \t\r\n");
  return kind.starts_with("text/html") || (first != std::string_view::npos && body[first] == '<');
}

/// Who it is that answers a question of ours with a page for people.
Complaint stranger(const HTTPResult& answer, bool isProxied, std::string_view asked) {
  const HTTPHeaders& headers = answer.response.headers;
  const auto via = headers.value("Via");
  if (isProxied || via || headers.contains("Proxy-Status") || headers.contains("X-Squid-Error")) {
    return {"a proxy answers instead of the service" +
                (via ? " (" + std::string(*via) + ")" : std::string()),
            adviceForProxy()};
  }
  if (answer.response.url.host() != asked) {
    return {"the network leads to a page of " + std::string(answer.response.url.host()),
            "it may want a login: open that page in a browser"};
  }
  return {"a web page answers instead of the service",
          "a proxy may do so, or a network that wants a login, or the base URL is wrong: open it "
          "in a browser"};
}

/// An error's status says more than its page; who sent it may still not be the service.
Complaint complaintAboutStatus(const HTTPResult& answer, bool isProxied, std::string_view asked) {
  const HTTPHeaders& headers = answer.response.headers;
  const int status = answer.response.statusCode;
  Complaint complaint{"status " + std::to_string(status), adviceForStatus(status)};
  const auto retry = retryText(headers);
  if (!retry.empty()) complaint.detail += ", to come back " + retry;
  if (status == 407 || status == 511 || !isPageForPeople(answer)) return complaint;
  if (isProxied || headers.contains("X-Squid-Error")) {
    const auto via = headers.value("Via");
    complaint.detail += ", from a proxy or from the service behind it" +
                        (via ? " (" + std::string(*via) + ")" : std::string());
    complaint.advice += "; if it is the proxy, " + adviceForProxy();
  } else if (answer.response.url.host() != asked) {
    complaint.detail += ", from " + std::string(answer.response.url.host());
  }
  return complaint;
}

}  // namespace

std::string adviceForProxy() {
  return "have it let the service's host pass, or name it in no_proxy";
}

std::string adviceFor(const AnyError& error) {
  if (const auto* general = error.as<GeneralError>()) {
    const auto* wrapper = general->as<GeneralError::underlying>();
    return wrapper != nullptr ? adviceFor(wrapper->error) : "";
  }
  if (const auto* transport = error.as<URLError>()) return adviceForCode(transport->code);
  if (const auto* response = error.as<Response::Error>()) {
    return adviceForStatus(response->as<Response::Error::badStatus>()->status);
  }
  if (const auto* session = error.as<SessionError>()) {
    const auto* status = session->as<SessionError::unexpectedStatus>();
    return status != nullptr ? adviceForStatus(status->status) : "the service gives no session";
  }
  return "the service has changed, or something else answers: orvo get shows what it says, and "
         "orvo parse what is read in it";
}

std::optional<Complaint> complaintAbout(const HTTPResult& answer, bool isProxied,
                                        std::string_view asked) {
  constexpr int kFirstFailure = 300;
  constexpr int kFirstError = 400;
  const int status = answer.response.statusCode;
  if (status >= kFirstError) return complaintAboutStatus(answer, isProxied, asked);
  if (isPageForPeople(answer)) return stranger(answer, isProxied, asked);
  if (status < kFirstFailure) return std::nullopt;
  return Complaint{"status " + std::to_string(status), adviceForStatus(status)};
}

std::optional<Date> dateOf(const HTTPURLResponse& response) {
  static constexpr std::array kMonths{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                      "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  const std::string text(response.headers.value("Date").value_or(""));
  std::array<char, 4> month{};
  std::tm fields{};
  // NOLINTNEXTLINE(cert-err34-c): a number that is too large gives a date that is far off
  if (std::sscanf(text.c_str(), "%*3s, %2d %3s %4d %2d:%2d:%2d GMT", &fields.tm_mday, month.data(),
                  &fields.tm_year, &fields.tm_hour, &fields.tm_min, &fields.tm_sec) != 6) {
    return std::nullopt;
  }
  const auto found = std::ranges::find(kMonths, std::string_view(month.data()));
  if (found == kMonths.end()) return std::nullopt;
  fields.tm_mon = static_cast<int>(found - kMonths.begin());
  fields.tm_year -= 1900;
  return Date(std::int64_t{1000} * timegm(&fields));
}

}  // namespace orvo::tool
