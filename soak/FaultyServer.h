#pragma once

#include <OrvoAPI/HTTP/URLError.h>
#include <netinet/tcp.h>
#include <support/Loopback.h>
#include <sys/socket.h>
#include <unistd.h>
#include <zlib.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <string_view>
#include <thread>
#include <tuple>
#include <vector>

namespace orvo::soak {

using namespace std::chrono_literals;

inline std::string gzip(const std::string& text, int level = Z_BEST_SPEED) {
  z_stream stream{};
  deflateInit2(&stream, level, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY);
  std::string packed(deflateBound(&stream, text.size()), '\0');
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
  stream.avail_in = static_cast<uInt>(text.size());
  stream.next_out = reinterpret_cast<Bytef*>(packed.data());
  stream.avail_out = static_cast<uInt>(packed.size());
  deflate(&stream, Z_FINISH);
  packed.resize(stream.total_out);
  deflateEnd(&stream);
  return packed;
}

inline std::string body(std::size_t size) { return std::string(size, 'b'); }

inline std::string answer(const std::string& text, const std::string& fields = {}) {
  return "HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(text.size()) + "\r\n" + fields +
         "\r\n" + text;
}

/// The server's end of a connection.
class Peer {
 public:
  explicit Peer(int socket) : socket_(socket) {}
  Peer(const Peer&) = delete;
  Peer& operator=(const Peer&) = delete;
  ~Peer() { close(socket_); }

