#include <fmt/format.h>
#include <netdb.h>
#include <tool/ErrorReport.h>
#include <tool/Wording.h>
#include <tool/doctor/Advice.h>
#include <tool/doctor/Checkup.h>
#include <tool/doctor/TLSCheck.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace orvo::tool {

namespace {

std::uint16_t portOf(const URL& url) {
  constexpr std::uint16_t kHTTPS = 443;
  constexpr std::uint16_t kHTTP = 80;
  return url.port().value_or(url.scheme() == "https" ? kHTTPS : kHTTP);
}

const char* familyName(int family) { return family == AF_INET6 ? "IPv6" : "IPv4"; }

/// What keeps a host from being reached, and what to do.
std::string adviceForSystem(int error) {
  const bool isRefused = error == ECONNREFUSED;
  if (!isRefused && !hasNetwork()) return "the device has no network: connect it";
  switch (error) {
    case ECONNREFUSED:
      return "nothing listens there: check the port, and whether the server runs";
    case ETIMEDOUT:
      return "a firewall may swallow it, or the host is down";
    case ENETUNREACH:
    case EHOSTUNREACH:
      return "no way leads there: check the device's network and its router";
    default:
      return "check the device's network";
  }
}

std::string adviceForName(const Resolution& resolution, bool isCompiledIn) {
  if (!hasNetwork()) return "the device has no network: connect it";
  if (resolution.error == EAI_NONAME && isCompiledIn) {
    return "it is compiled in: name a service with --api URL, ORVO_API or a profile";
  }
  if (resolution.error == EAI_NONAME) return "check how the host is written";
  return "no name server answers: check the device's network and its name servers";
}

}  // namespace

Checkup::Checkup(Tool& tool, URL api, std::chrono::milliseconds limit, Tell tell)
    : tool_(tool),
      api_(std::move(api)),
      limit_(limit),
      tell_(std::move(tell)),
      proxy_(proxyFor(api_)),
      host_(proxy_ ? proxy_->host : api_.host()),
      port_(proxy_ ? proxy_->port : portOf(api_)) {}

void Checkup::begin() {
  begun_ = std::chrono::steady_clock::now();
  tool_.endWaitsAt(begun_ + limit_);
}

std::chrono::milliseconds Checkup::left() const {
  using std::chrono::milliseconds;
  const auto end = begun_ + limit_;
  return std::max(std::chrono::ceil<milliseconds>(end - std::chrono::steady_clock::now()),
                  milliseconds(1));
}

void Checkup::tell(Finding finding) { tell_(finding); }

void Checkup::skip(std::initializer_list<const char*> names, const std::string& because) {
  for (const char* name : names) tell(skipped(name, because));
}

Finding Checkup::failed(const std::string& name, const AnyError& error) {
  Finding finding = bad(name, explanation(error), adviceFor(error));
  finding.facts = errorJson(error);
  return finding;
}

void Checkup::run() {
  const auto skipRest = [this](const char* because) {
    skip({"session", "configuration", "page", "image", "stream"}, because);
    checkClock();
  };
  if (proxy_ && !proxy_->isPlain) {
    skip({"name", "address families", "connection", "TLS"},
         proxy_->variable + " names a proxy, " + proxy_->address + ", that only libcurl speaks to");
  } else if (!findName()) {
    skip({"address families", "connection", "TLS"}, "there is no address");
    return skipRest("there is no address");
  } else if (!connect()) {
    skip({"TLS"}, "there is no connection");
    return skipRest("there is no connection");
  } else if (!secure()) {
    return skipRest("there is no secure connection");
  }
  openSession();
  checkClock();
  fetchConfiguration();
  fetchContent();
}

