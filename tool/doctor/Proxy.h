#pragma once

#include <OrvoAPI/HTTP/URL.h>

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace orvo::tool {

/// The proxy that the environment names for an address.
struct Proxy {
  /// Which variable names it.
  std::string variable;
  /// Without a user's name and password.
  std::string address{};
  std::string host{};
  std::uint16_t port = 0;
  /// The value of Proxy-Authorization; may be empty.
  std::string credentials{};
  /// Whether it is one that is spoken to in plain HTTP.
  bool isPlain = true;
};

/// As libcurl chooses it; nothing when the address is reached without one.
[[nodiscard]] std::optional<Proxy> proxyFor(const URL& url);

/// Has the proxy at the other end of the socket connect to a host. Returns what it says against
/// that, or nothing.
[[nodiscard]] std::optional<std::string> openTunnel(int socket, const Proxy& proxy,
                                                    const std::string& target,
                                                    std::chrono::milliseconds limit);

}  // namespace orvo::tool
