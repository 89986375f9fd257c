#pragma once

#include <OrvoAPI/Base/detail/Lock.h>
#include <OrvoAPI/HTTP/HTTPURLResponse.h>
#include <OrvoAPI/HTTP/URLError.h>
#include <OrvoAPI/HTTP/URLRequest.h>
#include <OrvoAPI/HTTP/URLSessionConfiguration.h>
#include <OrvoAPI/Queues/ThreadInternal.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <variant>
#include <vector>

namespace orvo::detail {

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
  class CurlTransfer* transfer_ = nullptr;  // while it is under way
  bool waiting_ = false;                    // while it waits for a free connection
};

/// The exchanges of one URL session. Everything but `make` belongs to the network thread.
class NetworkSession {
 public:
  virtual ~NetworkSession() = default;

  [[nodiscard]] static std::shared_ptr<NetworkSession> make(URLSessionConfiguration configuration);

  virtual void start(std::shared_ptr<HTTPExchange> exchange) = 0;
  virtual void cancel(HTTPExchange& exchange) = 0;
  /// Ends everything that is under way with -999 and lets go of the connections.
  virtual void close() = 0;
};

/// Connections whose sockets and timers the network thread waits for.
class NetworkPool {
 public:
  virtual ~NetworkPool() = default;

  /// `context` is what the socket is watched with; `events` are those of epoll.
  virtual void socketIsReady(int socket, std::uint32_t events, void* context) = 0;
  /// Does what was due by now.
  virtual void runTimers() = 0;
  /// When `runTimers` has something to do; the largest time when it never has.
  [[nodiscard]] virtual NetworkTime nextTimer() const = 0;
};

/// The one thread of the process that serves all sessions: it sleeps in the kernel until a socket
/// is ready, a timer is due or a command has come. Started with the first command, ended with the
/// process; lives as long as the process.
class NetworkThread {
 public:
  [[nodiscard]] static NetworkThread& shared();

  // From any thread.

  /// Starts the exchange, or returns why that cannot be: the process is ending, or the system has
  /// no thread to give.
  [[nodiscard]] std::optional<URLError> start(std::shared_ptr<NetworkSession> session,
                                              std::shared_ptr<HTTPExchange> exchange);
  void cancel(std::shared_ptr<NetworkSession> session, std::shared_ptr<HTTPExchange> exchange);
  /// Closes a session whose exchanges have all ended.
  void close(std::shared_ptr<NetworkSession> session);
  void shutDown();

  // On the network thread, for the pools.

  /// False when the HTTP library could not be initialised.
  [[nodiscard]] bool isUsable() const { return isUsable_; }
  /// The time at which the thread last woke up.
  [[nodiscard]] NetworkTime now() const { return now_; }
  void add(NetworkPool& pool);
  void remove(NetworkPool& pool);
  void watch(int socket, std::uint32_t events, NetworkPool& pool, void* context);
  void unwatch(int socket);
  /// Nothing that happens on the socket concerns the context any more.
  void forgetContext(int socket, const void* context);

 private:
  struct Command {
    enum class Kind { start, cancel, close };
    Kind kind;
    std::shared_ptr<NetworkSession> session;
    std::shared_ptr<HTTPExchange> exchange;
  };
  enum class State { unused, running, failed, ended };
  struct Watch {
    NetworkPool* pool = nullptr;  // null: not watched
    void* context = nullptr;
  };

  NetworkThread() = default;

  /// False when nothing runs that would take the command.
  bool post(Command command);
  void begin() ORVO_REQUIRES(lock_);
  void run();
  [[nodiscard]] bool runCommands();
  void runCommand(Command command);
  void waitForEvents();
  [[nodiscard]] int millisecondsToNextTimer() const;

  Lock lock_;
  State state_ ORVO_GUARDED_BY(lock_) = State::unused;
  std::vector<Command> commands_ ORVO_GUARDED_BY(lock_);
  std::optional<pthread_t> thread_ ORVO_GUARDED_BY(lock_);  // until somebody joins it
  int epoll_ = -1;                                          // set before the thread starts
  int wakeup_ = -1;                                         // likewise

  // Of the network thread.
  bool isUsable_ = false;
  NetworkTime now_;
  NetworkTime holdEnd_;  // when the workers are woken though more comes at once
  std::vector<Command> taken_;
  std::vector<std::shared_ptr<NetworkSession>> sessions_;  // those started and not yet closed
  std::vector<NetworkPool*> pools_;
  std::vector<Watch> watches_;  // by socket
};

}  // namespace orvo::detail
