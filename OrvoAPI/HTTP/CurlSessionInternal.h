#pragma once

#include <OrvoAPI/HTTP/CookieBoundInternal.h>
#include <OrvoAPI/HTTP/CurlPoolInternal.h>
#include <OrvoAPI/HTTP/CurlTransferInternal.h>
#include <OrvoAPI/HTTP/LargeBodiesInternal.h>
#include <OrvoAPI/HTTP/NetworkThreadInternal.h>

#include <curl/curl.h>

#include <functional>
#include <list>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orvo::detail {

/// Where connections lead: scheme, name and port.
struct CurlHost {
  std::string_view name;  // a view of its key in the map
  std::size_t underWay = 0;
  /// One connection carries many exchanges, so that an exchange need not wait for one.
  bool multiplexed = false;
  /// The last exchange could not reach it: its name may resolve elsewhere by now.
  bool isFailing = false;
  std::list<std::shared_ptr<HTTPExchange>> waiting = {};
  std::shared_ptr<LargeBodies::Share> largeBodies = nullptr;  // what all sessions have of it
};

/// Admits the exchanges of one session to a pool of connections, as many to each host as it may
/// have, and keeps the session's cookies. Used on the network thread, which holds it from its first
/// exchange until it is closed.
///
/// An exchange is *waiting* while its host has as many under way as it may have: it then costs no
/// handle, and of its limits only the total one runs. *Under way* it has a transfer, which the pool
/// holds and which holds it. At its *end* the transfer goes back among the idle ones, the next
/// exchange that waits for the host takes its place, and the exchange learns the outcome; the
/// session forgets it.
class CurlSession {
 public:
  explicit CurlSession(URLSessionConfiguration configuration)
      : configuration_(std::move(configuration)) {}

  /// Throws `std::bad_alloc`, and then has not taken the exchange.
  void start(const std::shared_ptr<HTTPExchange>& exchange);
  void cancel(HTTPExchange& exchange);
  /// Ends everything that is under way with -999 and lets go of the connections.
  void close();

  /// The session takes the transfer back from the pool.
  void transferDidEnd(CurlTransfer& transfer, HTTPOutcome outcome);
  /// A transfer has failed unseen by libcurl: it ends at the next check of the deadlines.
  void transferDidFail() { pool_->checkDeadlinesSoon(); }

  /// The network may have changed: names are resolved anew.
  void networkDidChange();

  // For the network thread.

  /// Its own command, any thread.
  [[nodiscard]] NetworkCommand& closing() { return closing_; }
  /// Large bodies have been freed, for which some may have waited.
  void admitWaiting();
  /// Ends the exchanges that have waited for too long.
  void runTimers();
  /// When `runTimers` has something to do; the largest time when it never has.
  [[nodiscard]] NetworkTime nextTimer() const { return nextDeadline_; }

 private:
  [[nodiscard]] bool open();
  [[nodiscard]] CurlHost& hostOf(const HTTPExchange& exchange);
  [[nodiscard]] bool hasPlace(const CurlHost& host) const;
  void wait(std::shared_ptr<HTTPExchange> exchange, CurlHost& host);
  [[nodiscard]] static std::shared_ptr<HTTPExchange> leaveLine(HTTPExchange& exchange);
  void admitWaiting(CurlHost& host);
  void admit(const std::shared_ptr<HTTPExchange>& exchange, CurlHost& host);
  void releaseIfUnused(CurlHost& host);

  const URLSessionConfiguration configuration_;
  NetworkCommand closing_{NetworkCommand::Kind::close};
  std::shared_ptr<CurlPool> pool_;
  CURLSH* share_ = nullptr;
  CookieBound cookies_;
  std::map<std::string, CurlHost, std::less<>> hosts_;
  std::vector<std::unique_ptr<CurlTransfer>> idle_;
  NetworkTime nextDeadline_ = NetworkTime::max();  // at or before the first of those that wait
};

}  // namespace orvo::detail
