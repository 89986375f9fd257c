// What a server answers to one request after another on connections that it keeps open, as raw
// bytes: the answers are ended by a byte 0xFF. After a first line "endless" the last of them is
// sent over and over, while another session fetches from a healthy host.

#include <fuzz/AnsweringServer.h>
#include <fuzz/Ends.h>

#include <string>
#include <vector>

using namespace orvo;

namespace {

constexpr int kFetches = 4;
constexpr int kMaximumRequests = kFetches * 21;

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  static fuzz::AnsweringServer& server = *new fuzz::AnsweringServer;
  static fuzz::AnsweringServer& healthy = *new fuzz::AnsweringServer;
  static URLSession& session = *new URLSession({.maximumBodySize = fuzz::kMaximumBodySize});
  static URLSession& other = *new URLSession;
  static const std::string origin = "http://127.0.0.1:" + std::to_string(server.port());
  static const URL healthyURL =
      *URL::parse("http://127.0.0.1:" + std::to_string(healthy.port()) + "/");

  auto answers = fuzz::text(bytes, size);
  const bool isEndless = answers.starts_with("endless\n");
  if (isEndless) fuzz::takePiece(answers);
  URLSession::networkChanged();  // what is left of the input before is not asked any more
  server.play(answers, {.keepsAlive = true, .isEndless = isEndless});
  std::vector<Future<HTTPResult>> fetches;
  for (int number = 0; number < kFetches; ++number) {
    fetches.push_back(session.fetch({.url = *URL::parse(origin + "/" + std::to_string(number)),
                                     .timeoutInterval = fuzz::kSilence,
                                     .totalTimeoutInterval = fuzz::kWhole}));
    if (isEndless) continue;  // all at once, against a server that is busy with the first
    fuzz::requireEnd(fetches.back());
    fetches.pop_back();
  }
  if (isEndless) {
    healthy.play("HTTP/1.1 204 \r\nConnection: close\r\n\r\n", {});
    fuzz::requireHealthy(other, healthyURL);
  }
  for (const auto& fetch : fetches) fuzz::requireEnd(fetch);
  fuzz::require(server.requests() <= kMaximumRequests, "redirects end");
  return 0;
}
