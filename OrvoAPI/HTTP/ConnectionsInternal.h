#pragma once

#include <OrvoAPI/Base/detail/Lock.h>
#include <OrvoAPI/HTTP/HTTPExchangeInternal.h>

#include <curl/curl.h>
#include <sys/types.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvo::detail {

/// The connections that libcurl has open in one pool, by their sockets: which may be dead, and
/// which brings more than it may. libcurl opens and closes them through here, so that a socket in
/// the list is always the one that is meant; but libcurl 7.88 closes one that it gives up while it
/// connects without calling back, which `mayRest` finds out. Used on the network thread; the
/// watchdog reads it from its own, and may shut a connection down.
///
/// A connection is *suspect* when a request to its host has timed out, or the device has slept, and
/// nothing was heard on it since; *retired* when the app says that the network has changed.
/// Nothing new is sent on either, but what is under way goes on: with none under way they are shut
/// down, which libcurl notices before it uses them again.
class Connections {
 public:
  /// Names a connection for the life of the process; its socket's number may be reused.
  struct ID {
    int socket = -1;
    std::uint64_t number = 0;  // zero: none
    friend bool operator==(const ID&, const ID&) = default;
  };
  /// Whether anything is under way on a connection.
  using InUse = std::function<bool(const ID&)>;

  Connections();
  ~Connections();
  Connections(const Connections&) = delete;
  Connections& operator=(const Connections&) = delete;

  /// As libcurl's own, except that programs which the app starts do not inherit the socket.
  int open(const curl_sockaddr& address, std::string_view host);
  int close(int socket);
  /// Whether the connection, of which libcurl wants nothing at present, stays open: a request was
  /// sent on it. One that was given up before is no longer listed if it was closed.
  [[nodiscard]] bool mayRest(int socket);
  /// The open connection with these endpoints, or none.
  [[nodiscard]] ID find(std::string_view peer, int peerPort, int localPort);

  /// Bytes have arrived; true from time to time, when it should be weighed.
  [[nodiscard]] bool noteInput(int socket);
  /// When it is weighed: whether nobody has read a byte of it for thousands of rounds, although
  /// bytes were there all the while.
  [[nodiscard]] bool isStuck(int socket);
  /// A transfer has ended to which that many bytes were delivered.
  void settle(const ID& connection, std::uint64_t delivered);
  /// Whether it brings too much: since some earlier point, more than `kMostBytesForOne` times the
  /// sum of what was delivered and the bound of one answer. `delivered` is that of the transfers
  /// under way.
  [[nodiscard]] bool isOverdrawn(const ID& connection, std::uint64_t delivered,
                                 std::uint64_t bound);
  static constexpr std::uint64_t kMostBytesForOne = 4;

  /// All bytes that have come on it so far, encryption included; of those that are closed, only
  /// the last one is remembered.
  [[nodiscard]] std::uint64_t received(const ID& connection);

  /// A request to the host has timed out.
  void suspectHost(std::string_view host);
  void suspectAll();
  void retireAll();
  /// Retires a connection at rest on which an answer has come that nobody asked for, such as 408
  /// before a server closes it: libcurl would take it for the answer to the next request.
  void retireIfUnasked(int socket);
  /// Whether a connection to the host is open on which nothing new may be sent.
  [[nodiscard]] bool isCondemned(std::string_view host);
  void retire(const ID& connection);
  /// Shuts down those on which nothing may be sent and nothing is under way.
  void shutDownUnused(const InUse& isInUse);

  /// One of those that the watchdog has shut down, until none is left.
  [[nodiscard]] std::optional<ID> takeFlooded();

  // For the watchdog.

  /// From here on what is read from each counts as its growth.
  void beginGrowth();
  /// The most that any one has grown by.
  [[nodiscard]] std::uint64_t greatestGrowth();
  /// Shuts that one down.
  void shutDownBusiest();

 private:
  /// As text; without memory of its own, for libcurl asks where nothing may be thrown.
  using Address = std::array<char, 46>;

  struct Connection {
    std::uint64_t number = 0;
    ino_t inode = 0;  // tells the socket from others that get its number
    std::string host = {};
    Address peer = {};  // with the ports, known once it is connected
    int peerPort = 0;
    int localPort = 0;
    NetworkTime lastHeard = {};
    bool isUsed = false;  // a request was sent on it
    bool isSuspect = false;
    bool isRetired = false;
    bool isShutDown = false;
    unsigned inputs = 0;
    std::uint64_t delivered = 0;   // to transfers that have ended
    std::int64_t leastExcess = 0;  // of bytes that came over those that were paid for
    std::uint64_t weighed = 0;     // bytes read when it was last weighed
    unsigned unreadWeighings = 0;  // in a row, since when it has been the same
    std::uint64_t readBefore = 0;  // bytes that were read when growth began
    std::uint64_t growth = 0;
  };

  static void learnEnds(int socket, Connection& connection);
  Connection* get(const ID& id) ORVO_REQUIRES(lock_);
  void condemn(Connection& connection, bool Connection::*how) ORVO_REQUIRES(lock_);

  Lock lock_;
  std::map<int, Connection> connections_ ORVO_GUARDED_BY(lock_);
  std::uint64_t lastNumber_ ORVO_GUARDED_BY(lock_) = 0;
  std::vector<ID> flooded_ ORVO_GUARDED_BY(lock_);  // has room for all
  ID lastClosed_ ORVO_GUARDED_BY(lock_);
  std::uint64_t receivedOnLastClosed_ ORVO_GUARDED_BY(lock_) = 0;
  bool mayBeCondemned_ = false;  // network thread only: some are, or were
  std::atomic<bool> hasFlooded_{false};
};

}  // namespace orvo::detail
