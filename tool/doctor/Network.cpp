#include <arpa/inet.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netdb.h>
#include <tool/doctor/Network.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

namespace orvo::tool {

namespace {

/// The addresses of getaddrinfo's list, each once.
std::vector<Address> addressesOf(const addrinfo* list) {
  std::vector<Address> addresses;
  for (; list != nullptr; list = list->ai_next) {
    std::array<char, NI_MAXHOST> text{};
    if (list->ai_addrlen > sizeof(sockaddr_storage) ||
        getnameinfo(list->ai_addr, list->ai_addrlen, text.data(), text.size(), nullptr, 0,
                    NI_NUMERICHOST) != 0) {
      continue;
    }
    Address address{.family = list->ai_family, .text = text.data(), .size = list->ai_addrlen};
    std::copy_n(reinterpret_cast<const char*>(list->ai_addr), list->ai_addrlen,
                reinterpret_cast<char*>(&address.value));
    addresses.push_back(address);
  }
  return addresses;
}

Resolution resolveNow(const std::string& host, std::uint16_t port) {
  addrinfo hints{};
  hints.ai_socktype = SOCK_STREAM;
  addrinfo* list = nullptr;
  const int error = getaddrinfo(host.c_str(), std::to_string(port).c_str(), &hints, &list);
  if (error != 0) return {.error = error};
  Resolution resolution{.addresses = addressesOf(list)};
  freeaddrinfo(list);
  return resolution;
}

}  // namespace

std::chrono::milliseconds Deadline::left() const {
  const auto left =
      std::chrono::ceil<std::chrono::milliseconds>(end_ - std::chrono::steady_clock::now());
  return std::max(left, std::chrono::milliseconds(0));
}

bool Deadline::wait(int descriptor, short events) const {
  while (true) {
    pollfd event{descriptor, events, 0};
    const int ready = poll(&event, 1, static_cast<int>(left().count()));
    if (ready >= 0 || errno != EINTR) return ready > 0;
  }
}

Socket::~Socket() {
  if (descriptor_ >= 0) close(descriptor_);
}

bool isAddress(const std::string& host) {
  std::array<unsigned char, sizeof(in6_addr)> address{};
  return inet_pton(AF_INET, host.c_str(), address.data()) == 1 ||
         inet_pton(AF_INET6, host.c_str(), address.data()) == 1;
}

Resolution resolve(const std::string& host, std::uint16_t port, std::chrono::milliseconds limit) {
  struct Shared {
    std::mutex mutex;
    std::condition_variable done;
    bool isDone = false;
    Resolution resolution;
  };
  const auto shared = std::make_shared<Shared>();
  std::thread([shared, host, port] {
    Resolution resolution = resolveNow(host, port);
    const std::lock_guard guard(shared->mutex);
    shared->resolution = std::move(resolution);
    shared->isDone = true;
    shared->done.notify_all();
  }).detach();
  std::unique_lock lock(shared->mutex);
  shared->done.wait_for(lock, limit, [&] { return shared->isDone; });
  return shared->resolution;
}

Attempt connectTo(const Address& address, std::chrono::milliseconds limit) {
  const auto start = std::chrono::steady_clock::now();
  const auto ended = [&](Socket socket, int error) {
    return Attempt{std::move(socket), std::chrono::steady_clock::now() - start, error};
  };
  Socket made(socket(address.family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  if (made.descriptor() < 0) return ended(Socket(), errno);
  if (connect(made.descriptor(), reinterpret_cast<const sockaddr*>(&address.value), address.size) ==
      0) {
    return ended(std::move(made), 0);
  }
  if (errno != EINPROGRESS) return ended(Socket(), errno);
  if (!Deadline(limit).wait(made.descriptor(), POLLOUT)) return ended(Socket(), ETIMEDOUT);
  int error = 0;
  socklen_t size = sizeof error;
  getsockopt(made.descriptor(), SOL_SOCKET, SO_ERROR, &error, &size);
  return error != 0 ? ended(Socket(), error) : ended(std::move(made), 0);
}

bool hasNetwork() {
  ifaddrs* list = nullptr;
  if (getifaddrs(&list) != 0) return true;
  bool found = false;
  for (const ifaddrs* each = list; each != nullptr; each = each->ifa_next) {
    const bool isUp = (each->ifa_flags & IFF_UP) != 0 && (each->ifa_flags & IFF_LOOPBACK) == 0;
    const int family = each->ifa_addr != nullptr ? each->ifa_addr->sa_family : AF_UNSPEC;
    found = found || (isUp && (family == AF_INET || family == AF_INET6));
  }
  freeifaddrs(list);
  return found;
}

}  // namespace orvo::tool
