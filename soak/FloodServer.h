#pragma once

#include <openssl/ssl.h>
#include <soak/FaultyServer.h>
#include <support/HTTP2Frame.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <utility>

namespace orvo::soak {

/// What a hostile server pushes without end: as frames of HTTP/2, or as an answer of HTTP/1.1.
struct Flood {
  const char* name;
  bool isHTTP2;
  /// Sent once, before it.
  std::string beginning;
  /// Sent without end; the connection is closed after the beginning when there is none.
  std::string more;
  /// What TLS itself can push, instead.
  int (*push)(SSL*) = nullptr;
};

using test::frame;

inline std::vector<Flood> floods() {
  constexpr int kEndOfHeader = 4, kPadded = 8;
  const std::string zeros(8, '\0');
  const std::string begun = frame(1, kEndOfHeader, 1, "\x88");
  const std::string ok = "HTTP/1.1 200 OK\r\n";
  const std::string chunked = ok + "Transfer-Encoding: chunked\r\n\r\n";
  const std::string gzip = ok + "Content-Encoding: gzip\r\n\r\n";
  return {
      {"empty DATA", true, begun, frame(0, 0, 1, "")},
      {"padded DATA", true, begun, frame(0, kPadded, 1, zeros.substr(0, 1))},
      {"long padding", true, begun, frame(0, kPadded, 1, '\xff' + std::string(255, '\0'))},
      {"DATA of a byte", true, begun, frame(0, 0, 1, "x")},
      {"PING", true, begun, frame(6, 0, 0, zeros)},
      {"answered PING", true, begun, frame(6, 1, 0, zeros)},
      {"SETTINGS", true, begun, frame(4, 0, 0, "")},
      {"PRIORITY", true, begun, frame(2, 0, 1, zeros.substr(0, 4) + '\x10')},
      {"WINDOW_UPDATE", true, begun, frame(8, 0, 0, {0, 0, 0, 1})},
      {"RST_STREAM", true, begun, frame(3, 0, 1, {0, 0, 0, 8})},
      {"CONTINUATION", true, frame(1, 0, 1, "\x88"), frame(9, 0, 1, "")},
      {"interim HEADERS", true, "", frame(1, kEndOfHeader, 1, std::string("\x08\x03") + "103")},
      {"PUSH_PROMISE", true, begun, frame(5, kEndOfHeader, 1, std::string{0, 0, 0, 2} + "\x82")},
      {"GOAWAY", true, begun, frame(7, 0, 0, std::string{0, 0, 0, 1} + zeros.substr(0, 4))},
      {"unknown frames", true, begun, frame(0xfa, 0, 0, "")},
      {"chunk extension", false, chunked + "5;x=", "y"},
      {"chunks of a byte", false, chunked, "1\r\nx\r\n"},
      {"trailers", false, chunked + "0\r\n", "X: y\r\n"},
      {"interim answers", false, "", "HTTP/1.1 103 Early Hints\r\n\r\n"},
      {"deflate blocks", false, gzip + std::string("\x1f\x8b\x08\0\0\0\0\0\0\x03", 10),
       std::string("\0\0\0\xff\xff", 5)},
      {"gzip name", false, gzip + std::string("\x1f\x8b\x08\x08\0\0\0\0\0\x03", 10), "n"},
      {"TLS tickets", false, ok + "\r\n", "", [](SSL* tls) { return SSL_new_session_ticket(tls); }},
      {"TLS key updates", false, ok + "\r\n", "",
       [](SSL* tls) { return SSL_key_update(tls, SSL_KEY_UPDATE_NOT_REQUESTED); }},
  };
}

/// Floods every client that asks it anything, over TLS. Its threads never end: neither may the
/// object.
class FloodServer {
 public:
  /// The certificate and its key are files.
  FloodServer(const std::string& certificate, const std::string& key) {
    SSL_CTX_set_alpn_select_cb(context_, &FloodServer::choose, this);
    if (SSL_CTX_use_certificate_chain_file(context_, certificate.c_str()) != 1 ||
        SSL_CTX_use_PrivateKey_file(context_, key.c_str(), SSL_FILETYPE_PEM) != 1) {
      throw std::runtime_error("no certificate for the flood");
    }
    std::tie(listener_, port_) = test::listenOnLoopback();
    std::thread([this] {
      while (true) {
        const int socket = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
        if (socket >= 0) std::thread([this, socket] { serve(socket); }).detach();
      }
    }).detach();
  }
  [[nodiscard]] int port() const { return port_; }
  /// What the next clients get.
  void setFlood(Flood flood) {
    const std::lock_guard guard(lock_);
    flood_ = std::make_shared<const Flood>(std::move(flood));
  }
  [[nodiscard]] std::uint64_t pushed() const { return pushed_; }

