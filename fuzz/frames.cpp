// What an HTTP/2 server sends to a client that has asked it something, over TLS. The first byte
// tells whether the last frame is sent over and over, while another session fetches from a healthy
// host; each frame is its type, its flags, its stream and the length of its payload, a byte each,
// and the payload.

#include <fuzz/Ends.h>
#include <signal.h>
#include <soak/FloodServer.h>
#include <support/Nginx.h>

#include <algorithm>
#include <string>

using namespace orvo;

namespace {

constexpr std::size_t kHeadSize = 4;

/// The frames of the input; the last one apart when it is to be repeated.
soak::Flood played(std::string_view input) {
  soak::Flood flood{.name = "input", .isHTTP2 = true, .beginning = "", .more = ""};
  const bool isEndless = !input.empty() && (input.front() & 1) != 0;
  std::string last;
  for (input.remove_prefix(std::min<std::size_t>(input.size(), 1)); input.size() >= kHeadSize;) {
    const auto number = [&](std::size_t at) { return static_cast<unsigned char>(input[at]); };
    const auto payload = input.substr(kHeadSize, number(3));
    flood.beginning += last;
    last = soak::frame(number(0), number(1), number(2), std::string(payload));
    input.remove_prefix(kHeadSize + payload.size());
  }
  (isEndless ? flood.more : flood.beginning) += last;
  return flood;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  static const bool ignoresPipes = signal(SIGPIPE, SIG_IGN) != SIG_ERR;
  static const test::Nginx nginx("location / { return 200 healthy; }");
  static soak::FloodServer& server =
      *new soak::FloodServer(nginx.certificateFile(), nginx.folder() + "/key.pem");
  static const URLSessionConfiguration configuration{
      .maximumBodySize = fuzz::kMaximumBodySize,
      .certificateAuthorityFile = nginx.certificateFile()};
  static URLSession& session = *new URLSession(configuration);
  static URLSession& other = *new URLSession(configuration);
  static const URL url = *URL::parse("https://127.0.0.1:" + std::to_string(server.port()) + "/");
  static const URL healthyURL =
      *URL::parse("https://127.0.0.1:" + std::to_string(nginx.http2Port) + "/");
  (void)ignoresPipes;

  const auto flood = played(fuzz::text(bytes, size));
  server.setFlood(flood);
  URLSession::networkChanged();
  const URLRequest request{
      .url = url, .timeoutInterval = fuzz::kSilence, .totalTimeoutInterval = fuzz::kWhole};
  const auto first = session.fetch(request), second = session.fetch(request);
  if (!flood.more.empty()) fuzz::requireHealthy(other, healthyURL);
  fuzz::requireEnd(first);
  fuzz::requireEnd(second);
  return 0;
}