bool Checkup::findName() {
  begin();
  const std::string of = proxy_ ? " (the proxy that " + proxy_->variable + " names)" : "";
  const Resolution resolution = resolve(host_, port_, left());
  addresses_ = resolution.addresses;
  if (addresses_.empty()) {
    const char* const why = resolution.error == 0 ? "no answer" : gai_strerror(resolution.error);
    tell(since(begun_, bad("name", host_ + of + ": " + why,
                           adviceForName(resolution, !tool_.options().api))));
    return false;
  }
  std::vector<std::string> texts;
  for (const Address& address : addresses_) texts.push_back(address.text);
  constexpr std::size_t kMost = 4;
  const bool isLong = texts.size() > kMost;
  Finding finding{.name = "name"};
  finding.facts =
      Json::object({{"host", host_},
                    {"addresses", Json::list(texts, [](const auto& text) { return Json(text); })}});
  if (isLong) texts.resize(kMost);
  finding.detail = isAddress(host_) ? host_ + of + " is an address"
                                    : host_ + of + ": " + joined(texts) + (isLong ? ", …" : "");
  tell(since(begun_, finding));
  return true;
}

std::optional<Attempt> Checkup::tryFamily(int family) {
  constexpr std::ptrdiff_t kMost = 3;
  // IPv6 is tried first; the other family needs time, too.
  const bool isLast =
      family == AF_INET || std::ranges::count(addresses_, AF_INET, &Address::family) == 0;
  auto untried = std::min(std::ranges::count(addresses_, family, &Address::family), kMost);
  const Deadline deadline(isLast ? left() : limit_ / 2);
  std::optional<Attempt> last;
  for (const Address& address : addresses_) {
    if (address.family != family || untried == 0) continue;
    last = connectTo(address, deadline.left() / untried--);
    if (last->error != 0) continue;
    reached_ = address.text;
    return last;
  }
  return last;
}

bool Checkup::connect() {
  begin();
  std::vector<std::string> texts;
  Finding families{.name = "address families", .facts = Json::object()};
  Finding connection{.name = "connection"};
  int error = 0;
  for (const int family : {AF_INET6, AF_INET}) {
    auto attempt = tryFamily(family);
    if (!attempt) continue;
    const std::string name = familyName(family);
    const bool isThere = attempt->error == 0;
    families.facts.set(name, isThere);
    texts.push_back(
        name + (isThere ? " gets through" : std::string(": ") + std::strerror(attempt->error)));
    if (isThere) {
      socket_ = std::move(attempt->socket);
      connection.time = attempt->time;
    } else {
      error = attempt->error;
      families.advice = name + " does not get through: mend it, or switch it off";
    }
  }
  families.detail = joined(texts);
  const std::string port = "port " + std::to_string(port_);
  if (socket_.descriptor() < 0) {
    families.outcome = Finding::Outcome::bad;
    families.advice.clear();
    tell(since(begun_, families));
    tell(bad("connection", port + " is not reached",
             proxy_ ? "mend the proxy that " + proxy_->variable + " names, or unset the variable"
                    : adviceForSystem(error)));
    return false;
  }
  tell(since(begun_, families));
  connection.detail = reached_ + " " + port;
  if (proxy_) connection.detail += ", the proxy of " + proxy_->variable;
  tell(std::move(connection));
  return true;
}

bool Checkup::secure() {
  begin();
  if (api_.scheme() != "https") {
    tell({.name = "TLS", .detail = "none: the service is spoken to in plain HTTP"});
    return true;
  }
  const std::string host(api_.host());
  if (proxy_) {
    const std::string name = host.find(':') != std::string::npos ? "[" + host + "]" : host;
    const auto refusal =
        openTunnel(socket_.descriptor(), *proxy_, fmt::format("{}:{}", name, portOf(api_)), left());
    if (refusal) {
      constexpr int kLoginWanted = 407;
      const bool wantsLogin = refusal->starts_with("it answers \"HTTP/1.") &&
                              refusal->find(" 407") == refusal->find(' ', 11);
      tell(since(begun_, bad("TLS", "the proxy does not let it pass: " + *refusal,
                             wantsLogin ? adviceForStatus(kLoginWanted) : adviceForProxy())));
      return false;
    }
  }
  const Handshake handshake = shakeHands(socket_.descriptor(), host, left());
  Finding finding = tlsFinding(handshake, host, Clock::system()->now());
  const bool isGood = finding.outcome == Finding::Outcome::good;
  tell(since(begun_, std::move(finding)));
  socket_ = Socket();
  return isGood;
}

}  // namespace orvo::tool
