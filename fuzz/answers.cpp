// What a server answers, as raw bytes, through a real session: the answers to one connection after
// the other, separated by a byte 0xFF.

#include <OrvoAPI/Network/URLSession.h>
#include <fuzz/AnsweringServer.h>
#include <strings.h>

#include <string>

using namespace orvo;

namespace {

constexpr std::size_t kMaximumBodySize = 1U << 20;
constexpr int kMaximumRequests = 21;

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
  static fuzz::AnsweringServer& server = *new fuzz::AnsweringServer;
  static URLSession& session =
      *new URLSession({.protocolClasses = {std::make_shared<Fence>(server.port())},
                       .maximumBodySize = kMaximumBodySize});
  static const URL url =
      *URL::parse("http://127.0.0.1:" + std::to_string(server.port()) + "/v3/products/1?a=b");
  server.play(fuzz::text(bytes, size), {});
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
