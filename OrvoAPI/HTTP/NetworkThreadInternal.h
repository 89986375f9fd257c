#pragma once

#include <OrvoAPI/Base/detail/Lock.h>
#include <OrvoAPI/HTTP/HTTPExchangeInternal.h>
#include <OrvoAPI/HTTP/URLSessionConfiguration.h>
#include <OrvoAPI/Queues/Job.h>
#include <OrvoAPI/Queues/ThreadInternal.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace orvo::detail {

class CurlPool;
class CurlSession;

/// Why nothing can be fetched here, in a forked child.
[[nodiscard]] std::optional<URLError> faultOfFork();

/// The one thread of the process that serves all sessions: it sleeps in the kernel until a socket
/// is ready, a timer is due or a command has come. Started with the first command, ended with the
/// process; lives as long as the process.
class NetworkThread {
 public:
  [[nodiscard]] static NetworkThread& shared();

  // From any thread.

  /// A session that belongs to this thread: all else that is done with it is done here.
  [[nodiscard]] static std::shared_ptr<CurlSession> makeSession(
      URLSessionConfiguration configuration);
  /// Starts the exchange, or returns why that cannot be: the process is ending, or the system has
  /// no thread to give.
  [[nodiscard]] std::optional<URLError> start(std::shared_ptr<CurlSession> session,
                                              std::shared_ptr<HTTPExchange> exchange);
  void cancel(std::shared_ptr<CurlSession> session, std::shared_ptr<HTTPExchange> exchange);
  /// Closes a session whose exchanges have all ended.
  void close(std::shared_ptr<CurlSession> session);
  /// The connections that are open now take no new exchange.
  void networkChanged();
  /// Has it look for what others have left it outside of its commands.
  void wake();
  void shutDown();

  /// Whether the calling thread is this one.
  [[nodiscard]] static bool isCurrent();

  // On the network thread, for the pools.

  /// False when libcurl could not be initialised.
  [[nodiscard]] bool isUsable();
  /// The time at which the thread last woke up.
  [[nodiscard]] NetworkTime now() const { return now_; }
  void add(CurlPool& pool);
  void remove(CurlPool& pool);
  /// False when the system has no memory for it.
  [[nodiscard]] bool watch(int socket, std::uint32_t events, CurlPool& pool, void* context);
  void unwatch(int socket);
  /// A new socket has this number. When the last one with this number was closed without a
  /// callback, the kernel no longer watches what libcurl may still rely on.
  void hasOpened(int socket);
  /// Nothing is under way on an open connection's socket. It stays registered with the kernel, for
  /// the next request's sake, until something happens on it.
  void rest(int socket);
  /// Nothing that happens on the socket concerns the context any more.
  void forgetContext(int socket, const void* context);

 private:
  enum class State { unused, running, ended };
  struct Watch {
    CurlPool* pool = nullptr;  // null: gone, though the kernel may know the socket still
    void* context = nullptr;
    std::uint32_t events = 0;  // that the kernel was told; none: it does not know the socket
    bool rests = false;
  };

  NetworkThread() = default;

  /// False when nothing runs that would take the command.
  bool post(NetworkCommand& command, std::shared_ptr<CurlSession> session,
            std::shared_ptr<HTTPExchange> exchange);
  void begin() ORVO_REQUIRES(lock_);
  void makeDescriptors() ORVO_REQUIRES(lock_);
  void closeDescriptors();
  void run();
  [[nodiscard]] bool runCommands();
  void runCommand(NetworkCommand& command);
  void startExchange(const std::shared_ptr<CurlSession>& session,
                     std::shared_ptr<HTTPExchange> exchange);
  void changeNetwork();
  void noticeSleep();
  void waitForEvents();
  [[nodiscard]] bool tellKernel(int socket, std::uint32_t events) const;
  void forget(int socket);
  [[nodiscard]] int millisecondsToNextTimer() const;

  Lock lock_;
  State state_ ORVO_GUARDED_BY(lock_) = State::unused;
  NodeList<NetworkCommand> commands_ ORVO_GUARDED_BY(lock_);
  NetworkCommand changeNetwork_{NetworkCommand::Kind::changeNetwork};
  std::atomic<bool> changeIsPosted_{false};
  bool isRegistered_ ORVO_GUARDED_BY(lock_) = false;
  std::optional<pthread_t> thread_ ORVO_GUARDED_BY(lock_);  // until it is joined
  int epoll_ = -1;                                          // set before the thread starts
  int wakeup_ = -1;                                         // likewise

  // Network thread only.
  bool isUsable_ = false;
  NetworkTime now_;
  std::chrono::nanoseconds slept_{0};  // in all, when last noticed
  NetworkTime holdEnd_;                // when the workers are woken though more comes at once
  std::vector<std::shared_ptr<CurlSession>> sessions_;  // those started and not yet closed
  std::vector<CurlPool*> pools_;
  std::vector<Watch> watches_;  // by socket
};

}  // namespace orvo::detail
