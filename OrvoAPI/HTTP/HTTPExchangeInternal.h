#pragma once

#include <OrvoAPI/HTTP/HTTPURLResponse.h>
#include <OrvoAPI/HTTP/RequestTimeline.h>
#include <OrvoAPI/HTTP/URLError.h>
#include <OrvoAPI/HTTP/URLRequest.h>

#include <atomic>
#include <chrono>
#include <list>
#include <memory>
#include <variant>

namespace orvo::detail {

struct CurlHost;
class CurlSession;
class CurlTransfer;
class HTTPExchange;

using NetworkTime = std::chrono::steady_clock::time_point;

/// Whether a time limit is one: zero is none, nor is more than a year.
[[nodiscard]] inline bool isLimit(std::chrono::milliseconds limit) {
  return limit > limit.zero() && limit <= std::chrono::hours(24 * 365);
}

[[nodiscard]] inline URLError cancelledError() { return {URLError::cancelled, "cancelled"}; }
/// An error on the network thread, where nothing may be thrown: without its message when there is
/// no memory for that.
[[nodiscard]] URLError makeURLError(int code, const char* message) noexcept;
[[nodiscard]] URLError outOfMemory() noexcept;

/// Something that the network thread is asked to do. It lies in what it concerns, so that asking
/// needs no memory; in one list at a time.
struct NetworkCommand {
  enum class Kind { start, cancel, close, changeNetwork };
  explicit NetworkCommand(Kind what) : kind(what) {}
  void drop() noexcept {}

  const Kind kind;
  // While it is in the list:
  std::shared_ptr<CurlSession> session = nullptr;
  std::shared_ptr<HTTPExchange> exchange = nullptr;
  NetworkCommand* next = nullptr;
};

inline void note(RequestTimeline::Hop& hop, RequestTimeline::Stage stage,
                 NetworkTime time = std::chrono::steady_clock::now()) {
  hop.times[static_cast<std::size_t>(stage)] = time;
}

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
  /// Called on the network thread, once for each start; must not block or run foreign code.
  virtual void exchangeDidEnd(HTTPOutcome outcome) = 0;

  /// When it must have ended, whatever happens; the largest time when there is no limit.
  [[nodiscard]] NetworkTime deadline() const { return deadline_; }

  /// Whether it ends as soon as it is started. Any thread.
  [[nodiscard]] bool isCancelled() const { return cancelled_.load(std::memory_order_relaxed); }

  /// Where its stages are noted by whoever takes the next step; null when nobody measures.
  [[nodiscard]] RequestTimeline::Hop* measured() const {
    return timeline_ != nullptr ? &timeline_->last : nullptr;
  }

 protected:
  /// True for the first call.
  [[nodiscard]] bool markCancelled() { return !cancelled_.exchange(true); }
  /// Before it is first started.
  void setDeadline(NetworkTime deadline) { deadline_ = deadline; }

  std::shared_ptr<RequestTimeline> timeline_;

 private:
  friend class CurlSession;
  friend class NetworkThread;

  NetworkCommand start_{NetworkCommand::Kind::start};
  NetworkCommand cancel_{NetworkCommand::Kind::cancel};
  std::atomic<bool> cancelled_{false};
  NetworkTime deadline_ = NetworkTime::max();
  // Network thread only.
  CurlTransfer* transfer_ = nullptr;  // while it is under way
  CurlHost* waitingFor_ = nullptr;    // while it waits for a free connection
  std::list<std::shared_ptr<HTTPExchange>>::iterator place_;  // then
};

}  // namespace orvo::detail
