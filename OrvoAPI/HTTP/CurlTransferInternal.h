#pragma once

#include <OrvoAPI/HTTP/BodyBufferInternal.h>
#include <OrvoAPI/HTTP/ConnectionsInternal.h>
#include <OrvoAPI/HTTP/NetworkThreadInternal.h>

#include <curl/curl.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <new>
#include <optional>
#include <string_view>
#include <utility>

namespace orvo::detail {

struct CurlHost;
class CurlSession;

/// A place for one transfer at a time: the handle with its settings, and what has arrived. Used on
/// the network thread. The session keeps it for the next transfer, since making one costs more than
/// a short transfer itself.
class CurlTransfer {
 public:
  /// `share` holds the session's cookies and TLS sessions; `connections` are the pool's.
  CurlTransfer(const URLSessionConfiguration& configuration, CURLSH* share,
               Connections& connections);
  CurlTransfer(const CurlTransfer&) = delete;
  CurlTransfer& operator=(const CurlTransfer&) = delete;
  ~CurlTransfer();

  [[nodiscard]] static CurlTransfer* from(CURL* handle);
  [[nodiscard]] CURL* handle() const { return handle_; }
  [[nodiscard]] const std::shared_ptr<HTTPExchange>& exchange() const { return exchange_; }

  void begin(std::shared_ptr<HTTPExchange> exchange, CurlSession& session, CurlHost& host);
  /// Ends by libcurl's verdict.
  void end(CURLcode code);
  void end(HTTPOutcome outcome);
  /// Ends because of its own failure, or else of the time that has passed.
  void giveUp();
  /// Has failed where libcurl does not see it: its deadline has passed.
  void fail(URLError error) { failure_ = std::move(error); }
  /// Lets go of the exchange and of all that it needed.
  void clear();
  /// Notes in what is measured of its exchange what only libcurl knows; called at its end.
  void measure(RequestTimeline::Hop& hop) const;

  /// Its socket is ready. Until the header is complete that counts as activity, since libcurl
  /// reports only whole lines; not on a multiplexed connection, where it may be another exchange's.
  void noteSocketActivity(bool isInput);
  /// When the silence, the header or the whole will have lasted too long; long ago when it has
  /// failed.
  [[nodiscard]] NetworkTime deadline() const;
  /// Whether it has a failure that libcurl does not know of.
  [[nodiscard]] bool hasFailed() const { return failure_.has_value(); }

  /// The connection that it is sent on, or was; none while there is none.
  [[nodiscard]] const Connections::ID& connection() const { return connection_; }
  /// Has it wait for a connection that is being opened, which may carry it as well; called before
  /// it begins.
  void setWaits(bool waits);
  /// Makes it take a new connection, and resolve the name anew; called before it begins.
  void setFresh(bool connection, bool name);
  /// Bytes of the header, interim ones included, and of the body, decoded, so far.
  [[nodiscard]] std::uint64_t received() const { return received_; }
  [[nodiscard]] std::size_t headerBytes() const { return headerBytes_; }
  /// How many bytes there may be in all.
  [[nodiscard]] std::uint64_t bound() const {
    constexpr auto kMost = std::numeric_limits<std::uint64_t>::max();
    return maximumHeaderSize_ > kMost - maximumBodySize_ ? kMost
                                                         : maximumBodySize_ + maximumHeaderSize_;
  }

  [[nodiscard]] const CurlSession* session() const { return session_; }
  [[nodiscard]] CurlHost& host() const { return *host_; }
  /// What the pool notes about it.
  struct Place {
    std::size_t index = 0;
    int socket = -1;
  };
  [[nodiscard]] Place& place() { return place_; }

  /// Whether it is on that socket, or about to be.
  [[nodiscard]] bool isOn(int socket) const {
    return place_.socket == socket || connection_.socket == socket;
  }
  /// Whether it shares its connection with others.
  [[nodiscard]] bool isMultiplexed() const { return multiplexed_; }
  void setMultiplexed(bool multiplexed) { multiplexed_ = multiplexed; }

 private:
  CurlTransfer(const URLSessionConfiguration& configuration, Connections& connections);

  struct FreeList {
    void operator()(curl_slist* list) const { curl_slist_free_all(list); }
  };
  using List = std::unique_ptr<curl_slist, FreeList>;

  template <class T>
  void set(CURLoption option, T value) {
    // Otherwise it would go on with what it was set to before.
    if (curl_easy_setopt(handle_, option, value) == CURLE_OUT_OF_MEMORY) throw std::bad_alloc();
  }
  /// Its outcome, moved out.
  [[nodiscard]] HTTPOutcome outcome(CURLcode code);
  [[nodiscard]] URLError faultOfMemory();
  void setSecurity(const URLSessionConfiguration& configuration);
  void useFolder();
  void setCallbacks();
  void setMethod(const URLRequest& request);
  void setHeaders(const URLRequest& request);
  [[nodiscard]] bool receiveHeader(std::string_view line);
  [[nodiscard]] bool receiveBody(std::string_view bytes);
  template <class Receive>
  [[nodiscard]] std::size_t receive(std::string_view bytes, Receive&& receive);
  [[nodiscard]] bool failTooLong(const char* message);

  void noteActivity() { lastActivity_ = NetworkThread::shared().now(); }

  /// Only where there is a body to send: on a multiplexed connection nothing else tells of it.
  static int onProgress(void* self, curl_off_t, curl_off_t, curl_off_t, curl_off_t sent) {
    auto* const transfer = static_cast<CurlTransfer*>(self);
    if (std::exchange(transfer->sent_, sent) != sent) transfer->noteActivity();
    return 0;
  }
  void noteFirstByte(std::string_view statusLine);
  static int onResolve(void* resolver, void* reserved, void* self);
  static int onConnected(void* self, char* peer, char* local, int peerPort, int localPort);
  static int onTrace(CURL* handle, curl_infotype kind, char* bytes, std::size_t size, void* self);
  static std::size_t onHeader(char* bytes, std::size_t size, std::size_t count, void* self);
  static std::size_t onBody(char* bytes, std::size_t size, std::size_t count, void* self);
  static curl_socket_t onOpenSocket(void* self, curlsocktype purpose, curl_sockaddr* address);
  static int onCloseSocket(void* connections, curl_socket_t socket);

  CURL* const handle_;
  Connections& connections_;
  const std::size_t maximumBodySize_;
  const std::size_t maximumHeaderSize_;

  // What the handle is set to; a next request like the last one needs no setting.
  bool plainGet_ = true;
  List headerList_;
  std::optional<HTTPHeaders> listedHeaders_;
  CachePolicy listedPolicy_ = CachePolicy::useProtocolCachePolicy;
  bool mayUseFolder_ = false;
  bool waits_ = false;
  bool freshConnection_ = false;
  bool freshName_ = false;

  // For the transfer under way.
  CurlSession* session_ = nullptr;
  CurlHost* host_ = nullptr;
  Place place_;
  std::shared_ptr<HTTPExchange> exchange_;
  Connections::ID connection_;
  bool isSent_ = false;
  NetworkTime lastActivity_;
  NetworkTime headerBegan_ = NetworkTime::max();
  std::uint64_t received_ = 0;
  curl_off_t sent_ = 0;  // of the request's body
  bool multiplexed_ = false;
  HTTPHeaders headers_;
  std::size_t headerBytes_ = 0;
  unsigned codings_ = 0;
  bool headIsComplete_ = false;
  bool bodyHasBegun_ = false;
  BodyBuffer body_;
  std::optional<URLError> failure_;
};

}  // namespace orvo::detail
