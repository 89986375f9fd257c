#pragma once

#include <OrvoAPI/HTTP/CurlPoolInternal.h>
#include <OrvoAPI/HTTP/CurlTransferInternal.h>
#include <OrvoAPI/HTTP/NetworkThreadInternal.h>

#include <curl/curl.h>

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orvo::detail {

/// A place where connections lead: scheme, name and port.
struct CurlHost {
  std::string_view name;  // of the map that it stands in
  std::size_t underWay = 0;
  /// One connection carries many exchanges, so that connections need not be waited for.
  bool multiplexed = false;
  std::deque<std::shared_ptr<HTTPExchange>> waiting = {};
};

/// Admits the exchanges of one session to a pool of connections, as many to each host as it may
/// have, and keeps the session's cookies. Of the network thread, which holds it from its first
/// exchange until it is closed.
///
/// An exchange is *waiting* while its host has as many under way as it may have: then it costs no
/// handle and its time-out does not run. *Under way* it has a transfer, which the pool holds and
/// which holds it. At its *end* the transfer goes back among the idle ones, the next exchange that
/// waits for the host takes its place, and the exchange learns the outcome; the session forgets it.
class CurlSession {
 public:
  explicit CurlSession(URLSessionConfiguration configuration)
      : configuration_(std::move(configuration)) {}

  void start(std::shared_ptr<HTTPExchange> exchange);
  void cancel(HTTPExchange& exchange);
  /// Ends everything that is under way with -999 and lets go of the connections.
  void close();

  /// The session takes the transfer back from the pool.
  void transferDidEnd(CurlTransfer& transfer, HTTPOutcome outcome);
  /// A transfer has failed where libcurl does not see it: soon its deadline has passed.
  void transferDidFail() { pool_->checkDeadlinesSoon(); }

 private:
  [[nodiscard]] bool open();
  void admitWaiting(CurlHost& host);
  void admit(std::shared_ptr<HTTPExchange> exchange, CurlHost& host);
  void releaseIfUnused(CurlHost& host);

  const URLSessionConfiguration configuration_;
  std::shared_ptr<CurlPool> pool_;
  CURLSH* share_ = nullptr;
  std::map<std::string, CurlHost, std::less<>> hosts_;
  std::vector<std::unique_ptr<CurlTransfer>> idle_;
};

}  // namespace orvo::detail
