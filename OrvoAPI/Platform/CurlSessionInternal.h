#pragma once

#include <OrvoAPI/Platform/CurlTransferInternal.h>
#include <OrvoAPI/Platform/NetworkThreadInternal.h>

#include <curl/curl.h>

#include <algorithm>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
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

/// A session over libcurl's multi interface, one multi handle for each, so that limits, connections
/// and cookies are its own. Of the network thread, which holds it from its first exchange until it
/// is closed.
///
/// An exchange is *waiting* while its host has as many under way as it may have: then it costs no
/// handle and its time-out does not run. *Under way* it has a transfer, which this session owns and
/// which holds it. At its *end* the transfer goes back among the idle ones, the next exchange that
/// waits for the host takes its place, and the exchange learns the outcome; the session forgets it.
class CurlSession final : public NetworkSession {
 public:
  explicit CurlSession(const URLSessionConfiguration& configuration)
      : configuration_(configuration) {}
  ~CurlSession() override;

  void start(std::shared_ptr<HTTPExchange> exchange) override;
  void cancel(HTTPExchange& exchange) override;
  void close() override;
  void socketIsReady(int socket, std::uint32_t events, void* context) override;
  void runTimers() override;
  [[nodiscard]] NetworkTime nextTimer() const override {
    return active_.empty() ? NetworkTime::max() : std::min(curlTimer_, nextDeadline_);
  }

 private:
  [[nodiscard]] bool open();
  void admit(std::shared_ptr<HTTPExchange> exchange, CurlHost& host);
  void admitWaiting(CurlHost& host);
  void releaseIfUnused(CurlHost& host);
  void finish(CurlTransfer& transfer, HTTPOutcome outcome);
  void finish(CurlTransfer& transfer, CURLcode code);
  void collect();
  void checkDeadlines();

  static int onSocket(CURL* handle, curl_socket_t socket, int what, void* self, void*);
  static int onTimer(CURLM* multi, long milliseconds, void* self);

  const URLSessionConfiguration configuration_;
  CURLM* multi_ = nullptr;
  CURLSH* share_ = nullptr;
  std::map<std::string, CurlHost, std::less<>> hosts_;
  std::vector<std::unique_ptr<CurlTransfer>> idle_;
  std::vector<std::unique_ptr<CurlTransfer>> active_;
  NetworkTime curlTimer_ = NetworkTime::max();
  NetworkTime nextDeadline_ = NetworkTime::max();  // not after the first one
};

}  // namespace orvo::detail
