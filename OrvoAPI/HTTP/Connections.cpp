#include <OrvoAPI/HTTP/ConnectionsInternal.h>
#include <OrvoAPI/HTTP/NetworkThreadInternal.h>
#include <OrvoAPI/HTTP/WatchdogInternal.h>

#include <arpa/inet.h>
#include <linux/tcp.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <limits>
#include <new>
#include <utility>

namespace orvo::detail {
namespace {

/// A connection heard from this shortly before a timeout is not its cause.
constexpr std::chrono::milliseconds kAlive{500};
constexpr unsigned kInputsBetweenWeighings = 16;
/// So often in a row no end of a connection, nor any answer that is taken slowly, is weighed
/// without a byte having been read.
constexpr unsigned kWeighingsOfStuck = 1'000;

/// 0 when nothing is open under that number.
ino_t inodeOf(int socket) {
  struct stat status {};
  return fstat(socket, &status) == 0 ? status.st_ino : 0;
}

/// All bytes that have come over the wire, headers and encryption included.
std::uint64_t bytesReceived(int socket) {
  tcp_info info{};
  socklen_t size = sizeof info;
  if (getsockopt(socket, IPPROTO_TCP, TCP_INFO, &info, &size) != 0) return 0;
  return info.tcpi_bytes_received;
}

/// Whether the peer has sent all that it will.
bool peerHasEnded(int socket) {
  pollfd ending{socket, POLLRDHUP, 0};
  return poll(&ending, 1, 0) == 1;
}

/// Those of them that somebody has read.
std::uint64_t bytesRead(int socket) {
  int unread = 0;
  if (ioctl(socket, FIONREAD, &unread) != 0) unread = 0;
  const auto received = bytesReceived(socket);
  return received - std::min(received, static_cast<std::uint64_t>(unread));
}

/// Spares libcurl what has come already: megabytes of frames or records, each to be looked at.
void discardUnread(int socket) {
  constexpr int kMostTimes = 1024;
  std::array<char, 65'536> bytes;
  for (int i = 0; i < kMostTimes; ++i) {
    if (recv(socket, bytes.data(), bytes.size(), MSG_DONTWAIT) <= 0) return;
  }
}

/// The address as text, and the port.
template <std::size_t size>
int endOf(const sockaddr_storage& storage, std::array<char, size>& text) {
  static_assert(size >= INET6_ADDRSTRLEN);
  if (storage.ss_family == AF_INET6) {
    const auto& address = reinterpret_cast<const sockaddr_in6&>(storage);
    inet_ntop(AF_INET6, &address.sin6_addr, text.data(), socklen_t{size});
    return ntohs(address.sin6_port);
  }
  const auto& address = reinterpret_cast<const sockaddr_in&>(storage);
  inet_ntop(AF_INET, &address.sin_addr, text.data(), socklen_t{size});
  return ntohs(address.sin_port);
}

NetworkTime now() { return NetworkThread::shared().now(); }

}  // namespace

Connections::Connections() { Watchdog::shared().add(*this); }

Connections::~Connections() { Watchdog::shared().remove(*this); }

int Connections::open(const curl_sockaddr& address, std::string_view host) {
  const int opened = socket(address.family, address.socktype | SOCK_CLOEXEC, address.protocol);
  if (opened < 0) return opened;
  NetworkThread::shared().hasOpened(opened);
  try {
    const LockGuard guard(lock_);
    flooded_.reserve(flooded_.size() + connections_.size() + 1);
    connections_[opened] = {.number = ++lastNumber_,
                            .inode = inodeOf(opened),
                            .host = std::string(host),
                            .lastHeard = now()};
  } catch (const std::bad_alloc&) {
    (void)close(opened);
    return -1;
  }
  return opened;
}

int Connections::close(int socket) {
  NetworkThread::shared().unwatch(socket);
  // Within the lock: the watchdog must not shut down whoever gets the number next.
  const LockGuard guard(lock_);
  if (const auto found = connections_.find(socket); found != connections_.end()) {
    lastClosed_ = {socket, found->second.number};
    receivedOnLastClosed_ = bytesReceived(socket);
    connections_.erase(found);
  }
  return ::close(socket);
}

bool Connections::mayRest(int socket) {
  const LockGuard guard(lock_);
  const auto found = connections_.find(socket);
  if (found == connections_.end()) return false;
  const auto& connection = found->second;
  const bool isUsed = connection.isUsed;
  if (!isUsed && inodeOf(socket) != connection.inode) connections_.erase(found);
  return isUsed;
}

void Connections::learnEnds(int socket, Connection& connection) {
  sockaddr_storage storage{};
  socklen_t size = sizeof storage;
  auto* const address = reinterpret_cast<sockaddr*>(&storage);
  if (getpeername(socket, address, &size) != 0) return;  // it is not connected yet
  connection.peerPort = endOf(storage, connection.peer);
  size = sizeof storage;
  Address own{};
  if (getsockname(socket, address, &size) == 0) connection.localPort = endOf(storage, own);
}

Connections::ID Connections::find(std::string_view peer, int peerPort, int localPort) {
  const LockGuard guard(lock_);
  for (auto& [socket, connection] : connections_) {
    if (connection.localPort == 0) learnEnds(socket, connection);
    if (connection.localPort == localPort && connection.peerPort == peerPort &&
        connection.peer.data() == peer) {
      connection.isUsed = true;
      return {socket, connection.number};
    }
  }
  return {};
}

Connections::Connection* Connections::get(const ID& id) {
  const auto found = connections_.find(id.socket);
  const bool isIt = found != connections_.end() && found->second.number == id.number;
  return isIt ? &found->second : nullptr;
}

bool Connections::noteInput(int socket) {
  const LockGuard guard(lock_);
  const auto found = connections_.find(socket);
  if (found == connections_.end()) return false;
  found->second.lastHeard = now();
  found->second.isSuspect = false;
  return ++found->second.inputs % kInputsBetweenWeighings == 0;
}

bool Connections::isStuck(int socket) {
  const LockGuard guard(lock_);
  const auto found = connections_.find(socket);
  if (found == connections_.end()) return false;
  auto& connection = found->second;
  const auto read = bytesRead(socket);
  // Where the system does not count what has come, nothing is known.
  const bool isUnread = read > 0 && read == std::exchange(connection.weighed, read);
  connection.unreadWeighings = isUnread ? connection.unreadWeighings + 1 : 0;
  return connection.unreadWeighings >= kWeighingsOfStuck;
}

void Connections::settle(const ID& connection, std::uint64_t delivered) {
  const LockGuard guard(lock_);
  if (auto* const known = get(connection)) known->delivered += delivered;
}

std::uint64_t Connections::received(const ID& connection) {
  const LockGuard guard(lock_);
  if (connection == lastClosed_) return receivedOnLastClosed_;
  return get(connection) != nullptr ? bytesReceived(connection.socket) : 0;
}

bool Connections::isOverdrawn(const ID& connection, std::uint64_t delivered, std::uint64_t bound) {
  constexpr std::uint64_t kMost = std::numeric_limits<std::int64_t>::max() / kMostBytesForOne;
  const LockGuard guard(lock_);
  auto* const known = get(connection);
  if (known == nullptr) return false;
  const auto paid = std::min(known->delivered + delivered, kMost) * kMostBytesForOne;
  const auto excess = static_cast<std::int64_t>(bytesReceived(connection.socket) - paid);
  known->leastExcess = std::min(known->leastExcess, excess);
  const auto most = static_cast<std::int64_t>(std::min(bound, kMost) * kMostBytesForOne);
  return excess - known->leastExcess > most;
}

void Connections::condemn(Connection& connection, bool Connection::*how) {
  connection.*how = true;
  mayBeCondemned_ = true;
}

void Connections::suspectHost(std::string_view host) {
  const LockGuard guard(lock_);
  for (auto& [socket, connection] : connections_) {
    if (connection.host == host && connection.lastHeard + kAlive <= now()) {
      condemn(connection, &Connection::isSuspect);
    }
  }
}

void Connections::suspectAll() {
  const LockGuard guard(lock_);
  for (auto& [socket, connection] : connections_) condemn(connection, &Connection::isSuspect);
}

void Connections::retireAll() {
  const LockGuard guard(lock_);
  for (auto& [socket, connection] : connections_) condemn(connection, &Connection::isRetired);
}

void Connections::retire(const ID& connection) {
  const LockGuard guard(lock_);
  if (auto* const known = get(connection)) condemn(*known, &Connection::isRetired);
}

void Connections::retireIfUnasked(int socket) {
  unsigned char first = 0;
  if (recv(socket, &first, 1, MSG_PEEK | MSG_DONTWAIT) != 1) return;  // libcurl notices the end
  // What begins as a record of TLS may be a ticket or a frame of HTTP/2, unless nothing follows.
  constexpr unsigned char kFirstRecordType = 20, kLastRecordType = 24;
  const bool isTLS = first >= kFirstRecordType && first <= kLastRecordType;
  if (isTLS && !peerHasEnded(socket)) return;
  const LockGuard guard(lock_);
  const auto found = connections_.find(socket);
  if (found != connections_.end()) condemn(found->second, &Connection::isRetired);
}

bool Connections::isCondemned(std::string_view host) {
  if (!mayBeCondemned_) return false;
  const LockGuard guard(lock_);
  return std::any_of(connections_.begin(), connections_.end(), [host](const auto& entry) {
    const auto& connection = entry.second;
    return connection.host == host && !connection.isShutDown &&
           (connection.isSuspect || connection.isRetired);
  });
}

void Connections::shutDownUnused(const InUse& isInUse) {
  if (!mayBeCondemned_) return;
  const LockGuard guard(lock_);
  mayBeCondemned_ = false;
  for (auto& [socket, connection] : connections_) {
    if (connection.isShutDown || !(connection.isSuspect || connection.isRetired)) continue;
    if (isInUse({socket, connection.number})) {
      mayBeCondemned_ = true;
    } else {
      connection.isShutDown = true;
      shutdown(socket, SHUT_RDWR);
    }
  }
}

std::optional<Connections::ID> Connections::takeFlooded() {
  if (!hasFlooded_.load(std::memory_order_relaxed)) return std::nullopt;
  const LockGuard guard(lock_);
  hasFlooded_ = !flooded_.empty();
  if (flooded_.empty()) return std::nullopt;
  const auto flooded = flooded_.back();
  flooded_.pop_back();
  return flooded;
}

void Connections::beginGrowth() {
  const LockGuard guard(lock_);
  for (auto& [socket, connection] : connections_) connection.readBefore = bytesRead(socket);
}

std::uint64_t Connections::greatestGrowth() {
  const LockGuard guard(lock_);
  std::uint64_t greatest = 0;
  for (auto& [socket, connection] : connections_) {
    const auto read = bytesRead(socket);
    connection.growth = read - std::min(connection.readBefore, read);
    if (!connection.isShutDown) greatest = std::max(greatest, connection.growth);
  }
  return greatest;
}

void Connections::shutDownBusiest() {
  const LockGuard guard(lock_);
  std::pair<const int, Connection>* busiest = nullptr;
  for (auto& entry : connections_) {
    if (entry.second.isShutDown) continue;
    if (busiest == nullptr || entry.second.growth > busiest->second.growth) busiest = &entry;
  }
  if (busiest == nullptr) return;
  busiest->second.isShutDown = true;
  flooded_.push_back({busiest->first, busiest->second.number});
  hasFlooded_ = true;
  shutdown(busiest->first, SHUT_RDWR);
  discardUnread(busiest->first);
}

}  // namespace orvo::detail
