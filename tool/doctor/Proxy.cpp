#include <sys/socket.h>
#include <tool/Base64.h>
#include <tool/Text.h>
#include <tool/doctor/Network.h>
#include <tool/doctor/Proxy.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <vector>

namespace orvo::tool {

namespace {

/// Whether no_proxy, whose entries are names with all that ends in them, exempts the host.
bool isExempt(std::string_view host, std::string_view list) {
  if (list == "*") return true;
  while (!list.empty()) {
    const std::size_t begin = std::min(list.find_first_not_of(", "), list.size());
    list.remove_prefix(begin);
    std::string_view entry = list.substr(0, list.find_first_of(", "));
    list.remove_prefix(entry.size());
    if (entry.starts_with('.')) entry.remove_prefix(1);
    if (entry.empty() || !host.ends_with(entry)) continue;
    if (host.size() == entry.size() || host[host.size() - entry.size() - 1] == '.') return true;
  }
  return false;
}

const char* firstOf(const std::vector<std::string>& names, std::string& found) {
  for (const std::string& name : names) {
    const char* value = std::getenv(name.c_str());
    if (value == nullptr || *value == '\0') continue;
    found = name;
    return value;
  }
  return nullptr;
}

}  // namespace

std::optional<Proxy> proxyFor(const URL& url) {
  std::string variable;
  const char* exempt = firstOf({"no_proxy", "NO_PROXY"}, variable);
  if (exempt != nullptr && isExempt(url.host(), exempt)) return std::nullopt;
  const bool isSecure = url.scheme() == "https";
  const char* value = firstOf(
      isSecure ? std::vector<std::string>{"https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY"}
               : std::vector<std::string>{"http_proxy", "all_proxy", "ALL_PROXY"},
      variable);
  if (value == nullptr) return std::nullopt;
  std::string text(value);
  if (text.find("://") == std::string::npos) text.insert(0, "http://");
  Proxy proxy{.variable = variable, .address = withoutUserInfo(text)};
  const auto address = URL::parse(text);
  proxy.isPlain = address && address->scheme() == "http";
  if (!address) return proxy;
  constexpr std::uint16_t kDefaultPort = 1080;  // libcurl's
  proxy.host = address->host();
  proxy.port = address->port().value_or(kDefaultPort);
  const std::size_t begin = text.find("://") + 3;
  const std::size_t at = text.substr(0, text.find('/', begin)).rfind('@');
  if (at != std::string::npos && at > begin) {
    proxy.credentials = "Basic " + inBase64(text.substr(begin, at - begin));
  }
  return proxy;
}

std::optional<std::string> openTunnel(int socket, const Proxy& proxy, const std::string& target,
                                      std::chrono::milliseconds limit) {
  std::string request = "CONNECT " + target + " HTTP/1.1\r\nHost: " + target + "\r\n";
  if (!proxy.credentials.empty()) request += "Proxy-Authorization: " + proxy.credentials + "\r\n";
  request += "\r\n";
  const Deadline deadline(limit);
  if (send(socket, request.data(), request.size(), MSG_NOSIGNAL) !=
      static_cast<ssize_t>(request.size())) {
    return "it closes the connection";
  }
  constexpr std::size_t kLargestHead = 65'536;
  std::string head;
  while (head.find("\r\n\r\n") == std::string::npos && head.size() < kLargestHead) {
    // Byte by byte: what follows the head is not for us to read.
    char byte = 0;
    if (!deadline.wait(socket, POLLIN)) return "it does not answer";
    if (recv(socket, &byte, 1, 0) != 1) return "it closes the connection";
    head += byte;
  }
  const std::string status = head.substr(0, head.find('\r'));
  const std::size_t code = status.find(' ');
  if (status.starts_with("HTTP/") && status.substr(code + 1, 1) == "2") return std::nullopt;
  return "it answers \"" + status.substr(0, 80) + "\"";
}

}  // namespace orvo::tool