  /// The target of the next request; empty when the client has gone.
  std::string target() {
    std::array<char, 4096> buffer;
    while (received_.find("\r\n\r\n") == std::string::npos) {
      const auto count = recv(socket_, buffer.data(), buffer.size(), 0);
      if (count <= 0) return {};
      received_.append(buffer.data(), static_cast<std::size_t>(count));
    }
    const auto begin = received_.find(' ') + 1;
    auto target = received_.substr(begin, received_.find(' ', begin) - begin);
    received_.erase(0, received_.find("\r\n\r\n") + 4);
    return target;
  }
  /// False when the client has gone.
  bool send(std::string_view bytes) {
    while (!bytes.empty()) {
      const auto count = ::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
      if (count <= 0) return false;
      bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
  }
  void trickle(std::string_view bytes) {
    for (const char byte : bytes) {
      std::this_thread::sleep_for(5ms);
      if (!send({&byte, 1})) return;
    }
  }
  void repeat(std::string_view bytes) {
    while (send(bytes)) {
    }
  }
  void waitForClose() {
    std::array<char, 4096> buffer;
    while (recv(socket_, buffer.data(), buffer.size(), 0) > 0) {
    }
  }
  void reset() {
    const linger atOnce{1, 0};
    setsockopt(socket_, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
  }

 private:
  const int socket_;
  std::string received_;
};

struct Fault {
  const char* name;
  /// Deals with one request; false ends the connection. The number differs from request to request.
  bool (*serve)(Peer& peer, unsigned number);
  /// What a client may see: the answer's status or the error's code.
  std::vector<int> outcomes;
  /// The same behind a proxy that speaks HTTP/2 to the client; empty where it is anybody's guess.
  std::vector<int> proxied;
};

inline const std::vector<Fault>& faults() {
  using E = URLError;
  // Never destroyed: the server's threads go on while the process ends.
  static const auto& all = *new std::vector<Fault>{
      {"none",
       [](Peer& peer, unsigned number) { return peer.send(answer(body(number % 70'000))); },
       {200},
       {200}},
      {"chunked",
       [](Peer& peer, unsigned number) {
         return peer.send("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n") &&
                peer.send("5\r\nhello\r\n") && (number % 2 == 0 || peer.send("1;x=y\r\n \r\n")) &&
                peer.send("0\r\nTrailer: x\r\n\r\n");
       },
       {200},
       {200}},
      {"gzip",
       [](Peer& peer, unsigned number) {
         return peer.send(answer(gzip(body(number % 70'000)), "Content-Encoding: gzip\r\n"));
       },
       {200},
       {200}},
      {"interim",
       [](Peer& peer, unsigned) {
         return peer.send(
             "HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 103 Early Hints\r\nLink: x\r\n\r\n" +
             answer("x"));
       },
       {200},
       {}},
      {"trickle",
       [](Peer& peer, unsigned) {
         peer.trickle(answer("slow but sure"));
         return true;
       },
       {200},
       {200}},
      {"early close",
       [](Peer& peer, unsigned) { return peer.send(answer("x")) && false; },
       {200},
       {200}},
      {"redirect",
       [](Peer& peer, unsigned number) {
         return peer.send("HTTP/1.1 307 T\r\nLocation: /0/" + std::to_string(number) +
                          "\r\nContent-Length: 0\r\n\r\n");
       },
       {200},
       {200}},
      {"redirect loop",
       [](Peer& peer, unsigned) {
         return peer.send("HTTP/1.1 302 Found\r\nLocation: ?\r\nContent-Length: 2\r\n\r\nno");
       },
       {E::httpTooManyRedirects},
       {E::httpTooManyRedirects}},
      {"reset",
       [](Peer& peer, unsigned number) {
         const auto whole = answer(body(2000));
         peer.send(whole.substr(0, number % whole.size()));
         peer.reset();
         return false;
       },
       {E::networkConnectionLost},
       {502, E::networkConnectionLost}},
      {"close",
       [](Peer& peer, unsigned number) {
         const auto whole = answer(body(2000));
         return peer.send(whole.substr(0, number % whole.size())) && false;
       },
       {E::networkConnectionLost},
       {502, E::networkConnectionLost}},
      {"wrong length",
       [](Peer& peer, unsigned number) {
         return peer.send("HTTP/1.1 200 OK\r\nContent-Length: " +
                          std::to_string(number % 5000 + 10) + "\r\n\r\nshort") &&
                false;
       },
       {E::networkConnectionLost},
       {E::networkConnectionLost}},
      {"broken chunk",
       [](Peer& peer, unsigned) {
         return peer.send("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nzz\r\n") && false;
       },
       {E::networkConnectionLost},
       {200, 502, E::networkConnectionLost}},
      {"wrong encoding",
       [](Peer& peer, unsigned) {
         return peer.send(answer("this is not gzip", "Content-Encoding: gzip\r\n")) && false;
       },
       {E::cannotDecodeRawData},
       {E::cannotDecodeRawData}},
      {"garbage",
       [](Peer& peer, unsigned number) {
         std::minstd_rand random(number + 1);
         std::string bytes(random() % 300 + 20, '\x01');
         for (char& byte : bytes) byte = static_cast<char>(random());
         bytes[0] = '\x01';
         return peer.send(bytes) && false;
       },
       {E::badServerResponse},
       {}},
      {"stall",
       [](Peer& peer, unsigned number) {
         if (number % 2 == 0) peer.send("HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nhalf");
         peer.waitForClose();
         return false;
       },
       {E::timedOut},
       {E::timedOut}},
      {"endless header",
       [](Peer& peer, unsigned) {
         peer.send("HTTP/1.1 200 OK\r\n");
         peer.repeat("X-More: and more, and more, and more, and more\r\n");
         return false;
       },
       {E::dataLengthExceedsMaximum},
       {502}},
      {"endless body",
       [](Peer& peer, unsigned) {
         peer.send("HTTP/1.1 200 OK\r\n\r\n");
         peer.repeat(body(16'384));
         return false;
       },
       {E::dataLengthExceedsMaximum},
       {E::dataLengthExceedsMaximum}},
      {"bomb",
       [](Peer& peer, unsigned) {
         static const auto& packed = *new std::string(gzip(body(20U << 20)));
         return peer.send(answer(packed, "Content-Encoding: gzip\r\n"));
       },
       {E::dataLengthExceedsMaximum},
       {E::dataLengthExceedsMaximum}},
  };
  return all;
}

/// Does to each request what its path says: "/<fault>/<number>". Serves `connections` at a time;
/// the others wait to be accepted. Its threads never end: neither may the object.
class FaultyServer {
 public:
  explicit FaultyServer(int connections) {
    std::tie(listener_, port_) = test::listenOnLoopback();
    for (int count = 0; count < connections; ++count) std::thread([this] { serve(); }).detach();
  }
  [[nodiscard]] int port() const { return port_; }

 private:
  void serve() const {
    while (true) {
      Peer peer(accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC));
      for (auto target = peer.target(); !target.empty(); target = peer.target()) {
        unsigned fault = 0, number = 0;
        // NOLINTNEXTLINE(cert-err34-c): a target of another form is a good request
        std::sscanf(target.c_str(), "/%u/%u", &fault, &number);
        if (!faults().at(fault % faults().size()).serve(peer, number)) break;
      }
    }
  }

  int listener_ = -1;
  int port_ = 0;
};

}  // namespace orvo::soak
