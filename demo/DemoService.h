#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

namespace orvo::demo {

struct DemoServiceOptions {
  /// 0: any free port.
  int port = 0;
  /// The number of content requests for which a token is good; 0: it never expires.
  int tokenLifetime = 0;
  /// The length of every programme of the guide; 0: lengths as on television.
  std::chrono::seconds programLength{0};
  /// Is given a line for each request, without a line end and without any token. Called from the
  /// service's threads, one call at a time. It must not call the service.
  std::function<void(const std::string& line)> requestLog{};
};

/// A small invented channel behind a real HTTP server on the loopback interface: sessions, the
/// configuration, content, a guide that is always on air, lineups, streams and images.
/// Starting and stopping belong to one thread; the rest is safe to use from any thread. The service
/// owns its threads, and its destructor stops it.
class DemoService {
 public:
  explicit DemoService(DemoServiceOptions options = {});
  ~DemoService();
  DemoService(const DemoService&) = delete;
  DemoService& operator=(const DemoService&) = delete;

  /// Starts serving; once in its life. False when the port is not available.
  [[nodiscard]] bool start();
  /// Stops serving. Requests in progress are answered; a client that has sent half a request and
  /// then nothing more delays the end by at most a second.
  void stop();

  /// 0 before the start.
  [[nodiscard]] int port() const;
  /// The base of the API, such as `http://127.0.0.1:40001/v3/`.
  [[nodiscard]] std::string baseURL() const;
  /// The base of images and previews.
  [[nodiscard]] std::string resourceURL() const;
  /// The address of a lineup document: "grid", "list" or "clock-change".
  [[nodiscard]] std::string lineupURL(const std::string& name) const;

 private:
  struct Server;
  std::unique_ptr<Server> server_;
};

}  // namespace orvo::demo
