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

namespace {

using Context = std::unique_ptr<SSL_CTX, void (*)(SSL_CTX*)>;

Context serverContext(const Certificate& certificate) {
  sigset_t pipe{};  // a client may go while it is being told something
  sigaddset(&pipe, SIGPIPE);
  pthread_sigmask(SIG_BLOCK, &pipe, nullptr);
  Context context(SSL_CTX_new(TLS_server_method()), SSL_CTX_free);
  SSL_CTX_use_certificate(context.get(), certificate.certificate.get());
  SSL_CTX_use_PrivateKey(context.get(), certificate.key.get());
  return context;
}

}  // namespace

SecureHTTP2::SecureHTTP2(Connection& connection, const Certificate& certificate) {
  const auto context = serverContext(certificate);
  const auto choose = [](SSL*, const unsigned char** chosen, unsigned char* size,
                         const unsigned char*, unsigned, void*) {
    *chosen = reinterpret_cast<const unsigned char*>("h2");
    *size = 2;
    return SSL_TLSEXT_ERR_OK;
  };
  SSL_CTX_set_alpn_select_cb(context.get(), choose, nullptr);
  tls_.reset(SSL_new(context.get()), SSL_free);
  SSL_set_fd(tls_.get(), connection.socket_);
  SSL_accept(tls_.get());
}

void SecureHTTP2::send(std::string_view bytes) {
  SSL_write(tls_.get(), bytes.data(), static_cast<int>(bytes.size()));
}

bool SecureHTTP2::hear(std::string_view bytes) {
  std::array<char, 4096> buffer;
  while (heard_.find(bytes) == std::string::npos) {
    const auto count = SSL_read(tls_.get(), buffer.data(), static_cast<int>(buffer.size()));
    if (count <= 0) return false;
    heard_.append(buffer.data(), static_cast<std::size_t>(count));
  }
  heard_.erase(0, heard_.find(bytes) + bytes.size());
  return true;
}

std::string answerSecurely(Connection& connection, const Certificate& certificate,
                           int newestVersion) {
  const auto context = serverContext(certificate);
  SSL_CTX_set_security_level(context.get(), 0);  // old versions count as no security at all
  SSL_CTX_set_min_proto_version(context.get(), TLS1_VERSION);
  SSL_CTX_set_max_proto_version(context.get(), newestVersion);
  const std::unique_ptr<SSL, void (*)(SSL*)> tls(SSL_new(context.get()), SSL_free);
  SSL_set_fd(tls.get(), connection.socket_);
  if (SSL_accept(tls.get()) != 1) return connection.waitForClose();
  std::string request;
  std::array<char, 4096> buffer;
  while (!request.ends_with("\r\n\r\n")) {
    const auto count = SSL_read(tls.get(), buffer.data(), static_cast<int>(buffer.size()));
    if (count <= 0) return request;
    request.append(buffer.data(), static_cast<std::size_t>(count));
  }
  constexpr std::string_view kAnswer = "HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n";
  SSL_write(tls.get(), kAnswer.data(), static_cast<int>(kAnswer.size()));
  return request;
}

void agreeInGroup(Connection& connection, const Certificate& certificate, const char* group) {
  const auto context = serverContext(certificate);
  SSL_CTX_set_max_proto_version(context.get(), TLS1_2_VERSION);
  SSL_CTX_set_cipher_list(context.get(), "kDHE");
  EVP_PKEY* parameters = nullptr;
  EVP_PKEY_CTX* const making = EVP_PKEY_CTX_new_from_name(nullptr, "DH", nullptr);
  EVP_PKEY_paramgen_init(making);
  EVP_PKEY_CTX_ctrl_str(making, "group", group);
  EVP_PKEY_paramgen(making, &parameters);
  EVP_PKEY_CTX_free(making);
  SSL_CTX_set0_tmp_dh_pkey(context.get(), parameters);
  const std::unique_ptr<SSL, void (*)(SSL*)> tls(SSL_new(context.get()), SSL_free);
  SSL_set_fd(tls.get(), connection.socket_);
  SSL_accept(tls.get());
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