 private:
  static int choose(SSL*, const unsigned char** chosen, unsigned char* size, const unsigned char*,
                    unsigned, void* self) {
    const bool isHTTP2 = static_cast<FloodServer*>(self)->flood()->isHTTP2;
    *chosen = reinterpret_cast<const unsigned char*>(isHTTP2 ? "h2" : "http/1.1");
    *size = isHTTP2 ? 2 : 8;
    return SSL_TLSEXT_ERR_OK;
  }

  void serve(int socket) {
    const auto flood = this->flood();
    SSL* const tls = SSL_new(context_);
    SSL_set_fd(tls, socket);
    if (SSL_accept(tls) == 1 && hear(tls, flood->isHTTP2)) push(tls, socket, *flood);
    SSL_free(tls);
    close(socket);
  }

  /// Waits for the client's request.
  static bool hear(SSL* tls, bool isHTTP2) {
    if (isHTTP2) {
      const auto settings = frame(4, 0, 0, "") + frame(4, 1, 0, "");
      if (!send(tls, settings)) return false;
    }
    std::string heard;
    while (heard.find(isHTTP2 ? std::string("\x01\x05\0\0\0\x01", 6) : "\r\n\r\n") ==
           std::string::npos) {
      std::array<char, 4096> buffer;
      const int count = SSL_read(tls, buffer.data(), buffer.size());
      if (count <= 0) return false;
      heard.append(buffer.data(), static_cast<std::size_t>(count));
    }
    return true;
  }

  void push(SSL* tls, int socket, const Flood& flood) {
    std::string more;
    while (!flood.more.empty() && more.size() < 60'000) more += flood.more;
    for (bool good = send(tls, flood.beginning); good;) {
      if (flood.push == nullptr) {
        good = !more.empty() && send(tls, more);
        pushed_ += more.size();
      } else {
        good = flood.push(tls) == 1 && SSL_do_handshake(tls) == 1;
      }
      // What the client answers is read, or the client would be the one that cannot go on.
      std::array<char, 65'536> heard;
      while (good && recv(socket, heard.data(), 1, MSG_PEEK | MSG_DONTWAIT) > 0) {
        good = SSL_read(tls, heard.data(), heard.size()) > 0;
      }
    }
  }
  static bool send(SSL* tls, const std::string& bytes) {
    return bytes.empty() || SSL_write(tls, bytes.data(), static_cast<int>(bytes.size())) > 0;
  }

  [[nodiscard]] std::shared_ptr<const Flood> flood() {
    const std::lock_guard guard(lock_);
    return flood_;
  }

  // The threads use OpenSSL to the very end: it must not be taken down before.
  const bool lasts_ = OPENSSL_init_crypto(OPENSSL_INIT_NO_ATEXIT, nullptr) == 1;
  SSL_CTX* const context_ = SSL_CTX_new(TLS_server_method());
  std::mutex lock_;
  std::shared_ptr<const Flood> flood_;  // guarded by lock_
  std::atomic<std::uint64_t> pushed_{0};
  int listener_ = -1;
  int port_ = 0;
};

}  // namespace orvo::soak
