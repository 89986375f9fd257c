// A server on loopback that does to each request what its path says, however wrong, and a session
// that has 50 requests in flight until it has made so many:
//
//     chaos REQUESTS [SEED]
//
// All complete, with the error that the fault demands; descriptors and memory are back to where
// they were.

#include <OrvoAPI/Network/URLSession.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <tests/support/Loopback.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <mutex>
#include <random>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

namespace orvo::soak {
namespace {

using namespace std::chrono_literals;

constexpr int kInFlight = 50;
constexpr auto kTimeout = 2s;
constexpr std::size_t kMaximumBodySize = 1U << 20;

std::string gzip(const std::string& text) {
  z_stream stream{};
  deflateInit2(&stream, 1, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY);
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

std::string body(std::size_t size) { return std::string(size, 'b'); }

std::string answer(const std::string& text, const std::string& fields = {}) {
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
  /// The codes that the client may see; 200 stands for a whole answer.
  std::vector<int> outcomes;
};

const std::vector<Fault>& faults() {
  using E = URLError;
  // Never destroyed: the server's threads go on while the process ends.
  static const auto& all = *new std::vector<Fault>{
      {"none",
       [](Peer& peer, unsigned number) { return peer.send(answer(body(number % 70'000))); },
       {200}},
      {"chunked",
       [](Peer& peer, unsigned number) {
         return peer.send("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n") &&
                peer.send("5\r\nhello\r\n") && (number % 2 == 0 || peer.send("1;x=y\r\n \r\n")) &&
                peer.send("0\r\nTrailer: x\r\n\r\n");
       },
       {200}},
      {"gzip",
       [](Peer& peer, unsigned number) {
         return peer.send(answer(gzip(body(number % 70'000)), "Content-Encoding: gzip\r\n"));
       },
       {200}},
      {"interim",
       [](Peer& peer, unsigned) {
         return peer.send(
             "HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 103 Early Hints\r\nLink: x\r\n\r\n" +
             answer("x"));
       },
       {200}},
      {"trickle",
       [](Peer& peer, unsigned) {
         peer.trickle(answer("slow but sure"));
         return true;
       },
       {200}},
      {"early close", [](Peer& peer, unsigned) { return peer.send(answer("x")) && false; }, {200}},
      {"redirect",
       [](Peer& peer, unsigned number) {
         return peer.send("HTTP/1.1 307 T\r\nLocation: /0/" + std::to_string(number) +
                          "\r\nContent-Length: 0\r\n\r\n");
       },
       {200}},
      {"redirect loop",
       [](Peer& peer, unsigned) {
         return peer.send("HTTP/1.1 302 Found\r\nLocation: ?\r\nContent-Length: 2\r\n\r\nno");
       },
       {E::httpTooManyRedirects}},
      {"reset",
       [](Peer& peer, unsigned number) {
         const auto whole = answer(body(2000));
         peer.send(whole.substr(0, number % whole.size()));
         peer.reset();
         return false;
       },
       {E::networkConnectionLost}},
      {"close",
       [](Peer& peer, unsigned number) {
         const auto whole = answer(body(2000));
         return peer.send(whole.substr(0, number % whole.size())) && false;
       },
       {E::networkConnectionLost}},
      {"wrong length",
       [](Peer& peer, unsigned number) {
         return peer.send("HTTP/1.1 200 OK\r\nContent-Length: " +
                          std::to_string(number % 5000 + 10) + "\r\n\r\nshort") &&
                false;
       },
       {E::networkConnectionLost}},
      {"broken chunk",
       [](Peer& peer, unsigned) {
         return peer.send("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nzz\r\n") && false;
       },
       {E::networkConnectionLost}},
      {"wrong encoding",
       [](Peer& peer, unsigned) {
         return peer.send(answer("this is not gzip", "Content-Encoding: gzip\r\n")) && false;
       },
       {E::cannotDecodeRawData}},
      {"garbage",
       [](Peer& peer, unsigned number) {
         std::minstd_rand random(number + 1);
         std::string bytes(random() % 300 + 20, '\x01');
         for (char& byte : bytes) byte = static_cast<char>(random());
         bytes[0] = '\x01';
         return peer.send(bytes) && false;
       },
       {E::badServerResponse}},
      {"stall",
       [](Peer& peer, unsigned number) {
         if (number % 2 == 0) peer.send("HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nhalf");
         peer.waitForClose();
         return false;
       },
       {E::timedOut}},
      {"endless header",
       [](Peer& peer, unsigned) {
         peer.send("HTTP/1.1 200 OK\r\n");
         peer.repeat("X-More: and more, and more, and more, and more\r\n");
         return false;
       },
       {E::dataLengthExceedsMaximum}},
      {"endless body",
       [](Peer& peer, unsigned) {
         peer.send("HTTP/1.1 200 OK\r\n\r\n");
         peer.repeat(body(16'384));
         return false;
       },
       {E::dataLengthExceedsMaximum}},
      {"bomb",
       [](Peer& peer, unsigned) {
         static const auto& packed = *new std::string(gzip(body(20U << 20)));
         return peer.send(answer(packed, "Content-Encoding: gzip\r\n"));
       },
       {E::dataLengthExceedsMaximum}},
  };
  return all;
}

/// Serves so many connections at a time; the others wait to be accepted.
class Server {
 public:
  Server() {
    std::tie(listener_, port_) = test::listenOnLoopback();
    for (int count = 0; count < 2 * kInFlight; ++count) std::thread([this] { serve(); }).detach();
  }
  [[nodiscard]] int port() const { return port_; }

 private:
  void serve() const {
    while (true) {
      Peer peer(accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC));
      for (auto target = peer.target(); !target.empty(); target = peer.target()) {
        unsigned fault = 0, number = 0;
        // NOLINTNEXTLINE(cert-err34-c): a target that is no such thing is a good request
        std::sscanf(target.c_str(), "/%u/%u", &fault, &number);
        if (!faults().at(fault % faults().size()).serve(peer, number)) break;
      }
    }
  }

  int listener_ = -1;
  int port_ = 0;
};

std::size_t openDescriptors() {
  return static_cast<std::size_t>(
      std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}));
}

std::size_t residentKilobytes() {
  std::ifstream status("/proc/self/statm");
  std::size_t size = 0, resident = 0;
  status >> size >> resident;
  return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE)) / 1024;
}

/// Makes requests, so many at a time, and sees how each ends.
class Client {
 public:
  Client(int port, std::uint64_t seed) : port_(port), random_(seed) {}

  /// False when one ended wrongly.
  bool make(std::uint64_t requests) {
    std::unique_lock guard(lock_);
    for (std::uint64_t made = 0; made < requests; ++made) {
      if (!changed_.wait_for(guard, 120s, [&] { return inFlight_ < kInFlight; })) return hang();
      ++inFlight_;
      const auto fault = pickFault();
      const auto number = static_cast<unsigned>(random_() % 1'000'000);
      guard.unlock();
      start(fault, number);
      guard.lock();
    }
    if (!changed_.wait_for(guard, 120s, [&] { return inFlight_ == 0; })) return hang();
    return !failed_;
  }

  std::map<std::string, std::uint64_t> tally;  // read when nothing is in flight

 private:
  /// Most requests go well; the faults that take long are rare.
  std::size_t pickFault() {
    const auto dice = random_() % 100;
    if (dice < 40) return 0;
    auto fault = random_() % faults().size();
    const std::string_view name = faults()[fault].name;
    const bool isSlow =
        name == "stall" || name == "trickle" || name == "bomb" || name.starts_with("endless");
    return isSlow && dice < 95 ? 0 : fault;
  }
  void start(std::size_t fault, unsigned number) {
    const auto url = *URL::parse("http://127.0.0.1:" + std::to_string(port_) + "/" +
                                 std::to_string(fault) + "/" + std::to_string(number));
    session_.fetch({.url = url, .timeoutInterval = kTimeout})
        .onComplete([this, fault, number](const Result<HTTPResult>& result) {
          int code = 200;
          if (const AnyError* error = result.error())
            code = error->as<URLError>() ? error->as<URLError>()->code : 0;
          const auto& [name, serve, outcomes] = faults()[fault];
          const std::lock_guard guard(lock_);
          if (std::find(outcomes.begin(), outcomes.end(), code) == outcomes.end()) {
            failed_ = true;
            std::fprintf(stderr, "%s, number %u: ended with %d%s\n", name, number, code,
                         result.failed() ? (" " + result.error()->description()).c_str() : "");
          }
          ++tally[name];
          --inFlight_;
          changed_.notify_one();
        });
  }
  bool hang() {
    std::fprintf(stderr, "%d requests do not end\n", inFlight_);
    return false;
  }

  const int port_;
  URLSession session_{
      {.maximumConnectionsPerHost = kInFlight, .maximumBodySize = kMaximumBodySize}};
  std::mt19937_64 random_;
  std::mutex lock_;
  std::condition_variable changed_;
  int inFlight_ = 0;     // guarded by lock_
  bool failed_ = false;  // guarded by lock_
};

int cause(std::uint64_t requests, std::uint64_t seed) {
  // They live as long as the process: the server's threads never end.
  static const Server server;
  static Client client(server.port(), seed);
  if (!client.make(std::min<std::uint64_t>(requests / 5, 4000))) return 1;
  const auto descriptors = openDescriptors(), memory = residentKilobytes();
  if (!client.make(requests - std::min<std::uint64_t>(requests / 5, 4000))) return 1;
  const auto descriptorsNow = openDescriptors(), memoryNow = residentKilobytes();
  for (const auto& [name, count] : client.tally) {
    std::printf("%-16s %10llu\n", name.c_str(), static_cast<unsigned long long>(count));
  }
  std::printf("descriptors      %10zu, %zu at the end\n", descriptors, descriptorsNow);
  std::printf("memory in KB     %10zu, %zu at the end\n", memory, memoryNow);
  // Both ends of the connections that are kept; and what the allocators of threads keep. The
  // sanitizers keep what was freed, to recognise it.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  const bool isMemoryBack = true;
#else
  const bool isMemoryBack = memoryNow <= memory + memory / 4;
#endif
  const bool isBack = descriptorsNow <= descriptors + 2 * kInFlight && isMemoryBack;
  if (!isBack) std::fputs("descriptors or memory leak\n", stderr);
  return isBack ? 0 : 1;
}

}  // namespace
}  // namespace orvo::soak

int main(int argc, char** argv) {
  const auto number = [&](int index, std::uint64_t otherwise) {
    return argc > index ? std::strtoull(argv[index], nullptr, 10) : otherwise;
  };
  return orvo::soak::cause(number(1, 10'000), number(2, 1));
}
