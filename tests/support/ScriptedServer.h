#pragma once

#include <OrvoAPI/HTTP/URL.h>
#include <tests/support/HTTPServer.h>
#include <tests/support/Test.h>

struct ssl_st;

namespace orvo::test {

/// One connection as raw bytes, in the hands of a script. It closes when the script returns.
class Connection {
 public:
  explicit Connection(int socket) : socket_(socket) {}

  /// The head of the next request, with its blank line; empty when the client has gone.
  std::string readHead();
  void send(std::string_view bytes);
  /// One byte after another, with a pause before each.
  void trickle(std::string_view bytes, std::chrono::milliseconds pause);
  /// Says nothing until the client goes; returns what came from it meanwhile.
  std::string waitForClose();
  /// Tells the client that nothing more will come, but still hears it.
  void finish();
  /// Closes so that the client's system reports an error.
  void reset();

 private:
  friend class ScriptedServer;
  friend class SecureHTTP2;
  friend std::string answerSecurely(Connection&, const Certificate&, int);
  friend void agreeInGroup(Connection&, const Certificate&, const char*);
  int socket_;
  std::string received_;
};

/// A connection's TLS, over which the server speaks HTTP/2.
class SecureHTTP2 {
 public:
  /// Shakes hands.
  SecureHTTP2(Connection& connection, const Certificate& certificate);
  void send(std::string_view bytes);
  /// Waits until the client has said this; false when it has gone.
  bool hear(std::string_view bytes);

 private:
  std::shared_ptr<ssl_st> tls_;
  std::string heard_;
};

/// Shakes hands through TLS, in no newer version than this one of OpenSSL's numbers, and answers a
/// request with an empty 200. Returns what the client said: its request, or, where it turned the
/// handshake down, all that came after that.
std::string answerSecurely(Connection& connection, const Certificate& certificate,
                           int newestVersion);
/// Shakes hands in the classic Diffie-Hellman way, in a group of OpenSSL's.
void agreeInGroup(Connection& connection, const Certificate& certificate, const char* group);

/// A server on a free loopback port that does exactly what its script says, however wrong. Each
/// connection has a thread; the destructor ends them.
class ScriptedServer {
 public:
  using Script = std::function<void(Connection&)>;

  explicit ScriptedServer(Script script);
  /// Sends the bytes in answer to the first request of each connection.
  explicit ScriptedServer(std::string answer);
  ~ScriptedServer();
  ScriptedServer(const ScriptedServer&) = delete;
  ScriptedServer& operator=(const ScriptedServer&) = delete;

  [[nodiscard]] int port() const { return port_; }
  [[nodiscard]] URL url(std::string_view target = "/") const;
  [[nodiscard]] int connections() const { return connections_; }

 private:
  void accept();
  void serve(int socket);

  const Script script_;
  int listener_ = -1;
  int port_ = 0;
  std::atomic<int> connections_{0};
  std::mutex mutex_;
  bool ending_ = false;               // guarded by mutex_
  std::vector<int> sockets_;          // guarded by mutex_
  std::vector<std::thread> threads_;  // of the accepting thread, until it has ended
  std::thread accepting_;
};

/// Hears a request on each connection and says nothing. It tells when one has come, and when its
/// client has gone.
struct SilentServer {
  [[nodiscard]] URL url() const { return server.url(); }

  Signal asked;
  Signal left;
  const ScriptedServer server{[this](Connection& connection) {
    connection.readHead();
    asked.tell();
    connection.waitForClose();
    left.tell();
  }};
};

}  // namespace orvo::test
