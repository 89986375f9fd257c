#pragma once

#include <OrvoAPI/HTTP/HTTPURLResponse.h>
#include <OrvoAPI/HTTP/URLError.h>
#include <OrvoAPI/HTTP/URLRequest.h>

#include <atomic>
#include <chrono>
#include <variant>

namespace orvo::detail {

class CurlTransfer;

using NetworkTime = std::chrono::steady_clock::time_point;

using HTTPOutcome = std::variant<HTTPResult, URLError>;

/// One request on its way to one answer; a redirect is an answer like any other. Held by the
/// network thread from its start to its end; it can be started again after that.
class HTTPExchange {
 public:
  HTTPExchange() = default;
  HTTPExchange(const HTTPExchange&) = delete;
  HTTPExchange& operator=(const HTTPExchange&) = delete;
  virtual ~HTTPExchange() = default;

  /// What to send; not changed from the start to the end.
  [[nodiscard]] virtual const URLRequest& exchangeRequest() const = 0;
  /// Called on the network thread, once for each start; must not block nor run foreign code.
  virtual void exchangeDidEnd(HTTPOutcome outcome) = 0;

  /// Whether it ends as soon as it is started. Any thread.
  [[nodiscard]] bool isCancelled() const { return cancelled_.load(std::memory_order_relaxed); }

 protected:
  void markCancelled() { cancelled_.store(true, std::memory_order_relaxed); }

 private:
  friend class CurlSession;

  std::atomic<bool> cancelled_{false};
  // Of the network thread.
  CurlTransfer* transfer_ = nullptr;  // while it is under way
  bool waiting_ = false;              // while it waits for a free connection
};

}  // namespace orvo::detail
