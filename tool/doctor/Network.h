#pragma once

#include <poll.h>
#include <sys/socket.h>

#include <chrono>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace orvo::tool {

/// When to stop waiting.
class Deadline {
 public:
  explicit Deadline(std::chrono::milliseconds limit)
      : end_(std::chrono::steady_clock::now() + limit) {}

  [[nodiscard]] std::chrono::milliseconds left() const;
  /// Waits for one of the events of poll; false when the time is up.
  [[nodiscard]] bool wait(int descriptor, short events) const;

 private:
  const std::chrono::steady_clock::time_point end_;
};

/// Owns a descriptor; -1 is none.
class Socket {
 public:
  explicit Socket(int descriptor = -1) : descriptor_(descriptor) {}
  Socket(Socket&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
  Socket& operator=(Socket&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
  }
  ~Socket();

  [[nodiscard]] int descriptor() const { return descriptor_; }

 private:
  int descriptor_;
};

/// One address of a host.
struct Address {
  int family = 0;
  std::string text;
  sockaddr_storage value{};
  socklen_t size = 0;
};

struct Resolution {
  std::vector<Address> addresses{};
  /// What getaddrinfo returned; 0 with addresses, and when it took too long.
  int error = 0;
};

/// Whether the text is an address itself.
[[nodiscard]] bool isAddress(const std::string& host);

/// The host's addresses. It may take longer than the limit to be given up by the system; nobody
/// waits for that.
[[nodiscard]] Resolution resolve(const std::string& host, std::uint16_t port,
                                 std::chrono::milliseconds limit);

struct Attempt {
  Socket socket;
  std::chrono::nanoseconds time{0};
  /// An error number of the system; 0 when it is connected.
  int error = 0;
};

[[nodiscard]] Attempt connectTo(const Address& address, std::chrono::milliseconds limit);

/// Whether an interface beside the loopback has an address.
[[nodiscard]] bool hasNetwork();

}  // namespace orvo::tool
