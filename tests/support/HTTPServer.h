#pragma once

#include <OrvoAPI/Platform/HTTPHeaders.h>
#include <OrvoAPI/Platform/URL.h>
#include <tests/support/Certificate.h>

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace orvo::test {

struct ServedRequest {
  std::string method;
  std::string target;  // path and query as they came
  HTTPHeaders headers;
  std::string body;
  int clientPort = 0;  // tells connections apart

  /// The header's value, or "(none)".
  [[nodiscard]] std::string header(std::string_view name) const {
    return std::string(headers.value(name).value_or("(none)"));
  }
};

struct ServedAnswer {
  int status = 200;
  std::string body = {};
  HTTPHeaders headers = {};
};

/// A real HTTP server on a free loopback port, over TLS when it is given a certificate. The handler
/// is called on many threads at once. Going away waits for the handlers.
class HTTPServer {
 public:
  using Handler = std::function<ServedAnswer(const ServedRequest&)>;

  explicit HTTPServer(Handler handler);
  HTTPServer(Handler handler, const Certificate& certificate);
  ~HTTPServer();
  HTTPServer(const HTTPServer&) = delete;
  HTTPServer& operator=(const HTTPServer&) = delete;

  [[nodiscard]] URL url(std::string_view target = "/") const;
  /// All requests so far, in the order of their arrival.
  [[nodiscard]] std::vector<ServedRequest> requests() const;
  /// Their targets, joined by spaces.
  [[nodiscard]] std::string targets() const;

 private:
  struct Running;
  const std::unique_ptr<Running> running_;
};

}  // namespace orvo::test
