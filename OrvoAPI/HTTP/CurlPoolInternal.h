#pragma once

#include <OrvoAPI/HTTP/CurlTransferInternal.h>
#include <OrvoAPI/HTTP/NetworkThreadInternal.h>

#include <curl/curl.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace orvo::detail {

/// The connections of all sessions that trust the same authorities, over one multi handle of
/// libcurl, with the transfers that are under way on them. Used on the network thread; held by its
/// sessions, and closed with the last of them.
///
/// One for several sessions because opening the first connection of a multi handle costs 50 ms, for
/// reading the authorities, and because a program's second session then finds the connection that
/// its first one has opened.
class CurlPool {
 public:
  /// The pool of the sessions with this file of authorities; null when there is no memory for it.
  [[nodiscard]] static std::shared_ptr<CurlPool> of(const std::string& authorityFile);

  ~CurlPool();
  CurlPool(const CurlPool&) = delete;
  CurlPool& operator=(const CurlPool&) = delete;

  /// A session has come or, with a negative number, gone: that many more connections to one host.
  void adjustHostConnections(long connections);

  /// Makes room for one transfer more, or throws.
  void reserveOne() {
    if (active_.size() == active_.capacity())
      active_.reserve(std::max<std::size_t>(16, 2 * active_.size()));
  }
  /// Starts the transfer; its session learns of its end.
  void add(std::unique_ptr<CurlTransfer> transfer);
  /// Ends all transfers of the session with -999.
  void endAll(const CurlSession& session);
  /// Ends those whose deadline has passed, as soon as libcurl allows it.
  void checkDeadlinesSoon() { nextDeadline_ = NetworkTime::min(); }
  [[nodiscard]] Connections& connections() { return connections_; }
  /// Nothing new is sent on the connections that are open now, or, when the device has slept, not
  /// until something is heard on them.
  void retireConnections();
  void suspectConnections();
  /// Gives the transfer back, aborting what has not ended.
  [[nodiscard]] std::unique_ptr<CurlTransfer> remove(CurlTransfer& transfer);

  // For the network thread.

  /// `context` is what the socket is watched with; `events` are those of epoll.
  void socketIsReady(int socket, std::uint32_t events, void* context);
  /// Something happened on the socket of a connection on which nothing was under way.
  void restWasDisturbed(int socket);
  /// Does what is due by now.
  void runTimers();
  /// When `runTimers` has something to do; the largest time when it never has.
  [[nodiscard]] NetworkTime nextTimer() const {
    return active_.empty() ? NetworkTime::max() : std::min(curlTimer_, nextDeadline_);
  }

 private:
  CurlPool(CURLM* multi, std::string authorityFile);

  void act(int socket, int events);
  void collect();
  void setUp();
  void startAnew();
  template <class Condition, class End>
  void endThose(Condition&& condition, End&& end);
  void weigh(int socket);
  void endStuck(int socket);
  void endOn(const Connections::ID& connection, int code, const char* message);
  void shutDownUnused();
  void checkDeadlines();

  static int onSocket(CURL* handle, curl_socket_t socket, int what, void* self, void*);
  static int onTimer(CURLM* multi, long milliseconds, void* self);

  CURLM* multi_;  // null while there is no memory for it
  const std::string authorityFile_;
  Connections connections_;
  long hostConnections_ = 0;
  std::vector<std::unique_ptr<CurlTransfer>> active_;
  NetworkTime curlTimer_ = NetworkTime::max();
  NetworkTime nextDeadline_ = NetworkTime::max();  // at or before the first one
};

}  // namespace orvo::detail
