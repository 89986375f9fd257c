#include <netinet/tcp.h>
#include <openssl/ssl.h>
#include <signal.h>
#include <support/Loopback.h>
#include <sys/socket.h>
#include <tests/support/ScriptedServer.h>
#include <tests/support/Test.h>
#include <unistd.h>

#include <tuple>

namespace orvo::test {

std::string Connection::readHead() {
  constexpr std::string_view kEnd = "\r\n\r\n";
  std::array<char, 4096> buffer;
  auto end = received_.find(kEnd);
  while (end == std::string::npos) {
    const auto count = recv(socket_, buffer.data(), buffer.size(), 0);
    if (count <= 0) return {};
    received_.append(buffer.data(), static_cast<std::size_t>(count));
    end = received_.find(kEnd);
  }
  auto head = received_.substr(0, end + kEnd.size());
  received_.erase(0, head.size());
  return head;
}

void Connection::send(std::string_view bytes) {
  while (!bytes.empty()) {
    const auto count = ::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (count <= 0) return;
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
}

void Connection::trickle(std::string_view bytes, std::chrono::milliseconds pause) {
  for (const char byte : bytes) {
    std::this_thread::sleep_for(pause);
    send({&byte, 1});
  }
}

std::string Connection::waitForClose() {
  std::array<char, 4096> buffer;
  std::string heard;
  for (;;) {
    const auto count = recv(socket_, buffer.data(), buffer.size(), 0);
    if (count <= 0) return heard;
    heard.append(buffer.data(), static_cast<std::size_t>(count));
  }
}

void Connection::finish() { shutdown(socket_, SHUT_WR); }

void Connection::reset() {
  const linger atOnce{1, 0};
  setsockopt(socket_, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
}

/// The server's end of TLS, which speaks HTTP/2 when it is told to.
class SecureConnection {
 public:
  SecureConnection(Connection& connection, const Certificate& certificate, int newestVersion,
                   bool http2 = false)
      : context_(SSL_CTX_new(TLS_server_method()), SSL_CTX_free) {
    sigset_t pipe{};  // a client may go while it is being told something
    sigaddset(&pipe, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &pipe, nullptr);
    SSL_CTX_set_security_level(context_.get(), 0);  // old versions count as no security at all
    SSL_CTX_set_min_proto_version(context_.get(), TLS1_VERSION);
    SSL_CTX_set_max_proto_version(context_.get(), newestVersion);
    SSL_CTX_use_certificate(context_.get(), certificate.certificate.get());
    SSL_CTX_use_PrivateKey(context_.get(), certificate.key.get());
    if (http2) SSL_CTX_set_alpn_select_cb(context_.get(), &chooseHTTP2, nullptr);
    tls_ = {SSL_new(context_.get()), SSL_free};
    SSL_set_fd(tls_.get(), connection.socket_);
    isOpen_ = SSL_accept(tls_.get()) == 1;
  }

  [[nodiscard]] bool isOpen() const { return isOpen_; }
  /// The next bytes, empty when the client has gone.
  std::string read(int most = 4096) {
    std::string bytes(static_cast<std::size_t>(most), '\0');
    bytes.resize(static_cast<std::size_t>(std::max(SSL_read(tls_.get(), bytes.data(), most), 0)));
    return bytes;
  }
  void write(std::string_view bytes) {
    SSL_write(tls_.get(), bytes.data(), static_cast<int>(bytes.size()));
  }

 private:
  static int chooseHTTP2(SSL*, const unsigned char** out, unsigned char* size, const unsigned char*,
                         unsigned, void*) {
    *out = reinterpret_cast<const unsigned char*>("h2");
    *size = 2;
    return SSL_TLSEXT_ERR_OK;
  }

  std::unique_ptr<SSL_CTX, void (*)(SSL_CTX*)> context_;
  std::unique_ptr<SSL, void (*)(SSL*)> tls_{nullptr, SSL_free};
  bool isOpen_ = false;
};

std::string answerSecurely(Connection& connection, const Certificate& certificate,
                           int newestVersion) {
  SecureConnection tls(connection, certificate, newestVersion);
  if (!tls.isOpen()) return connection.waitForClose();
  std::string request;
  while (!request.ends_with("\r\n\r\n")) {
    const auto bytes = tls.read();
    if (bytes.empty()) return request;
    request += bytes;
  }
  tls.write("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n");
  return request;
}

void trickleOverHTTP2(Connection& connection, const Certificate& certificate, std::string_view body,
                      std::chrono::milliseconds pause) {
  constexpr char kData = 0, kHeaders = 1, kSettings = 4, kEndStream = 1, kEndHeaders = 4;
  constexpr std::size_t kPreface = 24, kFrameHead = 9;
  SecureConnection tls(connection, certificate, TLS1_3_VERSION, true);
  const auto send = [&](char type, char flags, char stream, std::string_view payload) {
    std::string frame{0, 0, static_cast<char>(payload.size()), type, flags, 0, 0, 0, stream};
    tls.write(frame.append(payload));
  };
  send(kSettings, 0, 0, "");
  // Frame by frame, all short, up to the request.
  std::string heard;
  for (std::size_t at = kPreface, type = kData; type != kHeaders;) {
    while (heard.size() < at + kFrameHead) {
      const auto bytes = tls.read();
      if (bytes.empty()) return;
      heard += bytes;
    }
    type = static_cast<unsigned char>(heard[at + 3]);
    at += kFrameHead + static_cast<unsigned char>(heard[at + 2]);
  }
  send(kHeaders, kEndHeaders, 1, "\x88");  // status 200
  for (const char byte : body) {
    std::this_thread::sleep_for(pause);
    send(kData, 0, 1, {&byte, 1});
  }
  send(kData, kEndStream, 1, "");
  connection.waitForClose();
}

ScriptedServer::ScriptedServer(Script script) : script_(std::move(script)) {
  std::tie(listener_, port_) = listenOnLoopback();
  accepting_ = std::thread([this] { accept(); });
}

ScriptedServer::ScriptedServer(std::string answer)
    : ScriptedServer([answer = std::move(answer)](Connection& connection) {
        if (!connection.readHead().empty()) connection.send(answer);
      }) {}

ScriptedServer::~ScriptedServer() {
  {
    const std::lock_guard guard(mutex_);
    ending_ = true;
    for (const int socket : sockets_) shutdown(socket, SHUT_RDWR);
  }
  shutdown(listener_, SHUT_RDWR);
  accepting_.join();
  for (auto& thread : threads_) thread.join();
  close(listener_);
}

URL ScriptedServer::url(std::string_view target) const {
  return *URL::parse("http://127.0.0.1:" + std::to_string(port_) + std::string(target));
}

void ScriptedServer::accept() {
  for (;;) {
    const int socket = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
    if (socket < 0) return;
    ++connections_;
    {
      const std::lock_guard guard(mutex_);
      sockets_.push_back(socket);
      if (ending_) shutdown(socket, SHUT_RDWR);
    }
    threads_.emplace_back([this, socket] { serve(socket); });
  }
}

void ScriptedServer::serve(int socket) {
  const int immediately = 1;
  setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &immediately, sizeof immediately);
  Connection connection(socket);
  script_(connection);
  const std::lock_guard guard(mutex_);
  std::erase(sockets_, socket);
  close(socket);
}

}  // namespace orvo::test
