// What a server answers, as raw bytes, through a real session: the answers to one connection after
// the other, separated by a byte 0xFF.

#include <OrvoAPI/Network/URLSession.h>
#include <fuzz/FuzzTarget.h>
#include <strings.h>
#include <support/Loopback.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <mutex>
#include <string>
#include <thread>
#include <tuple>

using namespace orvo;

namespace {

constexpr std::size_t kMaximumBodySize = 1U << 20;
constexpr int kMaximumRequests = 21;

/// Answers each connection's request with the next piece of the input and closes.
class Server {
 public:
  Server() {
    std::tie(listener_, port_) = test::listenOnLoopback();
    std::thread([this] {
      while (true) serve(accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC));
    }).detach();
  }

  [[nodiscard]] int port() const { return port_; }

  void play(std::string_view answers) {
    const std::lock_guard guard(lock_);
    answers_ = answers;
    requests_ = 0;
  }
  [[nodiscard]] int requests() {
    const std::lock_guard guard(lock_);
    return requests_;
  }

 private:
  std::string next() {
    const std::lock_guard guard(lock_);
    ++requests_;
    std::string_view rest = answers_;
    std::string answer(fuzz::takePiece(rest, '\xFF'));
    answers_ = std::string(rest);
    return answer;
  }

  void serve(int socket) {
    std::string head;
    std::array<char, 4096> buffer;
    while (head.find("\r\n\r\n") == std::string::npos) {
      const auto count = recv(socket, buffer.data(), buffer.size(), 0);
      if (count <= 0) break;
      head.append(buffer.data(), static_cast<std::size_t>(count));
    }
    const auto answer = head.empty() ? std::string() : next();
    for (std::string_view left = answer; !left.empty();) {
      const auto count = send(socket, left.data(), left.size(), MSG_NOSIGNAL);
      if (count <= 0) break;
      left.remove_prefix(static_cast<std::size_t>(count));
    }
    close(socket);
  }

  int listener_ = -1;
  int port_ = 0;
  std::mutex lock_;
  std::string answers_;  // guarded by lock_
  int requests_ = 0;     // guarded by lock_
};

/// Answers whatever a redirect leads to elsewhere; nothing leaves the machine.
class Fence final : public URLInterceptor {
 public:
  explicit Fence(int port) : port_(port) {}

  bool intercept(const URLRequest& request,
                 const std::shared_ptr<InterceptedRequest>& intercepted) override {
    const bool isHTTP = hasScheme(request.url, "http");
    fuzz::require(isHTTP || hasScheme(request.url, "https"), "a redirect leads to no other scheme");
    if (isHTTP && request.url.host() == "127.0.0.1" && request.url.port() == port_) return false;
    intercepted->respond({.url = request.url, .statusCode = 204});
    return true;
  }

 private:
  static bool hasScheme(const URL& url, std::string_view scheme) {
    return url.scheme().size() == scheme.size() &&
           strncasecmp(url.scheme().data(), scheme.data(), scheme.size()) == 0;
  }

  const int port_;
};

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  static Server& server = *new Server;
  static URLSession& session =
      *new URLSession({.protocolClasses = {std::make_shared<Fence>(server.port())},
                       .maximumBodySize = kMaximumBodySize});
  static const URL url =
      *URL::parse("http://127.0.0.1:" + std::to_string(server.port()) + "/v3/products/1?a=b");
  server.play(fuzz::text(bytes, size));
  const auto future = session.fetch({.url = url, .timeoutInterval = std::chrono::seconds(5)});
  const auto result = future.wait(std::chrono::seconds(60));
  fuzz::require(future.didComplete(), "every fetch comes to an end");
  fuzz::require(server.requests() <= kMaximumRequests, "redirects end");
  if (const auto* const answer = result.value()) {
    fuzz::require(answer->response.statusCode >= 100 && answer->response.statusCode <= 999,
                  "an answer has a status");
    fuzz::require(answer->body.size() <= kMaximumBodySize, "a body is bounded");
  } else {
    const auto* const error = result.error()->as<URLError>();
    fuzz::require(error != nullptr && error->code < 0, "a failure is a transport's");
    fuzz::require(error->code != URLError::timedOut, "nothing waits for what cannot come");
    fuzz::require(error->message.find("127.0.0.1") == std::string::npos, "no message holds a URL");
  }
  return 0;
}
